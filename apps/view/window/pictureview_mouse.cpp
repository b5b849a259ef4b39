#include "pictureview.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include <cstdlib>

namespace irmcore::view {

namespace {

// Qt 5 and Qt 6 name them differently.
QPointF pointOf(const QMouseEvent& event) {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return event.localPos();
#else
    return event.position();
#endif
}

ToolKind kindOf(MouseMode mode) {
    return mode == MouseMode::spot   ? ToolKind::spot
           : mode == MouseMode::line ? ToolKind::line
                                     : ToolKind::area;
}

} // namespace

/// The tools and, before them, the simulated target.
std::vector<Tool> PictureView::grippable() const {
    std::vector<Tool> all;
    if (m_target)
        all.push_back({targetId, ToolKind::area, placeOf(*m_target)});
    for (const PlacedTool& placed : m_tools.all())
        all.push_back(placed.tool);
    return all;
}

void PictureView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton)
        cancel();
    if (event->button() == Qt::LeftButton)
        press(pointOf(*event));
}

void PictureView::press(const QPointF& point) {
    const std::optional<Pixel> pixel = m_placement.pixelAt(point);
    m_nudge = 0;
    if (m_mode == MouseMode::select) {
        const auto all = grippable();
        auto grip = gripAt(point, all, m_tools.selected(), m_placement);
        m_tools.select(grip ? grip->id : 0);
        if (!grip)
            return;
        // The target is moved, never resized.
        if (grip->id == targetId)
            grip = Grip{targetId};
        for (const Tool& tool : all)
            if (tool.id == grip->id)
                m_pull = Pull{*grip, tool.place, m_placement.nearest(point), m_tools.newGesture()};
        return;
    }
    if (!pixel)
        return;
    if (m_mode == MouseMode::spot)
        m_tools.place(ToolKind::spot, {*pixel, *pixel});
    else
        m_drawn = Tool{0, kindOf(m_mode), {*pixel, *pixel}};
    update();
}

void PictureView::mouseMoveEvent(QMouseEvent* event) {
    const QPointF point = pointOf(*event);
    m_pointer = m_placement.pixelAt(point);
    Q_EMIT pointerMoved();
    if (m_drawn) {
        m_drawn->place.to = m_placement.nearest(point);
        update();
    } else if (m_pull) {
        pull(point);
    } else {
        updateCursor(point);
    }
}

void PictureView::pull(const QPointF& point) {
    const Pixel now = m_placement.nearest(point);
    moveTo(*m_pull, pulled(m_pull->start, m_pull->grip, now.x - m_pull->from.x,
                           now.y - m_pull->from.y, frameSize()));
}

void PictureView::moveTo(const Pull& pull, const Span& where) {
    if (pull.grip.id != targetId) {
        m_tools.change(pull.grip.id, where, pull.gesture);
        return;
    }
    if (m_target)
        Q_EMIT targetMoved(
            Pixel{where.from.x + m_target->width / 2, where.from.y + m_target->height / 2});
}

void PictureView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    m_pull.reset();
    if (!m_drawn)
        return;
    const Tool drawn = *m_drawn;
    m_drawn.reset();
    update();
    const int width = std::abs(drawn.place.to.x - drawn.place.from.x);
    const int height = std::abs(drawn.place.to.y - drawn.place.from.y);
    const bool line = drawn.kind == ToolKind::line;
    if (line ? width + height < 2 : width < 1 || height < 1) {
        Q_EMIT said(line ? QStringLiteral("Drag from one end of the line to the other.")
                         : QStringLiteral("Drag from one corner of the area to the opposite one."));
        return;
    }
    m_tools.place(drawn.kind, drawn.place);
}

void PictureView::leaveEvent(QEvent* /*event*/) {
    m_pointer.reset();
    Q_EMIT pointerMoved();
}

void PictureView::updateCursor(const QPointF& point) {
    if (m_mode != MouseMode::select)
        return;
    const auto all = grippable();
    const auto grip = gripAt(point, all, m_tools.selected(), m_placement);
    Qt::CursorShape shape = Qt::ArrowCursor;
    for (const Tool& tool : all)
        if (grip && tool.id == grip->id)
            shape = tool.id == targetId ? Qt::SizeAllCursor : cursorOf(*grip, tool.place);
    if (cursor().shape() != shape)
        setCursor(shape);
}

/// Drops what is being drawn, and puts back what is being pulled.
void PictureView::cancel() {
    m_drawn.reset();
    if (m_pull) {
        moveTo(*m_pull, m_pull->start);
        m_pull.reset();
    }
    update();
}

void PictureView::nudge(int dx, int dy) {
    const PlacedTool* const placed = m_tools.find(m_tools.selected());
    if (placed == nullptr || m_placement.empty())
        return;
    if (m_nudge == 0)
        m_nudge = m_tools.newGesture();
    m_tools.change(placed->tool.id,
                   pulled(placed->tool.place, Grip{placed->tool.id}, dx, dy, frameSize()), m_nudge);
}

void PictureView::keyPressEvent(QKeyEvent* event) {
    const int step = (event->modifiers() & Qt::ShiftModifier) != 0 ? 10 : 1;
    switch (event->key()) {
    case Qt::Key_Left:
        return nudge(-step, 0);
    case Qt::Key_Right:
        return nudge(step, 0);
    case Qt::Key_Up:
        return nudge(0, -step);
    case Qt::Key_Down:
        return nudge(0, step);
    case Qt::Key_Escape:
        if (m_drawn || m_pull)
            return cancel();
        m_tools.select(0);
        if (m_mode != MouseMode::select)
            Q_EMIT modeWanted(MouseMode::select);
        return;
    default:
        QWidget::keyPressEvent(event);
    }
}

} // namespace irmcore::view
