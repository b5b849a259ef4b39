#include "board.h"

#include "climate.h"
#include "device/registers.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace irmsim {

namespace reg = irmcore::reg;

namespace {

constexpr int partedWidth = 384;
constexpr int partedHeight = 288;
constexpr int wholeWidth = 160;
constexpr int wholeHeight = 120;
constexpr std::size_t partedBytes = reg::framePart384 * reg::frameParts384;
static_assert(partedBytes == std::size_t{2} * partedWidth * partedHeight);
static_assert(reg::frame.length == std::size_t{2} * wholeWidth * wholeHeight);

/// The least span that the FPGA's own window takes: the gain of a lower one exceeds its register.
constexpr std::int32_t leastSpan = 65;
static_assert(reg::gainOfSpanOne / leastSpan <= 0xFFFF);

constexpr std::uint32_t areaBlock = 64;
constexpr std::uint32_t pointBlock = 16;
constexpr unsigned allBounds = 0xF;

bool meet(std::uint32_t a, std::size_t aLength, std::uint32_t b, std::size_t bLength) {
    return a < b + bLength && b < a + aLength;
}

/// A temperature register's word: °C · 256, to the nearest step.
std::uint16_t temperatureWord(double celsius) {
    const double steps = std::fmin(std::fmax(std::round(celsius * 256.0), -32768.0), 32767.0);
    return static_cast<std::uint16_t>(static_cast<std::int16_t>(steps));
}

} // namespace

/// The bytes that one transfer reads.
class Board::Window {
public:
    Window(std::uint32_t address, std::uint8_t* bytes, std::size_t length)
        : m_address(address), m_bytes(bytes), m_length(length) {}

    bool covers(std::uint32_t address, std::size_t length) const {
        return meet(m_address, m_length, address, length);
    }

    void put(std::uint32_t address, const std::uint8_t* bytes, std::size_t length) {
        if (!covers(address, length))
            return;
        for (std::size_t i = 0; i < length; ++i)
            if (address + i >= m_address && address + i - m_address < m_length)
                m_bytes[address + i - m_address] = bytes[i];
    }

    /// The value of a register, as wide as it is read.
    template <typename R, typename W>
    void put(const reg::Register<R, W>& r, std::uint64_t value) {
        putValue(r.address, value, reg::wireWidth<R>());
    }
    template <typename R, typename W>
    void put(const reg::Register<R, W>& r, unsigned offset, std::uint64_t value) {
        putValue(r.address + offset, value, reg::wireWidth<R>());
    }

private:
    void putValue(std::uint32_t address, std::uint64_t value, std::size_t width) {
        std::array<std::uint8_t, 8> bytes{};
        for (std::size_t i = 0; i < width; ++i)
            bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
        put(address, bytes.data(), width);
    }

    std::uint32_t m_address;
    std::uint8_t* m_bytes;
    std::size_t m_length;
};

Board::Board(const Scene& scene, const Detector& detector)
    : m_scene(scene), m_detector(detector), m_bins(0x10000), m_stream(partedBytes) {
    setVersion("irmsim FPGA 1.0");
    m_counts.reserve(partedBytes / 2);
    m_frame.ad.reserve(partedBytes / 2);
}

long Board::read(std::uint32_t address, void* buf, std::size_t len) {
    auto* out = static_cast<std::uint8_t*>(buf);
    Window window(address, out, len);
    if (address == reg::frame.address) {
        readFrame(out, len);
    } else if (len > 0) {
        std::memset(out, 0, len);
        window.put(0, m_kept.data(), m_kept.size());
        answerStatistics(window);
        answerPoints(window);
        answerAreas(window);
        answerSensors(window);
    }
    for (const Poke& poke : m_pokes)
        window.put(poke.address, poke.bytes.data(), poke.bytes.size());
    return static_cast<long>(len);
}

long Board::write(std::uint32_t address, const void* buf, std::size_t len) {
    if (len > 0 && address < m_kept.size()) {
        std::memcpy(m_kept.data() + address, buf, std::min(len, m_kept.size() - address));
        takeOwnership(address, len);
        const bool freeze = (m_kept[reg::freezeControl.address] & reg::frozen.mask()) != 0;
        if (freeze && !m_frozen)
            frame(); // what is kept is the frame of this moment
        m_frozen = freeze;
    }
    return static_cast<long>(len);
}

