// The core's replies: any bytes in any pieces, late, or none, to every command and query, on a port
// whose calls may fail.
#include "bytes.h"
#include "camera.h"
#include "check.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>
#include <optional>
#include <vector>

namespace {

using namespace irmfuzz;
using irmsim::Reply;
using irmsim::Time;

constexpr Time tick = std::chrono::milliseconds(1);
constexpr Time patience = 100 * tick; // of a read

/// A query, by its code and the bytes of its payload.
struct Query {
    std::uint8_t code;
    int payload;
};
constexpr Query drift{0x61, 4}, vsk{0x77, 2}, sum{0x79, 2}, sensor{0x96, 2}, cpu{0x80, 15},
    gate{0x81, 15};

/// What readData receives, and the reads that come back empty meanwhile.
struct Received {
    std::vector<std::uint8_t> bytes;
    unsigned long empty = 0;
};

/// The first `wanted` bytes, with 201 empty reads at most; zeros for those that do not come.
Received received(const std::vector<Reply>& replies, std::size_t wanted) {
    Received all;
    Time now{0}, due{0};
    for (const Reply& reply : replies) {
        due = std::max(due, reply.after);
        if (reply.bytes.empty())
            continue;
        while (all.bytes.size() < wanted && due - now > patience && all.empty <= 200) {
            now += patience;
            ++all.empty;
        }
        if (all.empty > 200)
            break;
        now = std::max(now, due);
        const std::size_t n = std::min(wanted - all.bytes.size(), reply.bytes.size());
        all.bytes.insert(all.bytes.end(), reply.bytes.begin(),
                         reply.bytes.begin() + static_cast<std::ptrdiff_t>(n));
    }
    if (all.bytes.size() < wanted)
        all.empty = 201;
    all.bytes.resize(wanted);
    return all;
}

class Run {
public:
    Run(const std::uint8_t* data, std::size_t size) : m_in(data, size) {}

    std::uint64_t all() {
        m_fixture.reset();
        m_fixture.emptyPort();
        for (int i = 0; i < 12 && !m_in.empty(); ++i)
            step();
        if (m_detached)
            m_host.link->restoreSerial();
        m_fixture.reset();
        m_fixture.line.anyBytes = true;
        m_host.link->set_Parity(8, 1, 'N');
        return m_repeats.value_or(m_digest.value());
    }

private:
    void step();
    void query();
    void followVsk();
    void command();
    void port();
    void fault();
    template <typename T, typename Ask>
    void ask(const Query& query, Ask call);
    std::vector<Reply> reply(std::uint8_t code, int payload);
    bool clean() const { return !m_faulty && !m_detached && !m_stale; }

    Fixture& m_fixture = Fixture::get();
    Host& m_host = m_fixture.host;
    Bytes m_in;
    Digest m_digest;
    std::optional<std::uint64_t> m_repeats; ///< the digest before the worker's pace came into it
    bool m_faulty = false;                  // the port's calls may fail
    bool m_detached = false;                // by closeSerial
    bool m_stale = false;                   // something may lie in the port
    int m_waits = 0;                        // replies that will be waited for in vain
};

/// What the core is to send; an incomplete reply costs 201 reads, so there is one in a run.
std::vector<Reply> Run::reply(std::uint8_t code, int payload) {
    std::vector<std::uint8_t> bytes{0x7F, 0xA5, 0, code, static_cast<std::uint8_t>(payload)};
    const auto values = m_in.bytes(static_cast<std::size_t>(payload));
    bytes.insert(bytes.end(), values.begin(), values.end());
    bytes.insert(bytes.end(), {0x22, 0x5A});
    const unsigned kind = m_in.below(8);
    const bool may = m_waits == 0;
    m_waits += kind >= 4 ? 1 : 0;
    if (kind == 1)
        bytes[m_in.below(static_cast<unsigned>(bytes.size()))] ^= m_in.take<std::uint8_t>();
    if (kind == 2)
        bytes = m_in.bytes(bytes.size() + m_in.below(120));
    if (kind == 4 && may)
        bytes.resize(m_in.below(static_cast<unsigned>(bytes.size())));
    if (kind == 5 && may)
        bytes.clear();
    if (kind < 3 || (kind < 6 && may))
        return {{bytes, Time(0)}};
    // In pieces, with gaps that are no multiple of a read's patience.
    constexpr std::array<int, 8> gaps{0, 1, 50, 150, 1050, 9950, 20050, 25050};
    std::vector<Reply> pieces;
    Time due{0};
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t n = std::min<std::size_t>(1 + m_in.below(8), bytes.size() - at);
        due += gaps[m_in.below(may ? 8 : 3)] * tick;
        const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        pieces.push_back({{from, from + static_cast<std::ptrdiff_t>(n)}, due});
        at += n;
    }
    return pieces;
}

