#pragma once

#include "comparison.h"

#include <cstdio>

namespace irmcore::app {

void printComparison(std::FILE* to, const Comparison& comparison);

/// One object a line, its `kind` "table", "modify" or "parameter"; temperatures in °C.
void printComparisonJson(std::FILE* to, const Comparison& comparison);

/// The counts that either table converts: lens, range, count, both temperatures and the second less
/// the first, in °C. A field is empty where there is none.
void printComparisonCsv(std::FILE* to, const DirectoryContent& first,
                        const DirectoryContent& second);

} // namespace irmcore::app
