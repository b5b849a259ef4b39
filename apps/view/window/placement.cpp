#include "placement.h"

#include <algorithm>
#include <cmath>

namespace irmcore::view {

Placement::Placement(const QRectF& room, QSize frame) : m_frame(frame) {
    if (frame.isEmpty() || room.isEmpty())
        return;
    const double scale = std::min(room.width() / frame.width(), room.height() / frame.height());
    const QSizeF size(scale * frame.width(), scale * frame.height());
    m_area = QRectF(
        QPointF(room.center().x() - size.width() / 2.0, room.center().y() - size.height() / 2.0),
        size);
}

QPointF Placement::centreOf(Pixel pixel) const {
    return m_area.topLeft() + QPointF(pixel.x + 0.5, pixel.y + 0.5) * scale();
}

QRectF Placement::rectOf(const Span& span) const {
    const Span area = app::measuring::asArea(span);
    return {m_area.topLeft() + QPointF(area.from.x, area.from.y) * scale(),
            m_area.topLeft() + QPointF(area.to.x + 1, area.to.y + 1) * scale()};
}

std::optional<Pixel> Placement::pixelAt(const QPointF& point) const {
    if (empty() || !m_area.contains(point))
        return std::nullopt;
    return nearest(point);
}

Pixel Placement::nearest(const QPointF& point) const {
    if (empty())
        return {0, 0};
    const QPointF inside = (point - m_area.topLeft()) / scale();
    const auto cut = [](double value, int count) {
        return static_cast<int>(std::clamp(std::floor(value), 0.0, count - 1.0));
    };
    return {cut(inside.x(), m_frame.width()), cut(inside.y(), m_frame.height())};
}

} // namespace irmcore::view
