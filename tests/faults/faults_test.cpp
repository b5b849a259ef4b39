// Every C call that an operation makes goes wrong, in every way: once, and from then on.
#include "operations.h"
#include "sim/observer.h"
#include "sim/settle.h"

#include <cerrno>
#include <climits>
#include <dlfcn.h>
#include <set>
#include <sys/stat.h>
#include <termios.h>

namespace {

using namespace irmtest;
using irmsim::Fault;
using irmsim::Lasting;
using irmsim::Observation;

/// Told of every call: what standard error has to say of it, and what an operation's rule needs.
/// Written by one thread at a time: the host waits for the link's worker.
struct Watch {
    std::multiset<std::string> lines;   ///< of standard error
    std::vector<Observation> transfers; ///< of the device
    int attributeReads = 0;
    long portWritten = -1, portRead = 0, shortest = LONG_MAX; ///< bytes
    bool missedFile = false, terminalFailed = false, refused = false;

    void failed(const char* text, long result) {
        lines.insert(std::string(text) + ": " + std::strerror(static_cast<int>(-result)));
    }
    void tell(const Observation& call) {
        using Call = Observation::Call;
        const auto is = [&](Call kind) { return call.call == kind; };
        const bool transfer = is(Call::read) || is(Call::write);
        attributeReads += is(Call::getAttributes) ? 1 : 0;
        const bool parity = attributeReads == 2; // the first one is for the speed
        if (transfer && call.result >= 0 && call.result < static_cast<long>(call.length))
            shortest = std::min(shortest, call.result);
        if (transfer && !call.port)
            transfers.push_back(call);
        else if (is(Call::write))
            portWritten = call.result;
        else if (is(Call::read))
            portRead += std::max(call.result, 0L);
        if (call.result >= 0)
            return;
        refused = refused || (transfer && !call.port);
        terminalFailed =
            terminalFailed || is(Call::setAttributes) || (is(Call::getAttributes) && parity);
        const char* text =
            is(Call::open)            ? call.port ? "open device failed" : "open fpga device failed"
            : is(Call::write)         ? call.port ? "write serial failed" : "write fpga failed"
            : is(Call::read)          ? call.port ? nullptr : "read data failed"
            : is(Call::setAttributes) ? parity ? "SetupSerial 3" : "tcsetattr m_fd"
            : is(Call::getAttributes) && parity ? "SetupSerial 1"
                                                : nullptr;
        if (text != nullptr)
            failed(text, call.result);
    }
};
Watch s_watch;

template <typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

// Calls of the library that the simulated camera leaves alone.
extern "C" {
[[gnu::visibility("default")]] int pthread_create(pthread_t* thread,
                                                  const pthread_attr_t* attributes,
                                                  void* (*body)(void*), void* argument) noexcept {
    if (const long error = irmsim::otherCall(); error != 0) {
        s_watch.failed("create pthread failed", error);
        return static_cast<int>(-error);
    }
    static auto* const real =
        next<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create");
    return real(thread, attributes, body, argument);
}
[[gnu::visibility("default")]] int access(const char* path, int mode) noexcept {
    if (const long error = irmsim::otherCall(); error != 0) {
        s_watch.missedFile = true;
        errno = static_cast<int>(-error);
        return -1;
    }
    static auto* const real = next<int(const char*, int)>("access");
    return real(path, mode);
}
[[gnu::visibility("default")]] int stat(const char* path, struct stat* about) noexcept {
    const bool ours = *path != '/'; // the library's files are named from the working directory
    if (const long error = ours ? irmsim::otherCall() : 0; error != 0) {
        errno = static_cast<int>(-error);
        return -1;
    }
    static auto* const real = next<int(const char*, struct stat*)>("stat");
    return real(path, about);
}
}

namespace {

constexpr irmsim::Observer observer{[](void*, const Observation& call) { s_watch.tell(call); }};

std::multiset<std::string> linesOf(const std::string& text) {
    std::istringstream all(text);
    std::multiset<std::string> lines;
    for (std::string line; std::getline(all, line);)
        lines.insert(line);
    return lines;
}

/// Descriptors and threads.
std::pair<long, long> left() { return {entriesOf("/proc/self/fd"), entriesOf("/proc/self/task")}; }
/// A remark of the worker on its lock holds a descriptor for a moment, and a thread that has been
/// joined is still listed for one.
std::pair<long, long> leftAtRest() {
    auto least = left();
    for (int i = 0; i < 5; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        const auto now = left();
        least = {std::min(least.first, now.first), std::min(least.second, now.second)};
    }
    return least;
}

/// What came of running an operation.
struct Came {
    std::string result, output, errors;
    std::string frame, state; ///< what the core received last, and the host's state afterwards
    unsigned long calls = 0, faults = 0;
    double seconds = 0;
    Watch seen;
    std::string first() const { return result.substr(0, result.find(' ')); }
};

/// The library's and the façade's state, without the window: that follows the camera's own state.
std::string stateOf(const std::optional<Probe>& host) {
    const auto floats = [](const float* begin, int count) {
        std::string all;
        for (int i = 0; i < count; ++i)
            all += joined(begin[i]) + ' ';
        return all;
    };
    std::string all = joined(m_vskTemp, m_vskValue0, m_vskValue1, m_levelSpanMinAD,
                             m_levelSpanMaxAD, floats(s_modify, 200));
    if (!host)
        return all;
    const Probe& h = *host;
    for (const TempSetup& s :
         {h.m_sysTempSetup, h.m_fileTempSetup, h.m_sysTempHandler->getTempSetup()})
        all += '\n' + joined(s.emiss, s.dist, s.offset, s.reserved);
    for (TempHandler* model : {h.m_sysTempHandler, h.m_queryTempHandler})
        all += '\n' + joined(model->getTrans(), model->getDewpoint());
    const TempInfoTab& t = h.m_tempInfoTab;
    all += '\n' + joined(t.tempNum, t.maxAD, t.minAD, t.baseTemp, t.shutterTemp, t.sensorTemp);
    for (int i = 0; i < irmcore::tableCapacity; ++i)
        all += ' ' + joined(t.temp[i], t.ad[i]);
    return all + '\n' +
           joined(h.m_tempRange, h.m_coreVersionNum, h.m_deltaTemp, h.m_modifyShutterTemp,
                  text(h.m_isoMinStru), text(h.m_isoMaxStru));
}

struct Faults : Host {
    Faults() {
        camera.calibrate().autoShutterPeriod(1e8).logging(false);
        irmsim::setObserver(&observer);
    }
    ~Faults() override { irmsim::setObserver(nullptr); }

