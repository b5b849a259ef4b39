#include "overlay.h"

#include "grip.h"
#include "labels.h"
#include "wording.h"

#include <QPolygonF>

#include <algorithm>

namespace irmcore::view {

namespace {

const QColor plain(255, 255, 255);
const QColor chosen(255, 214, 64);
const QColor unsure(170, 170, 170);
const QColor hot(255, 96, 80);
const QColor cold(110, 190, 255);

constexpr double crossArm = 9.0;
constexpr double crossHole = 2.5;
constexpr double handleSide = 7.0;

/// Strokes twice, so that it is seen on every ground.
template <typename Stroke>
void outlined(QPainter& painter, const QColor& colour, double width, Stroke stroke,
              Qt::PenStyle style = Qt::SolidLine) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 170), width + 2.0, Qt::SolidLine, Qt::FlatCap));
    stroke();
    painter.setPen(QPen(colour, width, style, Qt::FlatCap));
    stroke();
}

void paintCross(QPainter& painter, const QPointF& at, const QColor& colour, double width) {
    const auto arm = [&](double x, double y) {
        painter.drawLine(at + QPointF(x, y) * crossHole, at + QPointF(x, y) * crossArm);
    };
    outlined(painter, colour, width, [&] {
        arm(1, 0);
        arm(-1, 0);
        arm(0, 1);
        arm(0, -1);
    });
}

void paintHandle(QPainter& painter, const QPointF& at) {
    painter.setPen(QPen(QColor(0, 0, 0, 200), 1.0));
    painter.setBrush(chosen);
    painter.drawRect(
        QRectF(at.x() - handleSide / 2, at.y() - handleSide / 2, handleSide, handleSide));
}

void paintHandles(QPainter& painter, const Placement& placement, const Tool& tool) {
    if (tool.kind == ToolKind::line) {
        paintHandle(painter, placement.centreOf(tool.place.from));
        paintHandle(painter, placement.centreOf(tool.place.to));
    } else if (tool.kind == ToolKind::area) {
        const QRectF rect = placement.rectOf(tool.place);
        for (const QPointF& corner :
             {rect.topLeft(), rect.topRight(), rect.bottomLeft(), rect.bottomRight()})
            paintHandle(painter, corner);
    }
}

QRectF paintTool(QPainter& painter, const Placement& placement, const Tool& tool,
                 const QColor& colour) {
    constexpr double width = 1.6;
    if (tool.kind == ToolKind::spot) {
        const QPointF at = placement.centreOf(tool.place.from);
        paintCross(painter, at, colour, width);
        return {at.x() - crossArm, at.y() - crossArm, 2 * crossArm, 2 * crossArm};
    }
    if (tool.kind == ToolKind::line) {
        const QPointF from = placement.centreOf(tool.place.from);
        const QPointF to = placement.centreOf(tool.place.to);
        outlined(painter, colour, width, [&] { painter.drawLine(from, to); });
        const QPointF right = from.x() > to.x() ? from : to;
        return {right.x() - 3, right.y() - 3, 6, 6};
    }
    const QRectF rect = placement.rectOf(tool.place);
    outlined(painter, colour, width, [&] { painter.drawRect(rect); });
    return rect;
}

/// A small triangle that stands on its point: upward for the hottest, downward for the coldest.
QRectF paintMark(QPainter& painter, const QPointF& at, const QColor& colour, double side,
                 bool upward) {
    const double up = upward ? -1.0 : 1.0;
    const QPolygonF triangle({at + QPointF(0, up * side),
                              at + QPointF(-side * 0.8, -up * side * 0.6),
                              at + QPointF(side * 0.8, -up * side * 0.6)});
    painter.setPen(QPen(QColor(0, 0, 0, 200), 1.2));
    painter.setBrush(colour);
    painter.drawPolygon(triangle);
    return triangle.boundingRect();
}

const ToolReading* readingOf(const Snapshot& snapshot, int id) {
    const auto found = std::find_if(snapshot.readings.begin(), snapshot.readings.end(),
                                    [id](const ToolReading& r) { return r.id == id; });
    return found == snapshot.readings.end() ? nullptr : &*found;
}

QString labelOf(const PlacedTool& placed, const ToolReading* reading) {
    QString text = toolName(placed.tool.kind, placed.number);
    text += placed.tool.kind == ToolKind::spot ? QStringLiteral("  ") : QStringLiteral("  max ");
    return text + (reading != nullptr ? shortText(reading->hottest) : QString(QChar(0x2026)));
}

bool lies(const Value& value, QSize frame) {
    return value.status != "NULL" && value.at.x >= 0 && value.at.y >= 0 &&
           value.at.x < frame.width() && value.at.y < frame.height();
}

void paintBadge(QPainter& painter, const QRectF& area, const QString& text) {
    const QFontMetricsF metrics(painter.font());
    QRectF box(0, 0, metrics.horizontalAdvance(text) + 24.0, metrics.height() + 10.0);
    box.moveCenter(QPointF(area.center().x(), area.top() + 10.0 + box.height() / 2.0));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(20, 20, 20, 210));
    painter.drawRoundedRect(box, box.height() / 2.0, box.height() / 2.0);
    painter.setPen(chosen);
    painter.drawText(box, Qt::AlignCenter, text);
}

QString badgeOf(const Snapshot& snapshot) {
    if (!snapshot.present)
        return QStringLiteral("no camera");
    if (snapshot.calibrating)
        return QStringLiteral("shutter closed");
    return snapshot.frozen ? QStringLiteral("frozen") : QString();
}

} // namespace

void paintOverlay(QPainter& painter, const Placement& placement, const Snapshot& snapshot,
                  const Overlay& overlay) {
    if (placement.empty())
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRect(placement.area());
    Labels labels(painter, placement.area());
    if (overlay.target) {
        const QRectF rect = placement.rectOf(placeOf(*overlay.target));
        outlined(
            painter, plain, 1.4, [&] { painter.drawRect(rect); }, Qt::DashLine);
        labels.above(rect, QStringLiteral("target ") + degrees(overlay.target->celsius), plain);
    }
    if (overlay.drawn)
        paintTool(painter, placement, *overlay.drawn, chosen);
    if (overlay.tools != nullptr)
        for (const PlacedTool& placed : *overlay.tools) {
            const bool selected = placed.tool.id == overlay.selected;
            const QColor colour = selected ? chosen : plain;
            const ToolReading* const reading = readingOf(snapshot, placed.tool.id);
            const QRectF box = paintTool(painter, placement, placed.tool, colour);
            if (placed.tool.kind != ToolKind::spot && reading != nullptr &&
                lies(reading->hottest, placement.frame()))
                paintMark(painter, placement.centreOf(reading->hottest.at), colour, 5.0, true);
            if (selected)
                paintHandles(painter, placement, placed.tool);
            const QColor text = snapshot.settled ? colour : unsure;
            if (placed.tool.kind == ToolKind::area)
                labels.above(box, labelOf(placed, reading), text);
            else
                labels.beside(box, labelOf(placed, reading), text);
        }
    if (overlay.marks) {
        const auto mark = [&](const Value& value, const QColor& colour, bool upward) {
            if (lies(value, placement.frame()))
                labels.beside(paintMark(painter, placement.centreOf(value.at), colour, 8.0, upward),
                              shortText(value), snapshot.settled ? colour : unsure);
        };
        mark(snapshot.hottest, hot, true);
        mark(snapshot.coldest, cold, false);
    }
    if (const QString badge = badgeOf(snapshot); !badge.isEmpty())
        paintBadge(painter, placement.area(), badge);
    painter.restore();
}

} // namespace irmcore::view
