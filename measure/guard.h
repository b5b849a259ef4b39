#pragma once

#include "tablelookup.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>

/// Approximations, and the test whether one is good enough. Pure: values in, values out.
///
/// Results are single precision, rounded from a calculation in double precision with `pow`. The
/// board has no floating-point unit, and a power or a root costs it some 3,500 instructions. What
/// is calculated here in fewer steps differs from the prescribed calculation by a small known
/// bound, far below the last place of a single; unless a value lies closer than that to a point
/// where its rounding changes, both round to the same single. Where it does, the prescribed
/// calculation decides (literal.h).
namespace irmcore {

inline std::uint64_t bitsOf(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// The exponent of a double: 3 for 8 to 16, exclusive. -1023 for 0, 1024 for infinity and NaN.
inline int exponentOf(double value) { return static_cast<int>(bitsOf(value) >> 52 & 0x7FF) - 1023; }

/// Whether all numbers within 2^`places` units of `value`'s last place (those of a double) round
/// to the same single. For numbers whose single is a normal one, and `places` from 0 to 26.
inline bool roundsAlike(double value, int places) {
    constexpr int dropped = 29; // bits of a double's fraction that a single has not
    constexpr std::uint32_t half = 1U << (dropped - 1);
    const std::uint32_t error = 1U << places;
    const auto rest = static_cast<std::uint32_t>(bitsOf(value) & (2U * half - 1U));
    return rest - (half - error) > 2U * error; // wraps around below
}

/// The same for an error of 2^`errorExponent` and any number; no whenever in doubt.
inline bool roundsAlikeWithin(double value, int errorExponent) {
    constexpr int fraction = 52;
    // Below a power of two the places are half as wide: a quarter of what a single drops is as much
    // as can be told. Infinity, NaN and what is too large for a single are far above.
    constexpr int mostPlaces = 26;
    const int places = errorExponent - (exponentOf(value) - fraction);
    return places >= 0 && places <= mostPlaces && roundsAlike(value, places);
}

/// The square of the square: within 3 units of 2^-53 of the fourth power, relative.
constexpr double squaredSquare(double value) {
    const double square = value * value;
    return square * square;
}

#ifdef __SOFTFP__
inline constexpr bool rootInHardware = false;
#else
inline constexpr bool rootInHardware = true;
#endif

/// The fourth root of a number from 1 to 2^64, within 2^-49 of it, relative; by multiplications,
/// since a square root without a floating-point unit costs as much as a power.
inline double fourthRootByProducts(double x) {
    // A quarter of the exponent, negated, is a first value of x^(-1/4), within 3.3 %. With
    // h = 1 - x y^4 the exact value is y (1 - h)^(-1/4): each step takes the series' first terms,
    // |h| at most 0.13 at first and then 1.1e-4.
    constexpr std::uint64_t seed = 0x4FEB000000000000;
    const std::uint64_t bits = seed - (bitsOf(x) >> 2);
    double y = 0.0;
    std::memcpy(&y, &bits, sizeof y);
    const double h = 1.0 - x * squaredSquare(y);
    y += y * h * (0.25 + h * (0.15625 + h * 0.1171875));
    // The last step is the root's own: z = x y^3, and the exact value is z (1 - r)^(-3/4).
    const double z = x * y * (y * y);
    const double r = 1.0 - z * y;
    return z + z * r * (0.75 + r * (0.65625 + r * 0.6015625));
}

/// The same, by whatever is quickest.
inline double fourthRoot(double x) {
    if constexpr (rootInHardware)
        return std::sqrt(std::sqrt(x));
    return fourthRootByProducts(x);
}

/// The fourth root of `radicand`, rounded to single first, in °C, if that is the same single for
/// all radicands within 32 units of the last place and for every root within a unit of its own.
inline std::optional<float> celsiusIfSure(double radicand) {
    constexpr int radicandPlaces = 5;
    // A root below 2^11 K is here within 2^-49 of itself, elsewhere within 2^-52, and taking
    // 273.15 off rounds by 2^-43 on either side: all together less than 2^-37.
    constexpr int errorExponent = -37;
    constexpr double lowest = 1.0;
    constexpr double highest = 8796093022208.0; // 2^43, which rounds to itself at most
    if (!(radicand >= lowest && radicand < highest) || !roundsAlike(radicand, radicandPlaces))
        return std::nullopt;
    const double celsius = fourthRoot(static_cast<double>(static_cast<float>(radicand))) - kelvin;
    if (!roundsAlikeWithin(celsius, errorExponent))
        return std::nullopt;
    return static_cast<float>(celsius);
}

/// `fromTable` without the prescribed calculation, where that is not needed.
inline std::optional<float> fromTableIfSure(float celsius) {
    constexpr double background = backgroundShare * squaredSquare(backgroundKelvin);
    const double body = squaredSquare(static_cast<double>(celsius) + kelvin);
    return celsiusIfSure(surfaceEmissivity * body + background);
}

} // namespace irmcore