    /// Runs `op` on a host at rest, with a fault in its `n`th call; none for 0.
    Came run(const Operation& op, unsigned long n = 0, Fault fault = {}, Lasting lasting = {}) {
        if (op.rule == Rule::alone)
            host.reset();
        else if (!host)
            start();
        // Register operations leave the link's worker asleep.
        const bool link = op.name.rfind("FPGABottom::", 0) != 0;
        if (link) {
            camera.advance(1);
            camera.clearReceived();
        }
        Came came;
        came.errors = linkErrors([&] {
            came.output = printed([&] {
                s_watch = Watch{};
                s_watch.attributeReads = op.rule == Rule::parity ? 1 : 0;
                const unsigned long before = camera.faults();
                const double began = camera.seconds();
                camera.failCall(n, fault, lasting);
                came.result = op.run(*this);
                if (link)
                    irmsim::settle(std::chrono::seconds(1));
                came.calls = camera.callsMet();
                camera.failCall(0, {});
                came.faults = camera.faults() - before;
                came.seconds = camera.seconds() - began;
                came.seen = s_watch;
            });
        });
        came.state = stateOf(host);
        if (link)
            came.frame = lastFrame();
        if (link && host) // what a fault has left in the port
            tcflush(host->getSerial()->*&Link::m_fd, TCIFLUSH);
        return came;
    }
    /// Of commands in a row only the last is certain to arrive.
    std::string lastFrame() const {
        const std::string all = frames(camera);
        return all.substr(all.rfind(' ') + 1);
    }
    /// What `op` gives after faults, by its rule; nothing if that cannot be foretold.
    static std::optional<std::string> foretold(const Operation& op, const Came& clean,
                                               const Watch& seen) {
        using Call = Observation::Call;
        /// Whether of the first transfers, or writes, one is missing or cut.
        const auto incomplete = [&](std::size_t limit, bool writesOnly = false) {
            limit = std::min(limit, clean.seen.transfers.size());
            bool any = seen.transfers.size() < limit;
            for (std::size_t i = 0; i < limit && !any; ++i) {
                const Observation& made = seen.transfers[i];
                any = made.result != static_cast<long>(made.length) &&
                      (!writesOnly || made.call == Call::write);
            }
            return any;
        };
        const bool area = op.name == "FPGA::getAreaTemp";
        const long last = seen.transfers.empty() ? -1 : seen.transfers.back().result;
        switch (op.rule) {
        case Rule::same:
            return clean.first();
        case Rule::last:
            return last < 0 ? "255" : std::to_string(last % 256);
        case Rule::all:
            return incomplete(SIZE_MAX) ? "255" : "0";
        case Rule::placed:
            return incomplete(area ? 4 : 1, true) ? "-1" : "0";
        case Rule::located:
            return incomplete(3) ? "-1" : "0";
        case Rule::vsk: // the code's echo is all that is looked at
            return seen.portRead < 4 ? "-1" : "0";
        case Rule::got:
            return std::to_string(seen.portRead);
        case Rule::parity:
            return seen.terminalFailed ? "-1" : "0";
        case Rule::sent:
            return std::to_string(std::max(seen.portWritten, -1L));
        case Rule::value:
            return seen.refused ? std::optional<std::string>(op.refused) : std::nullopt;
        default:
            return std::nullopt;
        }
    }

