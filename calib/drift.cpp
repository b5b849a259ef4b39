#include "drift.h"

#include "../core/truncate.h"

namespace irmcore {

namespace {

constexpr double lowReference = 26.5;  // °C inside, range 0
constexpr float highReference = 43.0F; // °C inside, the other ranges
constexpr int lowLimit = 160;          // °C of the scene, range 0
constexpr int highLimit = 410;         // °C of the scene, the other ranges

/// `ad` and `sign` times the drift from `inside` to the reference.
std::uint16_t shifted(int range, float inside, int celsius, std::uint16_t ad, int sign) {
    const float slope = driftSlope(range, celsius);
    if (range == 0) {
        const double drift =
            static_cast<double>(slope) * (lowReference - static_cast<double>(inside));
        return low16(truncateToUnsigned(ad + sign * drift));
    }
    const float drift = (highReference - inside) * slope;
    const float sum = static_cast<float>(ad) + static_cast<float>(sign) * drift;
    return low16(truncateToUnsigned(static_cast<double>(sum)));
}

} // namespace

float driftSlope(int range, int celsius) {
    const auto t = static_cast<double>(celsius);
    return static_cast<float>(range == 0 ? ((t * 2.131) * t + t * 369.36 - 12861.0) / 1000.0
                                         : ((t * 0.3619) * t + t * 88.36 - 3026.6) / 1000.0);
}

std::uint16_t toReference(int range, float inside, int celsius, std::uint16_t ad) {
    if (celsius > (range == 0 ? lowLimit : highLimit))
        return ad;
    return shifted(range, inside, celsius, ad, 1);
}

std::uint16_t fromReference(int range, float inside, int celsius, std::uint16_t ad) {
    return shifted(range, inside, celsius, ad, -1);
}

} // namespace irmcore
