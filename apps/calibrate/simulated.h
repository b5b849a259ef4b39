#pragma once

#include "table.h"

#include <cstdint>

namespace irmcore::app::calibration {

/// Black bodies every 10 °C over the range, seen by one pixel of the simulated detector at its
/// reference inside temperature through no air: noise of 80 mK at 30 °C, 16 frames averaged.
std::vector<CalibrationPoint> simulatedPoints(int range, int lens, std::uint64_t seed);

/// How far readings are off with a table from simulated points.
struct Trial {
    std::uint64_t seed = 0;
    int range = 0;
    double worst = 0.0;   ///< °C
    double worstAt = 0.0; ///< °C
    int readings = 0;
};

/// Makes a table from the points of `seed`, lets the library load it on a simulated camera without
/// noise, and reads objects over the whole range. Nothing, and a text in `error`, on failure.
std::optional<Trial> tryTable(int range, std::uint64_t seed, QString& error);

} // namespace irmcore::app::calibration
