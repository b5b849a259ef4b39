#pragma once

#include "plan.h"

/// What "Parameter/Setting" below the working directory says now.
namespace irmcore::app::measuring {

/// The core's raw integration time for a range.
unsigned short storedIntTime(int range);
/// Object and air, but for what was given.
irmsim::Surroundings truthOf(const GivenParameters& given);

} // namespace irmcore::app::measuring
