#pragma once

#include "../sim/detector.h"

namespace irmcore::app {

/// Object and air of a test, and how far readings may be off in a camera at its reference inside
/// temperature.
struct Conditions {
    const char* name;
    irmsim::Surroundings surroundings;
    double bound; ///< °C
};

inline constexpr Conditions easyConditions{"emissivity 0.95, 5 m", {}, 0.20};
inline constexpr Conditions hardConditions{
    "emissivity 0.80, 60 m, humidity 0.7, reflected 35 °C", {0.80, 60.0, 0.7, 25.0, 35.0}, 0.25};

} // namespace irmcore::app
