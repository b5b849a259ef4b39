#include "fpga.h"
#include "settings.h"
#include "vsk.h"

#include <cstdio>

namespace settings = irmcore::settings;

float m_vskTemp = 40.0F;
unsigned short m_vskValue0 = 0;
unsigned short m_vskValue1 = 0;

namespace {

/// The reference temperature that was stored with the calibration.
float calibratedVskTemp() {
    settings::File file(settings::file);
    file.beginGroup(settings::calibrationGroup);
    return file.number(settings::vskTemp, settings::defaultVskTemp);
}

unsigned short baseVsk(int range) { return range == 0 ? m_vskValue0 : m_vskValue1; }

} // namespace

unsigned short FPGA::compensatedVsk(int range) {
    const irmcore::VskStep step = irmcore::compensateVsk(baseVsk(range), m_sensorTemp, m_vskTemp);
    m_vskTemp = step.reference;
    return step.vsk;
}

void FPGA::changeTempRange(int range, unsigned short intTime) {
    m_tempRange = range;
    switch (m_coreVersionNum) {
    case -1:
        m_serial->setIntTime(range, intTime);
        setVSK(range);
        break;
    case 0: {
        readReferenceSensorTemp();
        m_vskTemp = calibratedVskTemp();
        std::printf(m_sensorTemp < m_vskTemp ? "============xiao yu sensorTemp:%f m_vskTemp:%f \n"
                                             : "============da yu sensorTemp:%f m_vskTemp:%f \n",
                    static_cast<double>(m_sensorTemp), static_cast<double>(m_vskTemp));
        m_serial->changeTempRange(intTime, compensatedVsk(range));
        break;
    }
    case 1:
        m_serial->changeTempRange(intTime, 0);
        break;
    default:
        break;
    }
}

void FPGA::setTempRange(int range) {
    m_tempRange = range;
    switch (range) {
    case 0:
        m_serial->setTempRange(0x11);
        break;
    case 1:
        m_serial->setTempRange(0x22);
        break;
    case 2:
        m_serial->setTempRange(0x33);
        break;
    default:
        break;
    }
    setSystemAdToTempTab(m_lenIndex, m_tempRange);
}

void FPGA::setVSK(int range) {
    if (range == 0 || range == 1)
        setSerialVSK(baseVsk(range));
    m_vskTemp = calibratedVskTemp();
}

int FPGA::get_set_lenIndex() {
    const int index = readLens();
    if (index != m_lenIndex) {
        m_lenIndex = index;
        setSystemAdToTempTab(m_lenIndex, m_tempRange);
    }
    return index;
}

void FPGA::setTempRangeMinMax(int min, int max) {
    m_sysTempHandler->setTempRangeMinMax(min, max);
    m_queryTempHandler->setTempRangeMinMax(min, max);
}
