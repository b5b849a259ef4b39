#include "irpara.h"

#include "tablelookup.h"

namespace {

constexpr float startTemp = 30.0F; // lens, sensor and shutter before anything was measured

constexpr TempInfoTab defaultTable() {
    TempInfoTab tab{};
    tab.lenTemp = tab.sensorTemp = tab.shutterTemp = startTemp;
    tab.maxAD = 0xB000;
    tab.tempNum = 2;
    tab.baseTemp = 30;
    tab.ad[0] = 0x7000;
    tab.ad[1] = 0xB000;
    tab.temp[0] = -20;
    tab.temp[1] = 400;
    return tab;
}

} // namespace

IRPara::IRPara()
    : m_tab(defaultTable()), m_shutterDeltaAD(0.0F), m_sensorDeltaAD(0.0F),
      m_baseSensorTemp(startTemp) {}

IrTempStru IRPara::calTemp(unsigned int ad) { return irmcore::adToTableTemp(m_tab, ad); }

IrTempStru IRPara::calAD(float temp) { return irmcore::tempToTableAd(m_tab, temp); }

float IRPara::calDeltaAD(float temp) { return irmcore::tableDeltaAd(m_tab, temp); }

int IRPara::calShutterDeltaAD() {
    m_shutterDeltaAD = calDeltaAD(m_tab.shutterTemp);
    return 1;
}

int IRPara::calSensorDeltaAD() {
    m_sensorDeltaAD = m_baseSensorTemp == m_tab.sensorTemp
                          ? 0.0F
                          : calDeltaAD(m_tab.sensorTemp) - calDeltaAD(m_baseSensorTemp);
    return 1;
}

int IRPara::setShutterTemp(float t) {
    m_tab.shutterTemp = t;
    return calShutterDeltaAD();
}

void IRPara::setSensorTemp(float t, bool reset) {
    m_tab.sensorTemp = t;
    if (reset) {
        m_sensorDeltaAD = 0.0F;
        m_baseSensorTemp = t;
    } else {
        calSensorDeltaAD();
    }
}

void IRPara::setLenTemp(float t) { m_tab.lenTemp = t; }

float IRPara::getShutterTemp() { return m_tab.shutterTemp; }

float IRPara::readShutterDeltaAD() { return m_shutterDeltaAD; }

float IRPara::readSensorDeltaAD() { return m_sensorDeltaAD; }

int IRPara::setADToTempTab(TempInfoTab tab) {
    tab.lenTemp = m_tab.lenTemp;
    tab.sensorTemp = m_tab.sensorTemp;
    tab.shutterTemp = m_tab.shutterTemp;
    m_tab = tab;
    m_baseSensorTemp = m_tab.sensorTemp;
    calShutterDeltaAD();
    calSensorDeltaAD();
    return 1;
}

TempInfoTab IRPara::getADToTempTab() { return m_tab; }
