#include "../calib/modify.h"
#include "../core/fpga.h"
#include "../core/vsk.h"

double m_shutterTempModify = 1.0;

void FPGA::readReferenceSensorTemp() {
    float sensor = 0.0F;
    fpga_read_sensorTemp(&sensor);
    setSensorTemp(sensor, true);
}

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

float FPGA::updateDeltaTemp() {
    constexpr float kink = 31.0F; // °C of the sensor
    constexpr float steep = 4.8F; // °C of the reading per °C of the sensor, below the kink
    constexpr float flat = 1.6F;  // above it
    float sensor = 0.0F;
    fpga_read_sensorTemp(&sensor);
    m_deltaTemp = (sensor - m_sensorTemp) * (sensor < kink ? steep : flat);
    return m_deltaTemp;
}

float FPGA::getDeltaTemp() {
    if (fpga_get_freeze_status() != 0)
        m_deltaTemp = 0.0F;
    return m_deltaTemp;
}

void FPGA::updateSensorTemp(bool adjustVSK) {
    readReferenceSensorTemp();
    if (m_coreVersionNum != -1 && m_coreVersionNum != 0)
        return;
    float shutter = 0.0F;
    fpga_read_shutterTemp(&shutter);
    if (!adjustVSK)
        return;
    const float inside = (m_sensorTemp + shutter) * 0.5F;
    if (!irmcore::compensateVsk(0, inside, m_vskTemp).moved)
        return;
    const float reference = m_vskTemp;
    m_vskTemp = inside; // also when the core does not answer
    unsigned short vsk = 0;
    if (getSerialVSK(&vsk) != 0)
        return;
    setSerialVSK(irmcore::compensateVsk(vsk, inside, reference).vsk);
}

void FPGA::updateShutterTemp(bool) {
    float shutter = 0.0F;
    float sensor = 0.0F;
    fpga_read_shutterTemp(&shutter);
    fpga_read_sensorTemp(&sensor);
    setShutterTemp(shutter);
    const float inside = (shutter + sensor) * 0.5F;
    setSystemAdToTempTab(m_lenIndex, m_tempRange);

    TempInfoTab& tab = m_tempInfoTab;
    const auto corrected = [&](int i) {
        return BiaoDingXiuzhengGet(sensor, shutter, inside, tab.temp[i], tab.ad[i]);
    };
    constexpr int unmoved = 30; // °C; mid-scale stays mid-scale
    for (int i = 0; i < tab.tempNum; ++i)
        if (tab.temp[i] != unmoved)
            tab.ad[i] = corrected(i);
    // The lowest count to convert is the first entry's, corrected once more.
    tab.minAD = corrected(0);
    m_irPara.setADToTempTab(tab);

    m_modifyValue = s_modify[irmcore::modifyEntry(inside)];
    m_modifyShutterTemp = m_modifyValue * inside;
    if (getFreezeImageStatus())
        return;
    m_irPara.setShutterTemp(m_modifyShutterTemp);
    updateLevelSpanLimits(m_tempRange);
}
