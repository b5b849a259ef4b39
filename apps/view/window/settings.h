#pragma once

#include "tools.h"

#include "../wishes.h"

class QSettings;

namespace irmcore::view {

/// What is remembered from one start to the next, beside the window's own state.
struct Remembered {
    Parameters parameters;
    Look look;
    IsothermWish isotherm;
    int range = 0;
    bool marks = true;
    bool calibrates = true;
    std::vector<PlacedTool> tools;
};

/// Reads it. What is missing, cannot be read or lies outside the limits of its field is the
/// default; tools that lie outside the largest frame are left out.
Remembered readRemembered(QSettings& settings);
void writeRemembered(QSettings& settings, const Remembered& remembered);

} // namespace irmcore::view
