#include "transmission.h"

#include "../core/truncate.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace irmcore {

namespace {

using Curve = std::array<double, 11>;

/// Kilometres of path for carbon dioxide, millimetres of precipitable water for water vapour.
constexpr Curve breakpoints{0, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 200};

constexpr Curve carbonDioxide{1.0,      0.984817, 0.965717, 0.939283, 0.90215, 0.839717,
                              0.785883, 0.722717, 0.625117, 0.5504,   0.477317};

constexpr Curve water{1.0,      0.99665,  0.991683, 0.98335,  0.967033, 0.921967,
                      0.847233, 0.719933, 0.460917, 0.213433, 0.050583};

/// Saturated water vapour density in g/m³ at whole degrees from -49 to 49 °C.
constexpr std::array<double, 99> saturation{
    0.0431, 0.0485, 0.0545, 0.0612, 0.0687, 0.0769, 0.0861, 0.0962, 0.1075, 0.12,  // -49
    0.134,  0.149,  0.166,  0.1849, 0.205,  0.227,  0.252,  0.279,  0.308,  0.341, // -39
    0.376,  0.415,  0.458,  0.505,  0.556,  0.611,  0.672,  0.738,  0.81,   0.888, // -29
    0.973,  1.066,  1.166,  1.275,  1.393,  1.52,   1.658,  1.808,  1.971,  2.145, // -19
    2.33,   2.54,   2.76,   2.99,   3.25,   3.52,   3.82,   4.13,   4.47,   4.84,  // -9
    5.18,   5.55,   5.94,   6.35,   6.79,   7.25,   7.74,   8.26,   8.81,   9.39,  // 1
    10.0,   10.64,  11.33,  12.05,  12.81,  13.61,  14.45,  15.34,  16.28,  17.3,  // 11
    18.3,   19.4,   20.5,   21.7,   23.0,   24.3,   25.7,   27.2,   28.7,   30.3,  // 21
    32.0,   33.7,   35.6,   37.5,   39.5,   41.6,   43.6,   46.1,   48.5,   51.0,  // 31
    53.6,   56.3,   59.2,   62.1,   65.2,   68.4,   71.9,   75.3,   78.9,          // 41
};

double entry(const Curve& curve, int index) {
    return curve[static_cast<std::size_t>(std::clamp(index, 0, 10))];
}

/// The curve at `x`, never below 0.
float interpolate(const Curve& curve, float x) {
    const Bracket at = bracketOf(x);
    if (at.lower == at.upper)
        return static_cast<float>(entry(curve, at.lower));
    const double lower = entry(breakpoints, at.lower);
    const double upper = entry(breakpoints, at.upper);
    const double r = (upper - static_cast<double>(x)) / (upper - lower) *
                         (entry(curve, at.lower) - entry(curve, at.upper)) +
                     entry(curve, at.upper);
    return r < 0.0 ? 0.0F : static_cast<float>(r);
}

} // namespace

Bracket bracketOf(float x) {
    // In double: the single nearest to 0.2 lies above it, in the segment from 0.2 to 0.5.
    const auto wide = static_cast<double>(x);
    if (wide > breakpoints.back())
        return {9, 10};
    for (int k = 10; k >= 0; --k) {
        if (wide == entry(breakpoints, k))
            return {k, k};
        if (wide > entry(breakpoints, k))
            return {k, k + 1};
    }
    return {0, 0};
}

double breakpoint(int index) { return entry(breakpoints, index); }

float waterTransmission(float mm) { return interpolate(water, mm); }

float carbonDioxideTransmission(float km) { return interpolate(carbonDioxide, km); }

float precipitableWater(float envTemp, float humid, int dist) {
    constexpr float lowestTemp = 49.0F; // below zero
    const int index = std::clamp(truncateToInt(static_cast<double>(envTemp + lowestTemp)), 0, 98);
    const auto density = static_cast<float>(saturation[static_cast<std::size_t>(index)]);
    return density * humid * static_cast<float>(dist) / 1000.0F;
}

float transmission(float envTemp, float humid, int dist) {
    return waterTransmission(precipitableWater(envTemp, humid, dist)) *
           carbonDioxideTransmission(carbonDioxidePath(dist));
}

} // namespace irmcore
