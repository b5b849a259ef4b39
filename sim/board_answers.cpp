// What the board works out when it is read.

#include "board.h"
#include "climate.h"
#include "device/registers.h"
#include "window.h"

#include <algorithm>
#include <cmath>

namespace irmsim {

namespace reg = irmcore::reg;

namespace {

/// The least span that the FPGA's own window takes: the gain of a lower one exceeds its register.
constexpr std::int32_t leastSpan = 65;
static_assert(reg::gainOfSpanOne / leastSpan <= 0xFFFF);

/// A temperature register's word: °C · 256, to the nearest step.
std::uint16_t temperatureWord(double celsius) {
    const double steps = std::fmin(std::fmax(std::round(celsius * 256.0), -32768.0), 32767.0);
    return static_cast<std::uint16_t>(static_cast<std::int16_t>(steps));
}

} // namespace

Rect shownPart(const Frame& frame) {
    const int x = frame.width / 8;
    const int y = frame.height / 8;
    return {x, y, frame.width - 1 - x, frame.height - 1 - y};
}

std::uint16_t Board::word(std::uint32_t address) const {
    return static_cast<std::uint16_t>(kept(address) | kept(address + 1) << 8);
}

void Board::refreshStatistics() {
    const Frame& now = frame();
    if (m_measured == m_frameStamp)
        return;
    m_whole = measure(now, {0, 0, now.width - 1, now.height - 1});
    m_shown = measure(now, shownPart(now));
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
    // Counting 65536 values is dear, and few hosts ask.
    if (!window.covers(reg::histogramPeak.address, 2))
        return;
    if (m_peakOf != m_frameStamp)
        m_peak = histogramPeak(frame(), m_bins);
    m_peakOf = m_frameStamp;
    window.put(reg::histogramPeak, m_peak);
}

std::optional<Board::Settings> Board::settingsOf(std::uint32_t address) const {
    const auto within = [address](std::uint32_t first, std::uint32_t last) {
        return address >= first && address <= last;
    };
    using namespace reg;
    if (within(frameMax.address, frameMinY.address + 1U) ||
        within(shownMaxX.address, shownMinY.address + 1U) ||
        within(pixelCount.address, pixelCount.address + 3U) ||
        within(fpgaLevel.address, fpgaGain.address + 1U) ||
        within(histogramMax.address, reg::histogramPeak.address + 1U))
        return Settings{0, 0};
    for (unsigned i = 0; i < m_points.size(); ++i)
        if (m_points[i] && within(pointAd.at(i).address, pointAd.at(i).address + 1U))
            return Settings{pointPosition.at(i).address, 4};
    for (unsigned i = 0; i < m_areas.size(); ++i)
        if (m_areas[i].alive && (within(areaMax.at(i).address, areaAvg.at(i).address + 1U) ||
                                 within(areaPos.at(i).address, areaPos.at(i).address + 7U)))
            return Settings{areaBounds.at(i).address, 8};
    return std::nullopt;
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
        if (!area.alive || !window.covers(bounds, reg::areaBounds.stride))
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

} // namespace irmsim
