#pragma once

#include "../core/range.h"
#include "../measure/reading.h"

#include <string>

namespace irmcore::app {

/// One reading beside the truth.
struct Reading {
    std::string what;
    int x = -1; ///< column, -1 where a reading has no place
    int y = -1; ///< row
    IrTempStru value{};
    double truth = 0.0; ///< °C
    std::string note;   ///< for people
};

/// Whether a reading is right in a measuring range. Inside the range that is status "OK" and a
/// temperature within `bound` °C of the truth. Outside, the status must be the one that the truth
/// asks for: "LE" or "HE" (with the temperature within the bound) up to 2 °C outside, beyond that
/// "L" or "H". Where the truth is closer than the bound to where statuses change, both are right.
bool isRight(const Reading& reading, const RangeLimits& range, double bound);

} // namespace irmcore::app
