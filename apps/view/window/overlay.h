#pragma once

#include "placement.h"
#include "tools.h"

#include "../snapshot.h"

#include <QPainter>

#include <vector>

namespace irmcore::view {

/// What is painted over a picture.
struct Overlay {
    const std::vector<PlacedTool>* tools = nullptr;
    int selected = 0;
    bool marks = true;                     ///< the frame's hottest and coldest pixel
    std::optional<SimulatedTarget> target; ///< dashed
    std::optional<Tool> drawn;             ///< a line or area that is not placed yet
};

/// Paints tools with their names and readings, marks and badges. The painter's font is used.
void paintOverlay(QPainter& painter, const Placement& placement, const Snapshot& snapshot,
                  const Overlay& overlay);

} // namespace irmcore::view