/// One query: `call` makes it with a place for its value, or a null pointer.
template <typename T, typename Ask>
void Run::ask(const Query& query, Ask call) {
    const std::vector<Reply> replies = reply(query.code, query.payload);
    m_fixture.line.replies.push_back(replies);
    const unsigned long before = m_fixture.camera.portCalls().emptyReads;
    T value{};
    const bool nowhere = m_in.below(8) == 7;
    const int result = call(nowhere ? nullptr : &value);
    const unsigned long empty = m_fixture.camera.portCalls().emptyReads - before;
    m_fixture.line.replies.clear();
    m_digest.add(result);
    m_digest.add(empty);
    m_digest.add(&value, sizeof value);
    require(empty <= 201, "a query makes at most 201 empty reads");
    require(g_readData_length == query.payload + 7, "the reply's length is told");
    require(result == 0 || (result == -1 && query.code == vsk.code), "only the VSK can be refused");
    if (clean()) {
        const auto wanted = static_cast<std::size_t>(query.payload + 7);
        const Received expected = received(replies, wanted);
        require(empty == expected.empty, "a reply is waited for as long as it takes, or 201 reads");
        const bool echoed = query.code != vsk.code || expected.bytes[3] == vsk.code;
        require(result == (echoed ? 0 : -1), "the VSK is refused when its code is not echoed");
        T answer{};
        if (echoed && !nowhere)
            std::copy_n(expected.bytes.begin() + 5, query.payload,
                        reinterpret_cast<unsigned char*>(&answer));
        require(std::memcmp(&answer, &value, sizeof value) == 0, "what came is what is told");
    }
    m_stale = true;
}

void Run::query() {
    if (m_detached && m_waits++ > 0)
        return; // 201 reads
    Serial& link = *m_host.getSerial();
    if (m_in.below(4) != 0 && !m_faulty) {
        m_fixture.emptyPort();
        m_stale = false;
    }
    using Text = std::array<char, 15>;
    switch (m_in.below(9)) {
    case 0:
        return ask<std::uint32_t>(drift, [&](auto* v) { return link.readDeltaAD(v); });
    case 1:
        return ask<std::uint16_t>(vsk, [&](auto* v) { return link.readSerialVSK(v); });
    case 2:
        return ask<std::uint16_t>(sum, [&](auto* v) { return link.readSerialSum(v); });
    case 3:
        return ask<std::uint16_t>(sensor, [&](auto* v) { return link.readSensor(v); });
    case 4:
        return ask<Text>(cpu, [&](Text* v) {
            return link.readCoreCpuVersion(v != nullptr ? v->data() : nullptr);
        });
    case 5:
        return ask<Text>(gate, [&](Text* v) {
            return link.readCoreFPGAVersion(v != nullptr ? v->data() : nullptr);
        });
    case 6:
        return ask<std::uint16_t>(vsk, [&](auto* v) { return m_host.getSerialVSK(v); });
    case 7:
        return ask<std::uint16_t>(sum, [&](auto* v) { return m_host.getSerialSum(v); });
    default:
        return followVsk();
    }
}

/// Asks for the VSK, and sets it if it is told.
void Run::followVsk() {
    m_fixture.emptyPort();
    m_stale = false;
    if (!clean())
        return;
    const std::vector<Reply> told = reply(vsk.code, vsk.payload);
    m_fixture.line.replies = {told, reply(0x78, 0)};
    m_host.m_coreVersionNum = -static_cast<int>(m_in.below(2));
    const float before = m_vskTemp = m_in.take<float>();
    const unsigned long mark = m_fixture.portWrites();
    m_host.updateSensorTemp(true);
    const bool moved = !std::isnan(before) && !(m_vskTemp == before);
    const bool echoed = received(told, 9).bytes[3] == vsk.code;
    const unsigned long writes = !moved ? 0 : echoed ? 2 : 1;
    m_fixture.waitForWorker(mark, writes);
    require(m_fixture.portWrites() - mark == writes, "the VSK is set when it was told");
    m_fixture.line.replies.clear();
    m_stale = true;
}

void Run::command() {
    if (m_detached)
        return;
    Serial& link = *m_host.getSerial();
    const unsigned which = m_in.below(11);
    m_fixture.line.replies = {reply(m_in.take<std::uint8_t>(), 0)};
    const unsigned long mark = m_fixture.portWrites();
    const auto number = m_in.take<std::uint16_t>();
    int result = 0;
    switch (which) {
    case 0:
        result = m_host.autoShutter(m_in.take<bool>());
        break;
    case 1:
        result = m_host.insideShutter();
        break;
    case 2:
        result = m_host.insideShutterNoVSK();
        break;
    case 3:
        result = link.outsideShutter();
        break;
    case 4:
        result = m_host.setIntTime(m_in.take<int>(), number);
        break;
    case 5:
        result = m_host.setSerialVSK(number);
        break;
    case 6:
        result = link.changeTempRange(number, m_in.take<unsigned>());
        break;
    case 7:
        m_host.m_coreVersionNum = 1;
        m_host.changeTempRange(m_in.take<int>(), number);
        break;
    case 8:
        result = link.signalThread();
        break;
    case 9: // the second may replace the first: one exchange or two
        if (m_faulty && !m_repeats)
            m_repeats = m_digest.value(); // where the fault strikes now, time decides
        result = link.insideShutter() + link.setVSK(number);
        m_fixture.waitForWorker(mark, 1);
        m_fixture.waitForFrame(0x78);
        require(m_faulty || m_fixture.line.last.at(2) == 0x78, "the command last filled is sent");
        m_fixture.emptyPort();
        break;
    default:
        result = link.setIntTime(0, number);
    }
    require(result == 0, "a command is taken");
    m_fixture.waitForWorker(mark, 1);
    m_fixture.line.replies.clear();
    m_stale = true;
}

