#pragma once

#include "explanation.h"

#include <cstdio>

namespace irmcore::app {

/// All that is told of a reading.
struct Explanation {
    int range;
    int lens;
    float shutterTemp;  ///< that the shutter term comes from, °C
    float modifyFactor; ///< times the inside temperature gives it
    Basis basis;
    Parameters parameters;
    Breakdown parts;
    Air air;
    Uncertainty uncertainty;
};

/// For people: a column of terms, each with its unit and what it is.
void printExplanation(std::FILE* to, const Explanation& told);

/// One JSON object; numbers as the library has them, null where there is none.
void printExplanationJson(std::FILE* to, const Explanation& told);

} // namespace irmcore::app
