#include "../core/fpga.h"
#include "drift.h"
#include "modify.h"

void FPGA::startBiaoDing(bool on) {
    m_sysTempHandler->m_biaoDing = on;
    m_queryTempHandler->m_biaoDing = on;
}

int FPGA::checkBiaoDingTab() {
    constexpr double lowest = 0.1;
    constexpr float highest = 3.0F;
    const int entries = m_tempInfoTab.tempNum;
    if (entries == 0)
        return -1;
    // Rising from neighbour to neighbour is rising for every pair.
    for (int i = 0; i + 1 < entries; ++i)
        if (m_tempInfoTab.ad[i + 1] <= m_tempInfoTab.ad[i])
            return -1;
    for (const float factor : s_modify)
        if (!(static_cast<double>(factor) > lowest) || factor >= highest)
            return -2;
    return 0;
}

unsigned short FPGA::BiaoDingXiuzheng(float, float, float innerTemp, int calibTemp,
                                      unsigned short ad) {
    return irmcore::toReference(m_tempRange, innerTemp, calibTemp, ad);
}

unsigned short FPGA::BiaoDingXiuzhengGet(float, float, float innerTemp, int calibTemp,
                                         unsigned short ad) {
    return irmcore::fromReference(m_tempRange, innerTemp, calibTemp, ad);
}

float FPGA::getModifyValue() { return m_modifyValue; }
