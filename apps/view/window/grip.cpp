#include "grip.h"

#include <algorithm>
#include <cmath>

namespace irmcore::view {

namespace {

constexpr double reach = 8.0; // surface units from a tool that still take hold of it

double distance(const QPointF& a, const QPointF& b) {
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

double distanceToSegment(const QPointF& point, const QPointF& from, const QPointF& to) {
    const QPointF along = to - from;
    const double length = QPointF::dotProduct(along, along);
    if (length <= 0.0)
        return distance(point, from);
    const double share = std::clamp(QPointF::dotProduct(point - from, along) / length, 0.0, 1.0);
    return distance(point, from + along * share);
}

std::optional<Grip> lineGrip(const QPointF& point, const Tool& tool, const Placement& placement) {
    const QPointF from = placement.centreOf(tool.place.from);
    const QPointF to = placement.centreOf(tool.place.to);
    if (distance(point, from) <= reach)
        return Grip{tool.id, true, true, false, false};
    if (distance(point, to) <= reach)
        return Grip{tool.id, false, false, true, true};
    if (distanceToSegment(point, from, to) <= reach)
        return Grip{tool.id};
    return std::nullopt;
}

/// Sides and corners, else the inside.
std::optional<Grip> areaGrip(const QPointF& point, const Tool& tool, const Placement& placement) {
    const QRectF rect = placement.rectOf(tool.place);
    if (!rect.adjusted(-reach, -reach, reach, reach).contains(point))
        return std::nullopt;
    // A small area is moved by its inside.
    const double edge = std::min({reach, rect.width() / 3.0, rect.height() / 3.0});
    const bool left = point.x() < rect.left() + edge;
    const bool right = point.x() > rect.right() - edge;
    const bool top = point.y() < rect.top() + edge;
    const bool bottom = point.y() > rect.bottom() - edge;
    if (!left && !right && !top && !bottom)
        return Grip{tool.id};
    return Grip{tool.id, left, top, right, bottom};
}

std::optional<Grip> gripOf(const QPointF& point, const Tool& tool, const Placement& placement) {
    switch (tool.kind) {
    case ToolKind::spot:
        if (distance(point, placement.centreOf(tool.place.from)) <= reach + 2.0)
            return Grip{tool.id};
        return std::nullopt;
    case ToolKind::line:
        return lineGrip(point, tool, placement);
    case ToolKind::area:
        return areaGrip(point, tool, placement);
    }
    return std::nullopt;
}

/// As much of a shift as keeps `least` to `most` within `count`. What does not fit, from a larger
/// frame, begins at 0.
int shift(int least, int most, int count, int by) {
    return std::max(-least, std::min(by, count - 1 - most));
}

} // namespace

std::optional<Grip> gripAt(const QPointF& point, const std::vector<Tool>& tools, int selected,
                           const Placement& placement) {
    if (placement.empty())
        return std::nullopt;
    std::optional<Grip> body;
    std::optional<Grip> part;
    for (const Tool& tool : tools)
        if (const auto grip = gripOf(point, tool, placement)) {
            if (tool.id == selected)
                return grip;
            // The inside of an area hides nothing that lies in it.
            const bool inside = grip->whole() && tool.kind == ToolKind::area;
            (inside ? body : part) = grip;
        }
    return part ? part : body;
}

Span pulled(const Span& place, const Grip& grip, int dx, int dy, QSize frame) {
    Span result = place;
    if (grip.whole()) {
        const auto [left, right] = std::minmax(place.from.x, place.to.x);
        const auto [top, bottom] = std::minmax(place.from.y, place.to.y);
        dx = shift(left, right, frame.width(), dx);
        dy = shift(top, bottom, frame.height(), dy);
    }
    const auto pull = [](bool goes, int& value, int by, int count) {
        if (goes)
            value = std::clamp(value + by, 0, count - 1);
    };
    pull(grip.fromX, result.from.x, dx, frame.width());
    pull(grip.fromY, result.from.y, dy, frame.height());
    pull(grip.toX, result.to.x, dx, frame.width());
    pull(grip.toY, result.to.y, dy, frame.height());
    return result;
}

Qt::CursorShape cursorOf(const Grip& grip, const Span& place) {
    if (grip.whole())
        return Qt::SizeAllCursor;
    const bool sideways = grip.fromX || grip.toX;
    const bool upright = grip.fromY || grip.toY;
    if (!upright)
        return Qt::SizeHorCursor;
    if (!sideways)
        return Qt::SizeVerCursor;
    const bool falls = (place.to.x - place.from.x >= 0) == (place.to.y - place.from.y >= 0);
    const bool mainDiagonal = (grip.fromX == grip.fromY) == falls;
    return mainDiagonal ? Qt::SizeFDiagCursor : Qt::SizeBDiagCursor;
}

Span placeOf(const SimulatedTarget& target) {
    const int left = target.centre.x - target.width / 2;
    const int top = target.centre.y - target.height / 2;
    return {{left, top}, {left + target.width - 1, top + target.height - 1}};
}

} // namespace irmcore::view