void Board::readFrame(std::uint8_t* out, std::size_t len) {
    const Frame& now = m_part == 0 ? frame() : m_frame;
    if (len == reg::framePart384) {
        if (m_part == 0)
            deliver(now, partedWidth, partedHeight, m_stream.data());
        std::memcpy(out, m_stream.data() + m_part * len, len);
        m_part = (m_part + 1) % reg::frameParts384;
        if (m_part == 0)
            nextFrame();
        return;
    }
    m_part = 0;
    frame();
    deliver(m_frame, wholeWidth, wholeHeight, m_stream.data());
    const std::size_t whole = reg::frame.length;
    if (len > 0) {
        std::memset(out, 0, len);
        std::memcpy(out, m_stream.data(), std::min(len, whole));
    }
    if (len == whole)
        nextFrame();
}

void Board::setLensCode(unsigned code) { m_lensCode = code & reg::lensCodeMask; }

void Board::setLensVariant(bool on) {
    std::uint8_t& byte = m_kept[reg::imageControl.address];
    const unsigned mask = reg::lensVariant.mask();
    byte = static_cast<std::uint8_t>(on ? byte | mask : byte & ~mask);
}

void Board::setVersion(const std::string& text) {
    m_version.fill(' ');
    std::copy_n(text.begin(), std::min(text.size(), m_version.size()), m_version.begin());
}

void Board::poke(std::uint32_t address, std::vector<std::uint8_t> bytes) {
    m_pokes.push_back({address, std::move(bytes)});
}

void Board::unpoke(std::uint32_t address) {
    m_pokes.erase(std::remove_if(m_pokes.begin(), m_pokes.end(),
                                 [=](const Poke& poke) { return poke.address == address; }),
                  m_pokes.end());
}

void Board::nextFrame() {
    if (!m_frozen)
        ++m_frameNumber;
}

std::uint8_t Board::kept(std::uint32_t address) const {
    return address < m_kept.size() ? m_kept[address] : std::uint8_t{0};
}

std::uint16_t Board::word(std::uint32_t address) const {
    return static_cast<std::uint16_t>(kept(address) | kept(address + 1) << 8);
}

const Frame& Board::frame() {
    if (m_frozen && m_frameStamp != 0)
        return m_frame;
    bool changed = false;
    if (m_countsScene != m_scene.stamp() || m_countsDetector != m_detector.stamp()) {
        m_frame.width = m_scene.width();
        m_frame.height = m_scene.height();
        m_counts.clear();
        double last = 0;
        double lastCounts = m_detector.counts(last);
        for (int y = 0; y < m_frame.height; ++y) {
            for (int x = 0; x < m_frame.width; ++x) {
                const double celsius = m_scene.at(x, y);
                if (!(celsius == last)) {
                    last = celsius;
                    lastCounts = m_detector.counts(celsius);
                }
                m_counts.push_back(lastCounts);
            }
        }
        m_frame.ad.resize(m_counts.size());
        m_countsScene = m_scene.stamp();
        m_countsDetector = m_detector.stamp();
        changed = true;
    }
    if (changed || (m_detector.noise() > 0 && m_frameOf != m_frameNumber)) {
        for (std::size_t i = 0; i < m_counts.size(); ++i)
            m_frame.ad[i] =
                m_detector.rawOf(m_counts[i], m_frameNumber, static_cast<std::uint32_t>(i));
        m_frameOf = m_frameNumber;
        ++m_frameStamp;
    }
    return m_frame;
}

void Board::refreshStatistics() {
    const Frame& now = frame();
    if (m_measured == m_frameStamp)
        return;
    m_whole = measure(now, {0, 0, now.width - 1, now.height - 1});
    const int marginX = now.width / 8;
    const int marginY = now.height / 8;
    m_shown = measure(now, {marginX, marginY, now.width - 1 - marginX, now.height - 1 - marginY});
    m_peak = histogramPeak(now, m_bins);
    m_measured = m_frameStamp;
}

