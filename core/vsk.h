#pragma once

/// @file
/// The VSK, a setting of the detector core that follows temperature: a raw number of its own.
/// Exported; one set per process.

#include "truncate.h"

#include <cstdint>

/// Reference temperature of the compensation, °C.
[[gnu::visibility("default")]] extern float m_vskTemp;
/// Base VSK of range 0; 0 until it is read.
[[gnu::visibility("default")]] extern unsigned short m_vskValue0;
/// Base VSK of the other ranges; 0 until it is read.
[[gnu::visibility("default")]] extern unsigned short m_vskValue1;

namespace irmcore {

/// A VSK brought to another temperature.
struct VskStep {
    std::uint16_t vsk; ///< raw number of the core
    float reference;   ///< °C
    bool moved;        ///< whether the temperature was far enough from the reference
};

/// Brings `base` from the temperature `reference` to `celsius`: by 2.5 a degree when it is below
/// 25 °C (in double precision), else by 4 (in single); warmer is more. Nothing moves within less
/// than one degree. A VSK below 0 counts as 0, and 16 bits are kept.
inline VskStep compensateVsk(std::uint16_t base, float celsius, float reference) {
    constexpr float coldBelow = 25.0F;
    const bool colder = celsius < reference;
    const float difference = colder ? reference - celsius : celsius - reference;
    if (!(difference >= 1.0F))
        return {base, reference, false};
    const int sign = colder ? -1 : 1;
    const double vsk = celsius < coldBelow
                           ? base + sign * (static_cast<double>(difference) * 2.5)
                           : static_cast<double>(static_cast<float>(base) +
                                                 static_cast<float>(sign) * (difference * 4.0F));
    return {low16(truncateToUnsigned(vsk)), celsius, true};
}

} // namespace irmcore
