#include "replay.h"

#include "device/registers.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace irmsim {

namespace reg = irmcore::reg;

namespace {

constexpr Time framePeriod = std::chrono::milliseconds(40);

/// Whether two calls ask for the same. Of a write only what was transferred is known.
bool same(const Observation& recorded, const Observation& wanted) {
    if (recorded.call != wanted.call)
        return false;
    if (recorded.call == Observation::Call::open || recorded.call == Observation::Call::seek)
        return true;
    const auto known = static_cast<std::size_t>(std::max(recorded.result, 0L));
    return recorded.address == wanted.address && recorded.length == wanted.length &&
           (recorded.call != Observation::Call::write || known == 0 ||
            std::memcmp(recorded.bytes, wanted.bytes, known) == 0);
}

} // namespace

Replay::Replay(const std::vector<Observation>& calls, Board& board, Clock& clock, bool loop)
    : m_board(board), m_clock(clock), m_loop(loop), m_bytes(registers), m_answer(registers),
      m_parts(reg::framePart384 * reg::frameParts384), m_stream(m_parts.size()) {
    for (const Observation& call : calls)
        if (!call.port &&
            (call.call == Call::open || call.call == Call::read || call.call == Call::write ||
             (call.call == Call::seek && call.result < 0)))
            m_steps.push_back({call});
    if (!calls.empty() && calls.front().real)
        m_shift = -calls.front().time; // a steady clock begins anywhere
    findFrames();
    for (const Step& step : m_steps) {
        const Observation& o = step.call;
        if (o.call != Call::read)
            continue;
        for (long i = 0; i < o.result && o.address + static_cast<std::size_t>(i) < registers; ++i) {
            Byte& byte = m_bytes[o.address + static_cast<std::size_t>(i)];
            if (!byte.everRead)
                byte.first = o.bytes[i];
            byte.everRead = true;
        }
    }
}

long Replay::open() {
    const std::size_t step = match({Call::open, false});
    if (step == none)
        return 0;
    passThrough(step);
    return std::min(m_steps[step].call.result, 0L);
}

long Replay::seek() {
    if (m_next == m_steps.size() || m_steps[m_next].call.call != Call::seek)
        return 0;
    const long result = m_steps[m_next].call.result;
    passThrough(m_next);
    return result;
}

long Replay::read(std::uint32_t address, void* buf, std::size_t len) {
    auto* out = static_cast<std::uint8_t*>(buf);
    if (len == 0)
        return 0;
    if (address == reg::frame.address)
        return readFrame(out, len);
    const std::size_t step = match({Call::read, false, false, address, nullptr, len});
    if (step != none) {
        passThrough(step);
        const long result = m_steps[step].call.result;
        if (result <= 0)
            return result;
        len = std::min(len, static_cast<std::size_t>(result));
    }
    bool known = address < registers && len <= registers - address;
    if (known && m_frames > 0)
        m_board.read(address, m_answer.data(), len);
    for (std::size_t i = 0; known && i < len; ++i) {
        const auto value = byteAt(address + static_cast<std::uint32_t>(i), m_answer[i]);
        known = value.has_value();
        m_answer[i] = value.value_or(0);
    }
    if (!known) {
        complain(address);
        return -EIO;
    }
    std::memcpy(out, m_answer.data(), len);
    return static_cast<long>(len);
}

long Replay::write(std::uint32_t address, const void* buf, std::size_t len) {
    const auto* bytes = static_cast<const std::uint8_t*>(buf);
    const std::size_t step = match({Call::write, false, false, address, bytes, len});
    if (step != none) {
        passThrough(step);
        const long result = m_steps[step].call.result;
        if (result < 0)
            return result;
        len = std::min(len, static_cast<std::size_t>(result));
    }
    m_board.write(address, bytes, len);
    for (std::size_t i = 0; i < len && address + i < registers; ++i) {
        Byte& byte = m_bytes[address + i];
        byte.differs = !byte.known || byte.value != bytes[i];
    }
    return static_cast<long>(len);
}

std::size_t Replay::match(const Observation& wanted) {
    if (m_next == m_steps.size() && !restart()) {
        sayEnd();
        return none;
    }
    const Observation& next = m_steps[m_next].call;
    if (same(next, wanted))
        return m_next;
    const Time limit = m_clock.now() + framePeriod;
    for (std::size_t i = m_next; i < m_steps.size(); ++i) {
        if (m_steps[i].part >= 0 || timeOf(i) > limit)
            break;
        if (same(m_steps[i].call, wanted))
            return i;
    }
    if (wanted.call == Call::write && next.call == Call::write && next.address == wanted.address &&
        next.length == wanted.length)
        return m_next; // the host goes on as then, with another value
    while (m_next < m_steps.size() && timeOf(m_next) < m_clock.now())
        pass(m_steps[m_next++]);
    return none;
}