    /// Keeps everything that is wrong with what came of a fault, and with what comes after it.
    void judge(const Operation& op, const Came& clean, const Came& came, const std::string& what,
               Fault fault = {}) {
        std::string all;
        const auto hold = [&](bool good, const std::string& text) {
            all += good ? "" : " " + text;
        };
        const auto result = foretold(op, clean, came.seen);
        hold(!result || came.first() == *result, came.first() + " is not " + result.value_or(""));
        auto expected = linesOf(clean.errors), errors = linesOf(came.errors);
        expected.insert(came.seen.lines.begin(), came.seen.lines.end());
        for (auto line = errors.begin(); line != errors.end();) {
            // Of files the camera tells nobody.
            const bool file = line->rfind("etc/", 0) == 0 || line->rfind("Parameter/", 0) == 0;
            fileErrors += file ? 1 : 0;
            hold(!file || (fault.error != 0 &&
                           line->substr(line->find(": ") + 2) == std::strerror(fault.error)),
                 *line);
            line = file ? errors.erase(line) : std::next(line);
        }
        hold(expected == errors, "errors: " + came.errors);
        hold(op.rule == Rule::open || op.rule == Rule::alone || came.seen.missedFile ||
                 linesOf(came.output).size() == linesOf(clean.output).size(),
             "output: " + came.output);
        // Three answers that do not come take 201 reads of 0.1 s each.
        hold(came.calls < 1000 && came.seconds < 62, joined(came.calls, "calls", came.seconds));
        const Came again = run(op);
        hold(again.result == clean.result, "then " + again.result + ", not " + clean.result);
        hold(again.frame == clean.frame, "then " + again.frame + ", not " + clean.frame);
        hold(again.state == clean.state, "then " + again.state + ", not " + clean.state);
        EXPECT_EQ(all, "") << op.name << ' ' << what;
    }

