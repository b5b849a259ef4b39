#pragma once

#include "accuracy.h"
#include "verdict.h"
#include "warmup.h"

#include <cstdio>
#include <vector>

namespace irmcore::app {

/// Prints readings with their truth and error as a table for people. `bound` in °C.
void printTable(std::FILE* to, const std::vector<Reading>& readings, const RangeLimits& range,
                double bound);

/// Prints readings as JSON, one object a line: what, x, y, ad, status, temperature, truth.
void printJson(std::FILE* to, const std::vector<Reading>& readings);

void printTable(std::FILE* to, const std::vector<Accuracy>& sweeps);
/// The same as JSON, one object a line: conditions, range, worst, worstAt, calibration,
/// quantisation, bound, readings.
void printJson(std::FILE* to, const std::vector<Accuracy>& sweeps);

void printTable(std::FILE* to, const std::vector<Course>& courses);
/// The same as JSON, one object a line: what, worst, worstAt, worstInside, bound (null where
/// nothing is promised), readings, lost, rounds.
void printJson(std::FILE* to, const std::vector<Course>& courses);

} // namespace irmcore::app
