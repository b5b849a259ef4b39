#include "observedhost.h"

#include "../sim/interpose.h"
#include "commands.h"
#include "hostprocess.h"
#include "simrun.h"

#include <QCommandLineParser>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <thread>
#include <unistd.h>

namespace irmcore::app {

namespace {

/// A pipe from a host to this process.
class HostPipe {
public:
    HostPipe() {
        int ends[2] = {-1, -1};
        if (::pipe2(ends, O_CLOEXEC) != 0)
            return;
        m_read = ends[0];
        ::fcntl(m_read, F_SETFL, O_NONBLOCK);
        constexpr int size = 1 << 20; // the most that is free to everybody
        ::fcntl(m_read, F_SETPIPE_SZ, size);
        m_write = inheritable(ends[1]);
        ::close(ends[1]);
    }
    ~HostPipe() {
        letGo();
        if (m_read >= 0)
            ::close(m_read);
    }
    HostPipe(const HostPipe&) = delete;
    HostPipe& operator=(const HostPipe&) = delete;

    int read() const { return m_read; }
    int write() const { return m_write; }
    /// Leaves the host's end to the host.
    void letGo() {
        if (m_write >= 0)
            ::close(m_write);
        m_write = -1;
    }

private:
    int m_read = -1;
    int m_write = -1;
};

using State = CourierReader::State;

/// Reads until the host has ended and the pipe is empty: a child of the host may keep it open.
void pump(int descriptor, CourierReader& reader, const std::function<void()>& idle,
          const std::atomic<bool>& hostEnded) {
    sigset_t brokenPipe; // an output that nobody reads is not to end this process before the host
    ::sigemptyset(&brokenPipe);
    ::sigaddset(&brokenPipe, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
    constexpr std::chrono::milliseconds moment(1);
    for (;;) {
        const bool last = hostEnded;
        State state = State::more;
        while (state == State::more)
            state = reader.readFrom(descriptor);
        if (state == State::broken)
            complain(QStringLiteral("what the host sends cannot be understood any more"));
        if (last)
            return;
        if (state != State::empty) {
            // A host that ends closes the pipe a little before it has ended.
            for (int i = 0; i < 500 && !hostEnded; ++i)
                std::this_thread::sleep_for(moment);
            if (!hostEnded && state == State::ended)
                complain(QStringLiteral("the host has closed the descriptor that its transfers "
                                        "come by: what follows is missing"));
            return;
        }
        std::this_thread::sleep_for(moment); // not to wake up for every single one
        pollfd waiting{descriptor, POLLIN, 0};
        constexpr int pause = 100; // ms
        if (::poll(&waiting, 1, pause) == 0 && idle)
            idle();
    }
}

} // namespace

std::optional<ObservedRun> parseObserved(RunCommand command, const QStringList& words,
                                         int& exitCode) {
    const QString real = QStringLiteral("real");
    const QString sim = QStringLiteral("sim");
    command.options +=
        {QCommandLineOption(real, QStringLiteral("on the machine's own devices")),
         QCommandLineOption(
             sim, QStringLiteral("on the simulated camera, as also without a device %1 or with "
                                 "one of its options")
                      .arg(QLatin1String(irmsim::fpgaDevicePath)))};
    ObservedRun observed;
    const auto take = std::move(command.take);
    command.take = [&](const QCommandLineParser& parser, const SimRun& run) {
        if (parser.isSet(real) && parser.isSet(sim))
            return QStringLiteral("--real and --sim exclude each other");
        if (parser.isSet(real) && run.asked)
            return QStringLiteral("--real goes without the options of the simulated camera");
        observed.real = parser.isSet(real) || (!parser.isSet(sim) && !run.asked &&
                                               ::access(irmsim::fpgaDevicePath, F_OK) == 0);
        return take ? take(parser, run) : QString();
    };
    auto run = parseRun(command, words, exitCode);
    if (!run)
        return std::nullopt;
    observed.run = std::move(*run);
    return observed;
}

int runObserved(const ObservedRun& observed, const CourierReader::Hear& hear,
                const std::function<void()>& idle) {
    HostPipe pipe;
    if (pipe.write() < 0) {
        complain(QStringLiteral("no pipe to the host: ") +
                 QString::fromLocal8Bit(std::strerror(errno)));
        return exitErrors;
    }
    complain(observed.real ? QStringLiteral("on the real devices %1 and %2")
                                 .arg(QLatin1String(irmsim::fpgaDevicePath),
                                      QLatin1String(irmsim::serialPortPath))
                           : QStringLiteral("on a simulated camera"));
    CourierReader reader(hear);
    std::atomic<bool> hostEnded{false};
    std::thread pumping;
    const auto started = [&] {
        pipe.letGo();
        // With its signals blocked, as they are now: they stay with the thread that waits.
        pumping = std::thread([&] { pump(pipe.read(), reader, idle, hostEnded); });
    };
    const int code =
        runParsed(observed.run, {pipe.write(), started, observed.real, observed.prepared});
    hostEnded = true;
    std::signal(SIGPIPE, SIG_IGN);
    if (pumping.joinable())
        pumping.join();
    if (reader.inTheMidst())
        complain(QStringLiteral("the host ended in the midst of a transfer, which is missing"));
    return code;
}

} // namespace irmcore::app
