#include "../core/fpga.h"

#include <array>
#include <cstring>
#include <iterator>

namespace {

constexpr unsigned char refused = 255;

// `color_size` is the host's: a program that has a name like it would lay its own over it.
bool isPalette(int index) {
    return index >= 0 && index < static_cast<int>(std::size(color_tables_yuv));
}

/// A table of entries in the FPGA's layout is its bytes.
const unsigned char* bytesOf(const _yuv_item* table) {
    return reinterpret_cast<const unsigned char*>(table);
}

} // namespace

unsigned char FPGA::setStandardPaletteIndex(COLOR_TABLE index) {
    if (!isPalette(index))
        return refused;
    return takePalette(index, color_tables_yuv[index]);
}

unsigned char FPGA::setCustomPalette(_yuv_item* palette) {
    if (palette == nullptr)
        return refused;
    return takePalette(COLOR_CUSTOM, palette);
}

unsigned char FPGA::takePalette(COLOR_TABLE index, const _yuv_item* palette) {
    m_paletteIndex = index;
    // It may be a part of the working table itself.
    std::memmove(m_colorTable, palette, irmcore::paletteSize * sizeof(_yuv_item));
    return palette_cal(nullptr);
}

const _yuv_item* FPGA::getColorTable(int index) {
    return isPalette(index) ? color_tables_yuv[index] : nullptr;
}

COLOR_TABLE FPGA::getPaletteIndex() { return m_paletteIndex; }

_yuv_item* FPGA::getCurrentPalette() { return m_colorTable; }

unsigned char FPGA::palette_cal(_yuv_item*) {
    if (!m_isoSwitch)
        return fpga_colorTable_set(bytesOf(m_colorTable));
    setIsoIndex();
    std::array<unsigned char, sizeof m_colorTable> coloured{};
    std::memcpy(coloured.data(), m_colorTable, coloured.size());
    m_isoHandler.setIsoPalette(coloured.data());
    return fpga_colorTable_set(coloured.data());
}

void FPGA::followWindow() {
    if (m_isoSwitch)
        palette_cal(nullptr);
}