void Board::answerStatistics(Window& window) {
    constexpr std::uint32_t first = reg::frameMax.address;
    constexpr std::uint32_t end = reg::histogramPeak.address + 2U;
    if (!window.covers(first, end - first))
        return;
    refreshStatistics();
    window.put(reg::frameMax, m_whole.max.ad);
    window.put(reg::frameMin, m_whole.min.ad);
    window.put(reg::adSum, m_whole.sum);
    window.put(reg::shownMax, m_shown.max.ad);
    window.put(reg::shownMin, m_shown.min.ad);
    window.put(reg::frameMaxX, m_whole.max.x);
    window.put(reg::frameMaxY, m_whole.max.y);
    window.put(reg::frameMinX, m_whole.min.x);
    window.put(reg::frameMinY, m_whole.min.y);
    window.put(reg::shownMaxX, m_shown.max.x);
    window.put(reg::shownMaxY, m_shown.max.y);
    window.put(reg::shownMinX, m_shown.min.x);
    window.put(reg::shownMinY, m_shown.min.y);
    window.put(reg::pixelCount, m_whole.pixels);
    const std::int32_t span = std::max(m_whole.max.ad - m_whole.min.ad, leastSpan);
    window.put(reg::fpgaLevel, m_whole.min.ad);
    window.put(reg::fpgaGain, static_cast<std::uint64_t>(reg::gainOfSpanOne / span));
    window.put(reg::histogramMax, m_whole.max.ad);
    window.put(reg::histogramMin, m_whole.min.ad);
    window.put(reg::histogramPeak, m_peak);
}

void Board::answerPoints(Window& window) {
    for (unsigned i = 0; i < m_points.size(); ++i) {
        const auto result = reg::pointAd.at(i);
        if (!m_points[i] || !window.covers(result.address, 2))
            continue;
        const std::uint32_t position = reg::pointPosition.at(i).address;
        window.put(result, ad(word(position), word(position + 2)));
    }
}

void Board::answerAreas(Window& window) {
    for (unsigned i = 0; i < m_areas.size(); ++i) {
        Area& area = m_areas[i];
        const std::uint32_t bounds = reg::areaBounds.at(i).address;
        if (!area.alive || !window.covers(bounds, areaBlock))
            continue;
        frame();
        if (area.measured != m_frameStamp) {
            area.values = measure(
                m_frame, {word(bounds), word(bounds + 2), word(bounds + 4), word(bounds + 6)});
            area.measured = m_frameStamp;
        }
        const Statistics& v = area.values;
        window.put(reg::areaMax.at(i), v.max.ad);
        window.put(reg::areaMin.at(i), v.min.ad);
        window.put(reg::areaAvg.at(i), v.mean());
        window.put(reg::areaPos.at(i), 0, v.max.x);
        window.put(reg::areaPos.at(i), 2, v.max.y);
        window.put(reg::areaPos.at(i), 4, v.min.x);
        window.put(reg::areaPos.at(i), 6, v.min.y);
    }
}

void Board::answerSensors(Window& window) const {
    const unsigned power = m_power ? 1U << reg::detectorPowerBit : 0U;
    window.put(reg::detectorState, power | m_lensCode);
    window.put(reg::shutterTemp, temperatureWord(m_detector.shutterTemp()));
    window.put(reg::sensorTemp, temperatureWord(m_detector.sensorTemp()));
    if (window.covers(reg::sht11Temp.address, 4)) {
        const Surroundings& air = m_detector.surroundings();
        window.put(reg::sht11Temp, climateTemperatureWord(air.envTemp));
        window.put(reg::sht11Humid, climateHumidityWord(air.envTemp, air.humidity));
    }
    window.put(reg::version.address, m_version.data(), m_version.size());
}

void Board::takeOwnership(std::uint32_t address, std::size_t len) {
    for (unsigned i = 0; i < m_points.size(); ++i) {
        if (len == 4 && address == reg::pointPosition.at(i).address) {
            endAreasIn(address, len);
            m_points[i] = true;
            return;
        }
    }
    for (unsigned i = 0; i < m_areas.size(); ++i) {
        const std::uint32_t block = reg::areaBounds.at(i).address;
        if (len != 2 || address < block || address > block + 6 || (address - block) % 2 != 0)
            continue;
        Area& area = m_areas[i];
        area.boundsSeen |= 1U << ((address - block) / 2);
        area.measured = 0;
        if (area.boundsSeen == allBounds && !area.alive) {
            endPointsIn(block, areaBlock);
            area.alive = true;
        }
        return;
    }
    endPointsIn(address, len);
    endAreasIn(address, len);
}

void Board::endPointsIn(std::uint32_t address, std::size_t len) {
    for (unsigned i = 0; i < m_points.size(); ++i)
        if (meet(reg::pointPosition.at(i).address, pointBlock, address, len))
            m_points[i] = false;
}

void Board::endAreasIn(std::uint32_t address, std::size_t len) {
    for (unsigned i = 0; i < m_areas.size(); ++i)
        if (meet(reg::areaBounds.at(i).address, areaBlock, address, len))
            m_areas[i] = Area{};
}

} // namespace irmsim
