#pragma once

#include "bench.h"
#include "verdict.h"

#include <vector>

namespace irmcore::app {

/// Measures the bench's scene as a host would: spots, both lines, an area, the hottest and coldest
/// point, and the ends of the displayed scale. Each beside its truth.
std::vector<Reading> measureScene(Bench& bench);

/// Its spots alone.
std::vector<Reading> measureSpots(Bench& bench);

} // namespace irmcore::app
