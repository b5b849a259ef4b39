#pragma once

#include "../../sim/detector.h"
#include "../../sim/tape.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace irmcore::view {

/// A recording in memory, ready to be replayed.
struct TapeInMemory {
    std::vector<std::uint64_t> bytes; ///< the tape points into them
    irmsim::Tape tape;
    irmsim::Surroundings surroundings; ///< that the camera directory is to be made for
    int range = 0;
    int width = 0; ///< of its frames; 0 without any
    int height = 0;
    double seconds = 0.0;             ///< of its last call, in its replay's time; 0 or more
    std::vector<double> calibrations; ///< s, when the core was told to calibrate
    bool complete = true;             ///< not cut short
};

/// Reads a recording. Nothing, and a text in `error`, when it cannot be replayed.
std::optional<TapeInMemory> loadTape(const QString& file, std::string& error);

} // namespace irmcore::view