void Replay::passThrough(std::size_t step) {
    const Time then = timeOf(step);
    while (m_next <= step)
        pass(m_steps[m_next++]);
    if (const Time now = m_clock.now(); then > now)
        m_clock.skip(then - now);
}

void Replay::pass(const Step& step) {
    const Observation& o = step.call;
    const auto length = static_cast<std::size_t>(std::max(o.result, 0L));
    if (o.call != Call::read && o.call != Call::write)
        return;
    if (step.whole)
        passFrame(step);
    for (std::size_t i = 0; i < length && o.address + i < registers; ++i) {
        Byte& byte = m_bytes[o.address + i];
        byte.value = o.bytes[i];
        byte.known = true;
        if (o.call == Call::write) {
            byte.written = o.bytes[i];
            byte.isWritten = true;
        } else {
            keepMeasured(o.address + static_cast<std::uint32_t>(i), o.bytes[i]);
        }
    }
}

void Replay::keepMeasured(std::uint32_t address, std::uint8_t value) {
    if (address < reg::pointPosition.base) {
        m_measured[{0, address}] = value;
        return;
    }
    const auto keep = [&](const Board::Settings& settings, std::uint32_t first,
                          std::size_t length) {
        if (address < first || address >= first + length)
            return;
        if (const auto passed = settingsPassed(settings))
            m_measured[{*passed, address - settings.address}] = value;
    };
    for (unsigned i = 0; i < reg::pointAd.count; ++i)
        keep({reg::pointPosition.at(i).address, 4}, reg::pointAd.at(i).address, 2);
    for (unsigned i = 0; i < reg::areaMax.count; ++i) {
        const Board::Settings bounds{reg::areaBounds.at(i).address, 8};
        keep(bounds, reg::areaMax.at(i).address, 6);
        keep(bounds, reg::areaPos.at(i).address, 8);
    }
}

std::optional<std::uint64_t> Replay::settingsPassed(const Board::Settings& settings) const {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < settings.length; ++i) {
        const Byte& byte = m_bytes[settings.address + i];
        if (!byte.isWritten)
            return std::nullopt;
        value = value << 8 | byte.written;
    }
    return value;
}

std::uint64_t Replay::settingsOfHost(const Board::Settings& settings) const {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < settings.length; ++i)
        value = value << 8 | m_board.kept(settings.address + static_cast<std::uint32_t>(i));
    return value;
}

std::optional<std::uint8_t> Replay::byteAt(std::uint32_t address, std::uint8_t computed) const {
    const Byte& byte = m_bytes[address];
    if (const auto settings = m_board.settingsOf(address)) {
        const auto found =
            m_measured.find({settingsOfHost(*settings), address - settings->address});
        if (found != m_measured.end())
            return found->second;
        if (m_frames > 0 && withinFrame(*settings))
            return computed;
        if (settings->length > 0)
            return std::nullopt;
    } else if (byte.differs) {
        return m_board.kept(address);
    }
    if (byte.known)
        return byte.value;
    return byte.everRead ? std::optional(byte.first) : std::nullopt;
}

bool Replay::withinFrame(const Board::Settings& settings) const {
    const Frame& frame = m_board.frame();
    for (std::uint32_t i = 0; i < settings.length; i += 2) {
        const std::uint32_t at = settings.address + i;
        const int value = m_board.kept(at) | m_board.kept(at + 1) << 8;
        if (value >= (i % 4 == 0 ? frame.width : frame.height))
            return false;
    }
    return true;
}

bool Replay::restart() {
    if (!m_loop || m_steps.empty())
        return false;
    m_next = 0;
    m_shift = m_clock.now() - m_steps.front().call.time;
    return true;
}

void Replay::sayEnd() {
    if (!m_saidEnd)
        std::fputs("irmsim: the recording has ended; its last frame and values stay\n", stderr);
    m_saidEnd = true;
}

void Replay::complain(std::uint32_t address) {
    if (!m_complained.insert(address).second)
        return;
    const char* name = "none that is known";
    for (const reg::Entry& entry : reg::map)
        for (std::uint32_t slot = 0; slot < entry.slots; ++slot) {
            const std::uint32_t first = entry.address + slot * entry.stride;
            const std::uint32_t width = std::max(entry.readWidth, entry.writeWidth) * entry.words;
            if (address == first ||
                (address > first && address < first + width && slot == 0 && entry.slots == 1))
                name = entry.name;
        }
    std::fprintf(stderr, "irmsim: the recording does not tell register 0x%04X (%s): EIO\n",
                 static_cast<unsigned>(address), name);
}

} // namespace irmsim
