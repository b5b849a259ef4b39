#pragma once

#include "../device/registers.h"
#include "../sim/board.h"
#include "picture.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace irmcore::app {

/// What the board keeps in a register that can only be written, or answers in another one; as wide
/// as the wider of the two directions.
template <typename R, typename W>
std::uint32_t registerValue(irmsim::Board& board, const reg::Register<R, W>& r) {
    constexpr std::uint32_t width =
        reg::wireWidth<R>() > reg::wireWidth<W>() ? reg::wireWidth<R>() : reg::wireWidth<W>();
    static_assert(width >= 1 && width <= 4);
    std::array<std::uint8_t, width> bytes{};
    board.read(r.address, bytes.data(), bytes.size());
    std::uint32_t value = 0;
    for (std::size_t i = width; i-- > 0;)
        value = value << 8 | bytes[i];
    return value;
}

/// The bits of a field, moved down to bit 0.
inline unsigned fieldValue(irmsim::Board& board, const reg::Field& f) {
    return (registerValue(board, f.byte) & f.mask()) >> f.shift;
}

/// What decides how the FPGA colours counts.
struct ColourState {
    std::array<std::uint8_t, reg::colorTable.length> table{};
    std::uint32_t level = 0; ///< AD
    std::uint32_t gain = 0;  ///< as in the register
    bool isotherm = false;
    bool saturation = false;
    std::uint32_t isoType = 0;
    std::uint32_t isoMin = 0; ///< AD
    std::uint32_t isoMax = 0; ///< AD
};
/// As the registers say now.
ColourState colourStateOf(irmsim::Board& board);

/// How the FPGA colours counts. Reentrant.
class Colouring {
public:
    explicit Colouring(const ColourState& state);
    /// By the registers at the moment of construction.
    explicit Colouring(irmsim::Board& board) : Colouring(colourStateOf(board)) {}

    Rgb of(std::uint16_t ad) const;

    /// Whether the FPGA's own isotherm type and limits take a count in, switched on or not: up to
    /// the lower limit, from the lower to the upper, from the upper on, limits included; no count
    /// in any other type.
    bool inBand(std::uint16_t ad) const;

    /// A colour of the table, 0 to 260.
    Rgb entry(std::size_t i) const { return m_colours[i]; }

private:
    std::size_t entryOf(std::uint16_t ad) const;

    std::array<Rgb, 261> m_colours{};
    std::uint32_t m_level;
    std::uint32_t m_gain;
    bool m_isotherm;
    bool m_saturation;
    std::uint32_t m_isoType;
    std::uint32_t m_isoMin;
    std::uint32_t m_isoMax;
};

inline constexpr std::size_t saturationEntry = 256;
inline constexpr std::size_t lineEntry = 257;

} // namespace irmcore::app
