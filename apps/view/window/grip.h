#pragma once

#include "placement.h"

#include <vector>

namespace irmcore::view {

/// What of a tool a pointer has hold of: the coordinates of its place that go along.
struct Grip {
    int id = 0; ///< the tool's
    bool fromX = true;
    bool fromY = true;
    bool toX = true;
    bool toY = true;

    bool whole() const { return fromX && fromY && toX && toY; }
};

/// The identity of the simulated target among the tools, which count from 1.
inline constexpr int targetId = -1;

/// What lies under a point: ends and corners before bodies, later tools before earlier ones.
/// `selected` goes first of all. Nothing when there is none.
std::optional<Grip> gripAt(const QPointF& point, const std::vector<Tool>& tools, int selected,
                           const Placement& placement);

/// The place after a grip was pulled so many pixels; it stays within the frame, and a tool that is
/// moved as a whole keeps its size.
Span pulled(const Span& place, const Grip& grip, int dx, int dy, QSize frame);

/// The cursor that says what a grip does.
Qt::CursorShape cursorOf(const Grip& grip, const Span& place);

/// The rectangle of the simulated target.
Span placeOf(const SimulatedTarget& target);

} // namespace irmcore::view
