#include "labels.h"

#include <QFontMetricsF>

#include <algorithm>

namespace irmcore::view {

namespace {

constexpr double paddingX = 5.0;
constexpr double paddingY = 1.5;
constexpr double gap = 4.0;

QRectF within(QRectF box, const QRectF& room) {
    box.moveLeft(std::max(room.left(), std::min(box.left(), room.right() - box.width())));
    box.moveTop(std::max(room.top(), std::min(box.top(), room.bottom() - box.height())));
    return box;
}

} // namespace

QSizeF Labels::sizeOf(const QString& text) const {
    const QFontMetricsF metrics(m_painter.font());
    return {metrics.horizontalAdvance(text) + 2.0 * paddingX, metrics.height() + 2.0 * paddingY};
}

void Labels::beside(const QRectF& what, const QString& text, const QColor& colour) {
    const QSizeF size = sizeOf(text);
    const double middleX = what.center().x() - size.width() / 2.0;
    const double middleY = what.center().y() - size.height() / 2.0;
    // Clear of those at the sides too, which may be higher than what they tell of.
    const double over = std::min(what.top(), middleY) - gap - size.height();
    const double under = std::max(what.bottom(), middleY + size.height()) + gap;
    put({{what.right() + gap, middleY},
         {what.left() - gap - size.width(), middleY},
         {middleX, over},
         {middleX, under},
         {what.right() + gap, over},
         {what.right() + gap, under},
         {what.left() - gap - size.width(), under}},
        size, text, colour);
}

void Labels::above(const QRectF& what, const QString& text, const QColor& colour) {
    const QSizeF size = sizeOf(text);
    put({{what.left(), what.top() - gap - size.height()},
         {what.left(), what.bottom() + gap},
         {what.right() + gap, what.top()},
         {what.left() + gap, what.top() + gap}},
        size, text, colour);
}

void Labels::put(const std::vector<QPointF>& corners, QSizeF size, const QString& text,
                 const QColor& colour) {
    const auto isFree = [this](const QRectF& box) {
        return m_room.contains(box) &&
               std::none_of(m_taken.begin(), m_taken.end(),
                            [&](const QRectF& other) { return other.intersects(box); });
    };
    // First where it belongs, then pushed back into the picture.
    std::vector<QRectF> boxes;
    boxes.reserve(2 * corners.size());
    for (const QPointF& corner : corners)
        boxes.emplace_back(corner, size);
    for (const QPointF& corner : corners)
        boxes.push_back(within(QRectF(corner, size), m_room));
    const auto found = std::find_if(boxes.begin(), boxes.end(), isFree);
    const QRectF box = found == boxes.end() ? within(boxes.front(), m_room) : *found;
    m_taken.push_back(box);
    m_painter.setPen(Qt::NoPen);
    m_painter.setBrush(QColor(0, 0, 0, 190));
    m_painter.drawRoundedRect(box, 3.0, 3.0);
    m_painter.setPen(colour);
    m_painter.drawText(box, Qt::AlignCenter, text);
}

} // namespace irmcore::view
