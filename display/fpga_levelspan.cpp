#include "../core/fpga.h"
#include "../core/range.h"
#include "window.h"

#include <cstdio>

int m_levelSpanMaxAD = 0;
int m_levelSpanMinAD = 0;
bool m_isStarLevelSpanControl = false;

namespace {

constexpr int minimumSpan = 128; // AD

/// Calls of `calcLevelSpan` since the library was loaded, up to 3.
int s_levelSpanCalls = 0;

irmcore::WindowLimits limits() { return {m_levelSpanMinAD, m_levelSpanMaxAD}; }

} // namespace

void FPGA::updateLevelSpanLimits(int range) {
    const irmcore::RangeLimits ends = irmcore::limitsOfRange(range);
    m_levelSpanMaxAD = m_sysTempHandler->irTemp2AD(static_cast<float>(ends.max)).ad;
    m_levelSpanMinAD = m_sysTempHandler->irTemp2AD(static_cast<float>(ends.min)).ad;
}

irmcore::Window FPGA::frameWindow(int minSpan) {
    irmcore::FrameStatistics s{};
    s.high = fpga_get_auto_max();
    s.low = fpga_get_auto_min();
    s.mid = fpga_get_auto_averg();
    return irmcore::windowOver(irmcore::clamped(s, limits()), limits(), minSpan);
}

irmcore::Window FPGA::histogramWindow(int minSpan) {
    irmcore::FrameStatistics s{};
    fpga_get_zft_maxMin(&s.high, &s.low);
    fpga_get_zft_most(&s.mid);
    return irmcore::windowOverHistogram(irmcore::clamped(s, limits()), limits(), minSpan);
}

void FPGA::placeWindow(irmcore::Window window) {
    m_span = window.span;
    m_level = window.level;
    // Up to a span of 64 the gain does not fit its 16 bits.
    fpga_set_levelSpan(m_level, irmcore::low16(irmcore::gainOf(m_span)));
    followWindow();
}

void FPGA::setLevelSpanMode(Mode_t mode) { m_levelSpanMode = mode; }

void FPGA::autoLevel(float) {}

void FPGA::autoSpan(float) {}

void FPGA::calcLevelSpan(Mode_t mode, bool smooth) {
    constexpr int countedCalls = 3;
    if (s_levelSpanCalls < countedCalls && ++s_levelSpanCalls == 1)
        startLevelSpanControl(true);
    irmcore::Window window{};
    if (mode == LEVELSPAN_ZFT)
        window = histogramWindow(minimumSpan);
    else if (mode == LEVELSPAN_AUTO)
        window = frameWindow(minimumSpan);
    else
        return;
    if (smooth)
        window = irmcore::smoothed(window, {m_level, m_span});
    placeWindow(window);
}

int FPGA::handLevelSpan(float minTemp, float maxTemp) {
    m_sysTempHandler->setTempSetup(m_sysTempSetup);
    const IrTempStru low = m_sysTempHandler->irTemp2AD(minTemp);
    const IrTempStru high = m_sysTempHandler->irTemp2AD(maxTemp);
    if (!irmcore::isOk(low) || !irmcore::isOk(high))
        return 1;
    // A negative difference is a huge span modulo 2^32, and its gain is 0.
    const unsigned int difference = static_cast<unsigned int>(high.ad) - low.ad;
    m_level = low.ad;
    m_span = irmcore::low16(difference);
    fpga_set_levelSpan(m_level, irmcore::gainOf(difference));
    followWindow();
    return 1;
}

unsigned char FPGA::startLevelSpanControl(bool on) {
    m_level = fpga_get_fpga_level();
    m_span = fpga_get_fpga_span();
    std::printf("start level span control fpgaLevel:%x fpgaSpan:%x\n", m_level, m_span);
    if (m_span != 0)
        fpga_set_levelSpan(m_level, irmcore::gainOf(m_span));
    m_isStarLevelSpanControl = on;
    return fpga_start_level_span_control(on);
}
