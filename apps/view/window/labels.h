#pragma once

#include <QPainter>
#include <QRectF>
#include <QString>

#include <vector>

namespace irmcore::view {

/// Texts in small dark boxes on a picture; where there is room they do not cover each other.
class Labels {
public:
    Labels(QPainter& painter, const QRectF& room) : m_painter(painter), m_room(room) {}

    /// Beside `what`: right of it, left, above or below.
    void beside(const QRectF& what, const QString& text, const QColor& colour);
    /// Above the upper left corner of `what`, else below or inside.
    void above(const QRectF& what, const QString& text, const QColor& colour);

private:
    void put(const std::vector<QPointF>& corners, QSizeF size, const QString& text,
             const QColor& colour);
    QSizeF sizeOf(const QString& text) const;

    QPainter& m_painter;
    QRectF m_room;
    std::vector<QRectF> m_taken;
};

} // namespace irmcore::view
