#include "fpga.h"

void FPGA::setTempRangeMinMax(int min, int max) {
    m_sysTempHandler->setTempRangeMinMax(min, max);
    m_queryTempHandler->setTempRangeMinMax(min, max);
}
