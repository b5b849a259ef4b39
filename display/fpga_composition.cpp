#include "../core/fpga.h"

unsigned char FPGA::freeze_image(bool on) {
    m_freeze = on;
    const unsigned char result = fpga_freeze_image(on);
    if (!m_freeze)
        m_irPara.setShutterTemp(m_modifyShutterTemp);
    return result;
}

bool FPGA::getFreezeImageStatus() { return m_freeze; }
