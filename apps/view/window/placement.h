#pragma once

#include "../wishes.h"

#include <QPointF>
#include <QRectF>
#include <QSize>

#include <optional>

namespace irmcore::view {

/// Where the pixels of a frame lie on a surface that is painted.
class Placement {
public:
    Placement() = default;
    /// The frame as large as it fits into `room`, in its middle. Both sizes above 0.
    Placement(const QRectF& room, QSize frame);

    bool empty() const { return m_frame.isEmpty() || m_area.isEmpty(); }
    const QRectF& area() const { return m_area; }
    QSize frame() const { return m_frame; }
    /// Surface units for one pixel.
    double scale() const { return m_area.width() / m_frame.width(); }

    QPointF centreOf(Pixel pixel) const;
    /// From the corner of the one pixel to the opposite corner of the other.
    QRectF rectOf(const Span& span) const;
    /// Nothing beside the picture.
    std::optional<Pixel> pixelAt(const QPointF& point) const;
    /// The pixel at a point, or the one that is next to it.
    Pixel nearest(const QPointF& point) const;

private:
    QRectF m_area;
    QSize m_frame{0, 0};
};

} // namespace irmcore::view
