#include "../core/fpga.h"

int FPGA::setSystemTempSetup(TempSetup setup) {
    m_sysTempSetup = setup;
    m_sysTempHandler->setTempSetup(setup);
    updateLevelSpanLimits(m_tempRange);
    return 1;
}

TempSetup FPGA::getSystemTempSetup() { return m_sysTempHandler->getTempSetup(); }

void FPGA::setEnvTemp(float t) {
    m_sysTempHandler->setEnvTemp(t);
    m_queryTempHandler->setEnvTemp(t);
    updateLevelSpanLimits(m_tempRange);
}

void FPGA::setHumid(float humid) {
    m_sysTempHandler->setHumid(humid);
    m_queryTempHandler->setHumid(humid);
    updateLevelSpanLimits(m_tempRange);
}

void FPGA::setReflecTemp(float t) {
    m_sysTempHandler->setReflecTemp(t);
    m_queryTempHandler->setReflecTemp(t);
    updateLevelSpanLimits(m_tempRange);
}
