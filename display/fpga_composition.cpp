#include "../core/fpga.h"

unsigned char FPGA::setImageMode(Image_Mode_t mode) { return fpga_set_image(mode); }

unsigned char FPGA::set_CCD_Pipe_IR_Position(Image_Position_t pos) {
    return fpga_set_ccd_pipe_ir_position(pos);
}

unsigned char FPGA::set_IR_Pipe_CCD_Position(Image_Position_t pos) {
    return fpga_set_ir_pipe_ccd_position(pos);
}

unsigned char FPGA::freeze_image(bool on) {
    m_freeze = on;
    const unsigned char result = fpga_freeze_image(on);
    if (!m_freeze)
        m_irPara.setShutterTemp(m_modifyShutterTemp);
    return result;
}

bool FPGA::getFreezeImageStatus() { return m_freeze; }

void FPGA::setSaturation(bool const& on) { m_saturation = on; }

bool const& FPGA::getSaturation() const { return m_saturation; }

void FPGA::saturation() {}

unsigned char FPGA::setADV7179Mode(int mode) { return fpga_set_output_mode(mode); }