/// Set-up, frames and transfers, which belong to the host's thread.
void Run::port() {
    Link& link = *m_host.link;
    m_fixture.line.anyBytes = true;
    switch (m_in.below(8)) {
    case 0:
        link.set_speed(m_in.take<bool>() ? m_in.take<int>() : 9600);
        break;
    case 1: {
        const int bits = m_in.take<std::int8_t>(), stop = m_in.take<std::int8_t>();
        m_digest.add(link.set_Parity(bits, stop, m_in.take<std::int8_t>()));
        break;
    }
    case 2: {
        const auto n = m_in.take<std::uint8_t>();
        const auto payload = m_in.bytes(n);
        const bool none = m_in.below(8) == 7;
        const int length =
            link.packData({m_in.take<std::uint8_t>(), n, none ? nullptr : payload.data()});
        require(length == (n > 122 ? 0 : n + 6), "a frame is its payload and six bytes");
        break;
    }
    case 3: {
        auto bytes = m_in.bytes(m_in.take<std::uint8_t>());
        const int n = m_in.below(4) == 3 ? -1 : static_cast<int>(bytes.size());
        m_digest.add(link.generateSum(n < 0 ? nullptr : bytes.data(), n));
        break;
    }
    case 4: {
        const int at = link.unpackData(nullptr, m_in.take<int>());
        require(at >= -1 && at <= 126, "a header is found where there is room for it");
        m_digest.add(at);
        break;
    }
    case 5: {
        const auto bytes = m_in.bytes(m_in.take<std::uint8_t>());
        const int length = m_in.below(4) == 3 ? -1 : static_cast<int>(bytes.size());
        m_fixture.line.replies = {reply(0, 0)};
        const int written = link.writeData(m_in.below(8) == 7 ? nullptr : bytes.data(), length);
        require(written >= -1 && written <= length, "no more is written than was given");
        m_digest.add(written);
        break;
    }
    case 6: {
        const int length = m_in.take<bool>() ? m_in.take<int>() : m_in.take<std::uint8_t>();
        std::vector<unsigned char> room(static_cast<std::size_t>(std::clamp(length, 0, 128)));
        if (m_waits++ > 0)
            break;
        const int got = link.readData(m_in.below(8) == 7 ? nullptr : room.data(), length);
        require(got >= 0 && got <= static_cast<int>(room.size()), "no more is read than fits");
        m_digest.add(got);
        break;
    }
    default:
        m_detached ? link.restoreSerial() : link.closeSerial();
        m_detached = !m_detached;
    }
    m_fixture.line.replies.clear();
    m_fixture.line.anyBytes = m_faulty; // a cut write leaves no frame
    m_stale = true;
}

void Run::fault() {
    using irmsim::Fault, irmsim::Lasting;
    irmsim::Camera& camera = m_fixture.camera;
    constexpr std::array<int, 4> errors{EIO, EINTR, EAGAIN, ENODEV};
    const unsigned n = 1 + m_in.below(8);
    const Lasting lasting = m_in.take<bool>() ? Lasting::fromThenOn : Lasting::once;
    const int error = errors[m_in.below(4)];
    m_faulty = m_fixture.line.anyBytes = true;
    switch (m_in.below(5)) {
    case 0:
        camera.failPortTransfer(n, Fault::refused(error), lasting);
        break;
    case 1:
        camera.failPortTransfer(n, Fault::cutTo(m_in.below(8)), lasting);
        break;
    case 2:
        camera.failPortSetup(n, error, lasting);
        break;
    case 3:
        camera.unplugPort();
        break;
    default:
        if (m_detached)
            return; // it could not be set up again
        camera.failPortTransfer(0, Fault::refused(0)).failPortSetup(0, 0).plugInPort();
        m_faulty = m_fixture.line.anyBytes = false;
        m_host.link->set_Parity(8, 1, 'N');
        m_stale = true;
    }
}

void Run::step() {
    switch (m_in.below(8)) {
    case 0:
    case 1:
    case 2:
    case 3:
    case 4:
        return query();
    case 5:
        return command();
    case 6:
        return port();
    default:
        return fault();
    }
}

} // namespace

std::uint64_t irmfuzz::execute(const std::uint8_t* data, std::size_t size) {
    return Run(data, size).all();
}
