#include "air.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace irmsim {

namespace {

// The detector's own copy of the air data: the simulator must not agree with the measuring code
// only because both read the same wrong number.

using Curve = std::array<double, 11>;

// Precipitable water in mm for the water curve, path in km for the carbon dioxide curve.
constexpr Curve breakpoints{0, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 200};
constexpr Curve waterCurve{1.0,      0.99665,  0.991683, 0.98335,  0.967033, 0.921967,
                           0.847233, 0.719933, 0.460917, 0.213433, 0.050583};
constexpr Curve carbonDioxideCurve{1.0,      0.984817, 0.965717, 0.939283, 0.90215, 0.839717,
                                   0.785883, 0.722717, 0.625117, 0.5504,   0.477317};

// Saturated water vapour, g/m³, for the whole degrees from -49 to 49 °C.
constexpr int coldest = -49;
constexpr std::array<double, 99> saturated{
    0.0431, 0.0485, 0.0545, 0.0612, 0.0687, 0.0769, 0.0861, 0.0962, 0.1075, 0.12,  //
    0.134,  0.149,  0.166,  0.1849, 0.205,  0.227,  0.252,  0.279,  0.308,  0.341, //
    0.376,  0.415,  0.458,  0.505,  0.556,  0.611,  0.672,  0.738,  0.81,   0.888, //
    0.973,  1.066,  1.166,  1.275,  1.393,  1.52,   1.658,  1.808,  1.971,  2.145, //
    2.33,   2.54,   2.76,   2.99,   3.25,   3.52,   3.82,   4.13,   4.47,   4.84,  //
    5.18,   5.55,   5.94,   6.35,   6.79,   7.25,   7.74,   8.26,   8.81,   9.39,  //
    10.0,   10.64,  11.33,  12.05,  12.81,  13.61,  14.45,  15.34,  16.28,  17.3,  //
    18.3,   19.4,   20.5,   21.7,   23.0,   24.3,   25.7,   27.2,   28.7,   30.3,  //
    32.0,   33.7,   35.6,   37.5,   39.5,   41.6,   43.6,   46.1,   48.5,   51.0,  //
    53.6,   56.3,   59.2,   62.1,   65.2,   68.4,   71.9,   75.3,   78.9};

/// The curve at `x`, straight between breakpoints; the last segment goes on to 0.
double along(const Curve& curve, double x) {
    if (!(x > 0))
        return curve.front();
    std::size_t upper = 1;
    while (upper + 1 < breakpoints.size() && x > breakpoints[upper])
        ++upper;
    const double share =
        (x - breakpoints[upper - 1]) / (breakpoints[upper] - breakpoints[upper - 1]);
    return std::max(0.0, curve[upper - 1] + share * (curve[upper] - curve[upper - 1]));
}

} // namespace

double airTransmission(double envTemp, double humidity, double distance) {
    const double last = static_cast<double>(saturated.size() - 1);
    const auto degree =
        static_cast<std::size_t>(std::fmin(std::fmax(envTemp - coldest, 0.0), last));
    const double water = saturated[degree] * humidity * distance / 1000.0;
    return along(waterCurve, water) * along(carbonDioxideCurve, distance / 1000.0);
}

} // namespace irmsim
