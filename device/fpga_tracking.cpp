#include "../core/fpga.h"

void FPGA::setSensorTemp(float t, bool) {
    m_deltaTemp = 0.0F;
    m_sensorTemp = t;
}

float FPGA::getSensorTemp() { return m_sensorTemp; }

void FPGA::setShutterTemp(float t) { m_shutterTemp = t; }

float FPGA::getShutterTemp() { return m_shutterTemp; }

void FPGA::setLenTemp(float t) {
    m_lenTemp = t;
    m_irPara.setLenTemp(t);
}

float FPGA::getLenTemp() { return m_lenTemp; }

float FPGA::getModifyShutterTemp() { return m_irPara.getShutterTemp(); }

void FPGA::updateShutterTemp(bool) {
    float shutter = 0.0F;
    float sensor = 0.0F;
    fpga_read_shutterTemp(&shutter);
    fpga_read_sensorTemp(&sensor);
    setShutterTemp(shutter);
    const float inside = (shutter + sensor) * 0.5F;
    setSystemAdToTempTab(m_lenIndex, m_tempRange);
    m_modifyShutterTemp = inside;
    if (m_freeze)
        return;
    m_irPara.setShutterTemp(m_modifyShutterTemp);
    updateLevelSpanLimits(m_tempRange);
}
