// The frames of a recorded session.

#include "device/registers.h"
#include "replay.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace irmsim {

namespace reg = irmcore::reg;

namespace {

constexpr int lastPart = reg::frameParts384 - 1;

bool onFrame(const Observation& o) {
    return o.call == Observation::Call::read && o.address == reg::frame.address;
}

bool parted(std::size_t length) { return length == reg::framePart384; }

} // namespace

void Replay::findFrames() {
    int part = 0;
    std::vector<Step*> parts;
    for (Step& step : m_steps) {
        if (!onFrame(step.call))
            continue;
        const std::size_t length = step.call.length;
        const bool complete = step.call.result == static_cast<long>(length);
        step.part = parted(length) ? part : 0;
        if (step.part == 0)
            parts.clear();
        parts.push_back(&step);
        if (!parted(length)) {
            step.whole = complete && length == reg::frame.length;
            part = 0;
        } else if (!complete) {
            part = 0;
        } else if (++part > lastPart) {
            for (Step* each : parts)
                each->whole = true;
            part = 0;
        }
    }
}

void Replay::passFrame(const Step& step) {
    const std::size_t length = step.call.length;
    std::memcpy(m_parts.data() + static_cast<std::size_t>(step.part) * length, step.call.bytes,
                length);
    if (parted(length) && step.part < lastPart)
        return;
    Frame frame;
    frame.width = parted(length) ? 384 : 160;
    frame.height = parted(length) ? 288 : 120;
    frame.ad.resize(static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height));
    for (std::size_t i = 0; i < frame.ad.size(); ++i)
        frame.ad[i] = static_cast<std::uint16_t>(m_parts[2 * i] | m_parts[2 * i + 1] << 8);
    m_board.show(frame);
    ++m_frames;
    m_measured.clear();
}

long Replay::readFrame(std::uint8_t* out, std::size_t len) {
    const int part = parted(len) ? m_hostPart : 0;
    const auto asked = [&](const Step& step) {
        return onFrame(step.call) && step.call.length == len && step.part == part;
    };
    std::size_t at = m_next;
    // The rest of a frame that has been begun may have other calls before it.
    while (part > 0 && at < m_steps.size() && m_steps[at].part != 0 && !asked(m_steps[at]))
        ++at;
    long result = static_cast<long>(len);
    if (at < m_steps.size() && asked(m_steps[at])) {
        passThrough(at);
        const Observation& recorded = m_steps[at].call;
        result = recorded.result;
        if (result > 0)
            std::memcpy(out, recorded.bytes, std::min(len, static_cast<std::size_t>(result)));
    } else if (!holdFrame(part == 0 && (parted(len) || len == reg::frame.length))) {
        complain(reg::frame.address);
        result = -EIO;
    } else {
        deliverPart(out, len, part);
    }
    m_hostPart = parted(len) && result == static_cast<long>(len) ? (part + 1) % (lastPart + 1) : 0;
    return result;
}

bool Replay::holdFrame(bool next) {
    if ((next || m_frames == 0) && !nextWholeFrame() && m_frames > 0) {
        sayEnd();
        m_clock.passFrame();
    }
    return m_frames > 0;
}

bool Replay::nextWholeFrame() {
    const auto find = [this] {
        std::size_t step = m_next;
        while (step < m_steps.size() && !(m_steps[step].whole && m_steps[step].part == 0))
            ++step;
        return step;
    };
    std::size_t step = find();
    if (step == m_steps.size() && restart())
        step = find();
    if (step == m_steps.size())
        return false;
    while (parted(m_steps[step].call.length) && m_steps[step].part < lastPart)
        do
            ++step;
        while (m_steps[step].part < 0);
    passThrough(step);
    return true;
}

void Replay::deliverPart(std::uint8_t* out, std::size_t len, int part) {
    if (parted(len)) {
        deliver(m_board.frame(), 384, 288, m_stream.data());
        std::memcpy(out, m_stream.data() + static_cast<std::size_t>(part) * len, len);
        return;
    }
    deliver(m_board.frame(), 160, 120, m_stream.data());
    const std::size_t n = std::min<std::size_t>(len, reg::frame.length);
    std::memcpy(out, m_stream.data(), n);
    std::memset(out + n, 0, len - n);
}

} // namespace irmsim
