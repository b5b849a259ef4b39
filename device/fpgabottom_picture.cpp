// Display window, colours and composition of the picture.
#include "../core/truncate.h"
#include "access.h"

namespace reg = irmcore::reg;

using irmcore::get;
using irmcore::modify;
using irmcore::refused;
using irmcore::set;
using irmcore::switchBit;

namespace {

/// The span of a gain, low 16 bits.
unsigned short spanOf(unsigned short gain, unsigned short whenZero) {
    return gain == 0 ? whenZero : irmcore::low16(static_cast<unsigned>(reg::gainOfSpanOne / gain));
}

/// The byte that stands for a blend proportion.
std::uint8_t blendByte(float f) {
    return static_cast<std::uint8_t>(irmcore::truncateToInt(static_cast<double>(f) * 128.0) & 0xFF);
}

} // namespace

unsigned short FPGABottom::fpga_get_fpga_level() { return get(*this, reg::fpgaLevel); }

unsigned short FPGABottom::fpga_get_fpga_span() {
    return spanOf(get(*this, reg::fpgaGain), reg::fpgaSpanOfZeroGain);
}

unsigned short FPGABottom::fpga_get_level() { return get(*this, reg::level); }

unsigned short FPGABottom::fpga_get_span() {
    return spanOf(get(*this, reg::gain), reg::spanOfZeroGain);
}

unsigned char FPGABottom::fpga_set_levelSpan(unsigned short level, unsigned int gain) {
    set(*this, reg::level, level);
    return set(*this, reg::gain, gain);
}

unsigned char FPGABottom::fpga_start_level_span_control(bool on) {
    return set(*this, reg::windowControl, static_cast<std::uint8_t>(on ? 0x00 : 0xFF));
}

unsigned char FPGABottom::fpga_colorTable_get(void* buf, int len) {
    return readData(reg::colorTable.address, buf, len);
}

unsigned char FPGABottom::fpga_colorTable_set(const unsigned char* table) {
    return writeData(reg::colorTable.address, table, static_cast<int>(reg::colorTable.length));
}

unsigned char FPGABottom::fpga_set_iso_enable(bool on) {
    return set(*this, reg::isoEnable, static_cast<std::uint8_t>(on ? 1 : 0));
}

unsigned char FPGABottom::fpga_set_iso_type(unsigned char t) { return set(*this, reg::isoType, t); }

unsigned char FPGABottom::fpga_set_iso_min(unsigned short ad) {
    return set(*this, reg::isoMin, ad);
}

unsigned char FPGABottom::fpga_set_iso_max(unsigned short ad) {
    return set(*this, reg::isoMax, ad);
}

unsigned char FPGABottom::fpga_get_image(unsigned char* mode) {
    unsigned char result = refused;
    if (mode != nullptr)
        *mode = get(*this, reg::imageControl, &result);
    return result;
}

unsigned char FPGABottom::fpga_set_image(Image_Mode_t mode) {
    m_imageMode = mode;
    return modify(*this, reg::imageControl, reg::imageMode.mask(), mode & reg::imageMode.mask());
}

unsigned char FPGABottom::fpga_set_ccd_pipe_ir_position(int pos) {
    const auto shifted = static_cast<unsigned>(pos) << reg::ccdInsetPosition.shift;
    return modify(*this, reg::insetControl, reg::ccdInsetPosition.mask(),
                  static_cast<int>(shifted & 0xFFU));
}

unsigned char FPGABottom::fpga_set_ir_pipe_ccd_position(int pos) {
    return modify(*this, reg::insetControl, reg::irInsetPosition.mask(), pos);
}

unsigned char FPGABottom::fpga_set_CCD_Mix_IR_Size(int on) {
    // Switching on also clears the rest of the field; switching off leaves it.
    constexpr int onValue = 0x01;
    return on != 0 ? modify(*this, reg::mixSize, reg::ccdMixIrSize.mask(), onValue)
                   : modify(*this, reg::mixSize, onValue, 0);
}

unsigned char FPGABottom::fpga_set_IR_Mix_CCD_Size(int on) {
    constexpr int onValue = 0x80;
    return on != 0 ? modify(*this, reg::mixSize, reg::irMixCcdSize.mask(), onValue)
                   : modify(*this, reg::mixSize, onValue, 0);
}

unsigned char FPGABottom::set_CCD_mix_IR_percent(float f) {
    return set(*this, reg::ccdMixIrBlend, blendByte(f));
}

unsigned char FPGABottom::set_IR_mix_CCD_percent(float f) {
    return set(*this, reg::irMixCcdBlend, blendByte(f));
}

unsigned char FPGABottom::set_mix_dx(char d) {
    return set(*this, reg::mixDx, static_cast<std::uint8_t>(d));
}

unsigned char FPGABottom::set_mix_dy(char d) {
    return set(*this, reg::mixDy, static_cast<std::uint8_t>(d));
}

unsigned char FPGABottom::set_mix_zoom(int z) {
    return set(*this, reg::mixZoom, irmcore::low16(static_cast<unsigned>(z)));
}

unsigned char FPGABottom::get_mix_dx() { return get(*this, reg::mixDx); }

unsigned char FPGABottom::get_mix_dy() { return get(*this, reg::mixDy); }

unsigned short FPGABottom::get_mix_zoom() { return get(*this, reg::mixZoom); }

unsigned char FPGABottom::fpga_open_saturation(bool on) {
    return switchBit(*this, reg::saturation, on);
}

unsigned char FPGABottom::fpga_switch_colorBar(bool on) {
    return switchBit(*this, reg::colorBar, on);
}

unsigned char FPGABottom::fpga_freeze_image(bool on) { return switchBit(*this, reg::frozen, on); }
