#include "detectorcore.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace irmsim {

namespace {

enum Code : std::uint8_t {
    autoShutter = 0x30,
    insideShutter = 0x31,
    insideShutterNoVsk = 0x51,
    outsideShutter = 0x52,
    readDrift = 0x61,
    setIntegrationTime = 0x70,
    readVsk = 0x77,
    setVsk = 0x78,
    readSum = 0x79,
    readCpuVersion = 0x80,
    readFpgaVersion = 0x81,
    changeRange = 0x82,
    shutDown = 0x84,
    readSensor = 0x96,
};

constexpr std::size_t versionBytes = 15;
constexpr std::size_t keptFrames = 1000000;
constexpr std::uint16_t vskAtPowerUp = 1875;
constexpr Time brokenOff = std::chrono::seconds(1);

using Bytes = std::vector<std::uint8_t>;

std::uint16_t wordAt(const Bytes& bytes, std::size_t at) {
    return static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8);
}

Bytes number(std::uint32_t value, std::size_t width) {
    Bytes bytes;
    for (std::size_t i = 0; i < width; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i) & 0xFFU));
    return bytes;
}

Bytes text(const std::string& version) {
    Bytes bytes(versionBytes, ' ');
    std::copy_n(version.begin(), std::min(version.size(), versionBytes), bytes.begin());
    return bytes;
}

Bytes replyOf(std::uint8_t code, const Bytes& payload) {
    Bytes bytes{0x7F, 0xA5, 0x00, code, static_cast<std::uint8_t>(payload.size())};
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    std::uint8_t sum = 0;
    for (std::size_t i = 2; i < bytes.size(); ++i)
        sum = static_cast<std::uint8_t>(sum ^ bytes[i]);
    bytes.push_back(sum);
    bytes.push_back(0x5A);
    return bytes;
}

/// Payload bytes that a command has; -1 for one that the core does not know.
int payloadOf(std::uint8_t code) {
    switch (code) {
    case insideShutter:
    case insideShutterNoVsk:
    case outsideShutter:
    case readVsk:
    case readSum:
    case readCpuVersion:
    case readFpgaVersion:
    case shutDown:
        return 0;
    case autoShutter:
        return 1;
    case setIntegrationTime:
    case setVsk:
    case readSensor:
        return 2;
    case readDrift:
    case changeRange:
        return 4;
    default:
        return -1;
    }
}

} // namespace

unsigned long CoreCounts::allGood() const { return std::accumulate(good.begin(), good.end(), 0UL); }

DetectorCore::DetectorCore(Detector& detector, Shutter& shutter)
    : m_detector(detector), m_shutter(shutter), m_vsk(vskAtPowerUp) {}

void DetectorCore::powerUp(Time now) {
    m_on = true;
    m_vsk = vskAtPowerUp;
    m_reader.giveUp();
    m_shutter.setAutomatic(true, now);
    m_shutter.close(now);
}

std::vector<Reply> DetectorCore::receive(const std::uint8_t* bytes, std::size_t n, Time now) {
    std::vector<Reply> replies;
    if (now - m_lastByte >= brokenOff && m_reader.giveUp())
        ++m_counts.bad;
    m_lastByte = now;
    m_reader.feed(bytes, n);
    while (m_on) {
        std::optional<RawFrame> frame = m_reader.next();
        if (!frame)
            return replies;
        Bytes answer;
        const bool good = frame->intact && obey(*frame, now, answer);
        if (good && !faults.silent) {
            Reply reply{replyOf(frame->code, answer), faults.late};
            const auto garbled = static_cast<std::size_t>(std::max(faults.garbled, 0));
            if (faults.garbled >= 0 && garbled < reply.bytes.size())
                reply.bytes[garbled] = static_cast<std::uint8_t>(reply.bytes[garbled] ^ 0xFF);
            replies.push_back(std::move(reply));
        }
        ++(good ? m_counts.good[frame->code] : m_counts.bad);
        if (m_frames.size() == keptFrames)
            m_frames.pop_front();
        m_frames.push_back({frame->code, std::move(frame->payload), secondsOf(now), good});
    }
    m_reader.giveUp(); // nobody listens any more
    return replies;
}

bool DetectorCore::obey(const RawFrame& frame, Time now, Bytes& answer) {
    if (payloadOf(frame.code) != static_cast<int>(frame.payload.size()))
        return false;
    switch (frame.code) {
    case autoShutter:
        m_shutter.setAutomatic(frame.payload[0] != 0, now);
        break;
    case insideShutter:
    case insideShutterNoVsk:
    case outsideShutter:
        m_shutter.close(now);
        break;
    case setIntegrationTime:
        takeIntTime(frame, now);
        break;
    case changeRange:
        takeIntTime(frame, now);
        m_vsk = wordAt(frame.payload, 2);
        break;
    case setVsk:
        m_vsk = wordAt(frame.payload, 0);
        break;
    case shutDown:
        m_on = false;
        m_shutter.stop();
        break;
    case readDrift:
        answer = number(m_answers.drift, 4);
        break;
    case readVsk:
        answer = number(m_vsk, 2);
        break;
    case readSum:
        answer = number(m_answers.sum, 2);
        break;
    case readSensor:
        answer = number(m_answers.sensor, 2);
        break;
    case readCpuVersion:
        answer = text(m_answers.cpuVersion);
        break;
    case readFpgaVersion:
        answer = text(m_answers.fpgaVersion);
        break;
    default:
        break;
    }
    return true;
}

void DetectorCore::takeIntTime(const RawFrame& frame, Time now) {
    m_intTime = wordAt(frame.payload, 0);
    for (std::size_t range = 0; range < rangeIntTimes.size(); ++range)
        if (rangeIntTimes[range] == m_intTime)
            m_detector.setRange(static_cast<int>(range));
    m_shutter.close(now);
}

void DetectorCore::clearFrames() {
    m_frames.clear();
    m_counts = CoreCounts{};
}

} // namespace irmsim
