#pragma once

#include "../core/truncate.h"
#include "../measure/reading.h"
#include "isohandler.h"
#include "window.h"

#include <cstring>

/// Where an isotherm's limits lie in palette and window. Pure.
namespace irmcore {

/// The two limits of a band, in °C.
struct BandTemps {
    float low;
    float high;
};

inline BandTemps bandTemps(const Isotherm& iso) {
    if (iso.useMinMax != 0)
        return {iso.minTemp, iso.maxTemp};
    return {iso.center - iso.width / 2, iso.center + iso.width / 2};
}

/// Palette index of a limit as converted to AD: -1 under the window, 256 over it. In a window
/// without width only its one count is inside, at index 0.
inline int paletteIndexOf(const IrTempStru& limit, Window window) {
    constexpr int under = -1;
    constexpr int over = 256;
    if (!isOk(limit))
        return std::strcmp(limit.status, "L") == 0 || std::strcmp(limit.status, "LE") == 0 ? under
                                                                                           : over;
    if (limit.ad < window.level)
        return under;
    if (limit.ad == window.level)
        return 0;
    if (window.span == 0)
        return over;
    const double index = (limit.ad - window.level) * 255.0 / window.span;
    return index > 255.0 ? over : truncateToInt(index);
}

/// Palette index of a fraction of the palette, 0 to 255; 0 for NaN.
inline int paletteIndexOf(float ratio) {
    const double index = static_cast<double>(ratio) * 255.0;
    return index > 255.0 ? 255 : index > 0.0 ? truncateToInt(index) : 0;
}

/// AD of a fraction of the window, modulo 2^16; a negative one is 0.
inline std::uint16_t adInWindow(float ratio, Window window) {
    const float ad = ratio * static_cast<float>(window.span) + static_cast<float>(window.level);
    return low16(truncateToUnsigned(static_cast<double>(ad)));
}

} // namespace irmcore
