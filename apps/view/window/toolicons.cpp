#include "toolicons.h"

#include <QPainter>
#include <QPixmap>
#include <QPolygonF>

namespace irmcore::view {

namespace {

constexpr int side = 18; // units of the drawings

void draw(QPainter& painter, ToolIcon which, const QColor& colour) {
    switch (which) {
    case ToolIcon::select:
        painter.setBrush(colour);
        painter.drawPolygon(
            QPolygonF({{5, 2}, {5, 14}, {8, 11}, {10, 16}, {12, 15}, {10, 10.5}, {14, 10.5}}));
        return;
    case ToolIcon::spot:
        painter.drawLine(QPointF(9, 2), QPointF(9, 7));
        painter.drawLine(QPointF(9, 11), QPointF(9, 16));
        painter.drawLine(QPointF(2, 9), QPointF(7, 9));
        painter.drawLine(QPointF(11, 9), QPointF(16, 9));
        return;
    case ToolIcon::line:
        painter.drawLine(QPointF(3, 14), QPointF(15, 4));
        painter.setBrush(colour);
        painter.drawEllipse(QPointF(3, 14), 1.5, 1.5);
        painter.drawEllipse(QPointF(15, 4), 1.5, 1.5);
        return;
    case ToolIcon::area:
        painter.drawRect(QRectF(2.5, 4.5, 13, 9));
        return;
    case ToolIcon::marks:
        painter.setBrush(QColor(215, 65, 50));
        painter.setPen(Qt::NoPen);
        painter.drawPolygon(QPolygonF({{5.5, 3}, {1.5, 10}, {9.5, 10}}));
        painter.setBrush(QColor(50, 125, 205));
        painter.drawPolygon(QPolygonF({{12.5, 15}, {8.5, 8}, {16.5, 8}}));
        return;
    case ToolIcon::freeze:
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawRect(QRectF(5, 3, 3, 12));
        painter.drawRect(QRectF(10, 3, 3, 12));
        return;
    case ToolIcon::calibrate:
        painter.drawEllipse(QPointF(9, 9), 6.5, 6.5);
        painter.setBrush(colour);
        painter.drawPie(QRectF(2.5, 2.5, 13, 13), 90 * 16, 180 * 16);
        return;
    }
}

} // namespace

QIcon toolIcon(ToolIcon which, const QColor& colour) {
    QIcon icon;
    for (const int density : {1, 2}) {
        QPixmap pixmap(side * density, side * density);
        pixmap.fill(Qt::transparent);
        pixmap.setDevicePixelRatio(density);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(colour, 1.5));
        draw(painter, which, colour);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace irmcore::view