    long fileErrors = 0;
};

TEST(Operations, areAllThatTheLibraryExports) {
    const std::set<std::string> elsewhere{
        // Run with their constructors; runs behind every command, as long as the link; do nothing.
        "FPGA::~FPGA",     "FPGABottom::~FPGABottom",
        "Serial::~Serial", "Serial::workThread",
        "readSpotTemp",    "serialTest"};
    // They make no C call, but for one that reads a register, and for those of the lock.
    const char* const pure[] = {
        "CalcTrans::", "IRPara::", "ISOHandler::", "Mutex::", "TempHandler::"};
    std::multiset<std::string> exported, listed;
    std::ifstream file(EXPORTS);
    for (std::string line; std::getline(file, line);) {
        const std::string name = line.substr(0, line.find('('));
        const bool function = name != line;
        const bool calls = name == "TempHandler::irAD2Temp" ||
                           std::none_of(std::begin(pure), std::end(pure),
                                        [&](const char* of) { return name.rfind(of, 0) == 0; });
        if (function && calls && elsewhere.count(name) == 0)
            exported.insert(name);
    }
    for (const Operation& op : operations())
        if (op.name.find(' ') == std::string::npos)
            listed.insert(op.name);
    EXPECT_EQ(exported, listed);
    EXPECT_GT(listed.size(), 150U);
}

TEST_F(Faults, everyCallFailsInEveryOperation) {
    const std::pair<const char*, Fault> kinds[] = {
        {"EIO", Fault::refused(EIO)},       {"EINTR", Fault::refused(EINTR)},
        {"EAGAIN", Fault::refused(EAGAIN)}, {"ENODEV", Fault::refused(ENODEV)},
        {"nothing", Fault::cutTo(0)},       {"one byte", Fault::cutTo(1)},
        {"all but one", Fault::cutBy(1)}};
    unsigned long injected = 0;
    for (const Operation& op : operations()) {
        run(op);
        const Came clean = run(op);
        const auto atRest = leftAtRest();
        bool reached = true;
        for (unsigned long n = 1; reached; ++n) {
            reached = false;
            for (const auto& [kind, fault] : kinds)
                for (const Lasting lasting : {Lasting::once, Lasting::fromThenOn}) {
                    const Came came = run(op, n, fault, lasting);
                    reached = reached || came.calls >= n;
                    if (came.faults == 0)
                        continue;
                    // Of two bytes one is also all but one, and after the last call comes none.
                    const bool known = (fault.fromEnd && came.seen.shortest < 2) ||
                                       (lasting == Lasting::fromThenOn && came.faults == 1);
                    injected += known ? 0 : 1;
                    ASSERT_TRUE(wait([&] { return left() == atRest; }))
                        << op.name; // takes 20 s to fail
                    judge(op, clean, came,
                          joined(n, kind, lasting == Lasting::once ? "once" : "from then on"),
                          fault);
                }
        }
    }
    EXPECT_GT(fileErrors, 0);
    EXPECT_GE(injected, 5000U);
    std::printf("%lu faults in %zu operations\n", injected, operations().size());
    RecordProperty("faults", std::to_string(injected));
}

TEST_F(Faults, withoutItsDevicesEveryOperationIsRefused) {
    for (const bool absent : {true, false}) // or unplugged under way
        for (Operation op : operations()) {
            if (op.rule == Rule::alone && absent)
                continue;
            if (absent)
                host.reset();
            auto atRest = leftAtRest();
            run(op);
            const Came clean = run(op);
            if (!absent)
                atRest = leftAtRest();
            if (absent) {
                camera.devicePresent(false).portPresent(false);
                host.reset();
                linkErrors([&] { start(); });
            } else {
                camera.unplug().unplugPort();
            }
            Came came = run(op);
            came.seen.refused = came.seen.terminalFailed = true;
            if (absent) { // these calls the library makes all the same, on no descriptor
                for (const std::string& line : linesOf(came.errors))
                    for (const char* of :
                         {"write serial failed", "SetupSerial 1", "tcsetattr m_fd"})
                        if (line == std::string(of) + ": Bad file descriptor")
                            came.seen.lines.insert(line);
                came.seen.missedFile = true; // there is another lens
                if (clean.calls == 0)
                    op.rule = Rule::open; // state that construction left
                host.reset();
            }
            camera.devicePresent(true).portPresent(true).plugIn().plugInPort();
            EXPECT_TRUE(wait([&] { return left() == atRest; })) << op.name;
            judge(op, clean, came, absent ? "absent" : "unplugged");
        }
}

} // namespace
