#include "screen_colouring.h"

#include "../display/palette.h"
#include "screen.h"

#include <algorithm>
#include <cmath>

namespace irmcore::app {

namespace {

constexpr std::size_t lastEntry = paletteSize - 1;
constexpr std::size_t belowEntry = belowWindowEntry;
constexpr std::size_t aboveEntry = aboveWindowEntry;
constexpr unsigned gainFractionBits = 14;

/// The overlays' colours where the uploaded table has none: Y, Cb, Cr of entries 256 and 257.
constexpr std::uint8_t overlayColours[2][3] = {{143, 153, 124}, {150, 58, 40}};

std::uint8_t channel(double value) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

} // namespace

Rgb rgbOf(std::uint8_t y, std::uint8_t cb, std::uint8_t cr) {
    const double luma = 1.164383 * (y - 16);
    return {channel(luma + 1.596027 * (cr - 128)),
            channel(luma - 0.391762 * (cb - 128) - 0.812968 * (cr - 128)),
            channel(luma + 2.017232 * (cb - 128))};
}

ColourState colourStateOf(irmsim::Board& board) {
    ColourState state;
    board.read(reg::colorTable.address, state.table.data(), state.table.size());
    const bool ownWindow = registerValue(board, reg::windowControl) == 0xFF;
    state.level =
        ownWindow ? registerValue(board, reg::fpgaLevel) : registerValue(board, reg::level);
    state.gain = ownWindow ? registerValue(board, reg::fpgaGain) : registerValue(board, reg::gain);
    state.isotherm = (registerValue(board, reg::isoEnable) & 1U) != 0;
    state.saturation = fieldValue(board, reg::saturation) != 0;
    state.isoType = registerValue(board, reg::isoType);
    state.isoMin = registerValue(board, reg::isoMin);
    state.isoMax = registerValue(board, reg::isoMax);
    return state;
}

Colouring::Colouring(const ColourState& state)
    : m_level(state.level), m_gain(state.gain), m_isotherm(state.isotherm),
      m_saturation(state.saturation), m_isoType(state.isoType), m_isoMin(state.isoMin),
      m_isoMax(state.isoMax) {
    for (std::size_t i = 0; i < m_colours.size(); ++i) {
        const std::uint8_t* yuv = &state.table[4 * i];
        const bool overlay = i == saturationEntry || i == lineEntry;
        if (overlay && yuv[0] == 0 && yuv[1] == 0 && yuv[2] == 0)
            yuv = overlayColours[i - saturationEntry];
        m_colours[i] = rgbOf(yuv[0], yuv[1], yuv[2]);
    }
}

Rgb Colouring::of(std::uint16_t ad) const {
    if (m_saturation && (ad == 0 || ad == 0xFFFF))
        return m_colours[saturationEntry];
    return m_colours[entryOf(ad)];
}

bool Colouring::inBand(std::uint16_t ad) const {
    switch (m_isoType) {
    case 0:
        return ad <= m_isoMin;
    case 1:
        return ad >= m_isoMin && ad <= m_isoMax;
    case 2:
        return ad >= m_isoMax;
    default:
        return false;
    }
}

std::size_t Colouring::entryOf(std::uint16_t ad) const {
    const bool below = ad < m_level;
    const std::uint64_t steps = below ? 0 : std::uint64_t{ad - m_level} * m_gain;
    // The window's upper end, level + span, belongs to it. A gain of 0 leaves the level alone.
    const bool above = m_gain == 0 ? ad > m_level : steps > std::uint64_t{reg::gainOfSpanOne};
    if (m_isotherm && (below || above)) {
        const std::size_t plain = below ? belowEntry : aboveEntry;
        const bool bandReaches = m_colours[below ? 0 : lastEntry] != m_colours[plain];
        return bandReaches && inBand(ad) ? isothermEntry : plain;
    }
    if (above)
        return lastEntry;
    return std::min(static_cast<std::size_t>(steps >> gainFractionBits), lastEntry);
}

} // namespace irmcore::app
