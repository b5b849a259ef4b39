#include "pictureview.h"

#include "colourbar.h"
#include "wording.h"

#include <QPaintEvent>

#include <algorithm>
#include <utility>

namespace irmcore::view {

namespace {

constexpr int margin = 10;
const QColor ground(30, 32, 36);
const QColor groundText(214, 218, 224);

} // namespace

PictureView::PictureView(Tools& tools, QWidget* parent) : QWidget(parent), m_tools(tools) {
    setObjectName(QStringLiteral("picture"));
    setAccessibleName(QStringLiteral("Live picture"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    connect(&m_tools, &Tools::changed, this, qOverload<>(&QWidget::update));
    connect(&m_tools, &Tools::selectionChanged, this, [this] {
        m_nudge = 0;
        update();
    });
}

void PictureView::show(std::shared_ptr<const Snapshot> snapshot) {
    const QSize before = frameSize();
    m_snapshot = std::move(snapshot);
    if (frameSize() != before)
        place();
    update();
    if (m_pointer)
        Q_EMIT pointerMoved();
}

void PictureView::setMode(MouseMode mode) {
    cancel();
    m_mode = mode;
    setCursor(mode == MouseMode::select ? Qt::ArrowCursor : Qt::CrossCursor);
}

void PictureView::setMarks(bool marks) {
    m_marks = marks;
    update();
}

void PictureView::setTarget(const std::optional<SimulatedTarget>& target) {
    m_target = target;
    update();
}

QSize PictureView::frameSize() const {
    if (!m_snapshot)
        return {0, 0};
    const auto& frame = m_snapshot->frame;
    if (frame.width > 0 && frame.height > 0)
        return {frame.width, frame.height};
    return {m_snapshot->picture.width, m_snapshot->picture.height};
}

void PictureView::place() {
    const QRectF room =
        QRectF(rect()).adjusted(margin, margin, -margin - colourBarWidth(fontMetrics()), -margin);
    m_placement = frameSize().isEmpty() ? Placement() : Placement(room, frameSize());
}

void PictureView::resizeEvent(QResizeEvent* /*event*/) { place(); }

Overlay PictureView::overlay() const {
    return {&m_tools.all(), m_tools.selected(), m_marks, m_target, m_drawn};
}

void PictureView::paint(QPainter& painter, const QRectF& room, const Placement& placement,
                        const QColor& text, const Overlay& overlay) const {
    painter.fillRect(room, ground);
    if (!m_snapshot || placement.empty()) {
        const bool troubled = m_snapshot && !m_snapshot->troubles.empty();
        painter.setPen(text);
        painter.drawText(room.adjusted(40, 40, -40, -40),
                         int{Qt::AlignCenter} | int{Qt::TextWordWrap},
                         troubled ? fromLocal(m_snapshot->troubles.front())
                                  : QStringLiteral("Waiting for the camera…"));
        return;
    }
    const Coloured& picture = m_snapshot->picture;
    const auto pixels = static_cast<std::size_t>(std::max(picture.width, 0)) *
                        static_cast<std::size_t>(std::max(picture.height, 0));
    if (pixels > 0 && picture.pixels.size() >= pixels) {
        // The snapshot keeps the pixels as long as the image is there.
        const int bytesPerLine = 4 * picture.width;
        const QImage image(reinterpret_cast<const uchar*>(picture.pixels.data()), picture.width,
                           picture.height, bytesPerLine, QImage::Format_RGB32);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
        painter.drawImage(placement.area(), image);
    }
    const QRectF area = placement.area();
    paintColourBar(painter,
                   QRectF(area.right(), area.top(), room.right() - area.right(), area.height()),
                   *m_snapshot, text);
    paintOverlay(painter, placement, *m_snapshot, overlay);
}

void PictureView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    paint(painter, QRectF(rect()), m_placement, groundText, overlay());
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 1.0));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

QImage PictureView::rendered() const {
    constexpr int least = 768;
    const QSize frame = frameSize();
    if (frame.isEmpty())
        return {};
    const int scale = std::max(1, (least + frame.width() - 1) / frame.width());
    const QSizeF picture = QSizeF(frame) * scale;
    const QSize size(static_cast<int>(picture.width()) + 2 * margin + colourBarWidth(fontMetrics()),
                     static_cast<int>(picture.height()) + 2 * margin);
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setFont(font());
    Overlay without = overlay();
    without.selected = 0;
    without.drawn.reset();
    paint(painter, QRectF(QPointF(), QSizeF(size)),
          Placement(QRectF(QPointF(margin, margin), picture), frame), groundText, without);
    return image;
}

QString PictureView::pointerText() const {
    if (!m_pointer || !m_snapshot)
        return {};
    const auto& frame = m_snapshot->frame;
    if (m_pointer->x >= frame.width || m_pointer->y >= frame.height ||
        frame.celsius.size() <= frame.index(*m_pointer))
        return {};
    const auto measured = frame.at(*m_pointer);
    Value value;
    value.status = toLocal(measured.status);
    value.celsius = measured.celsius;
    return QStringLiteral("%1 at %2, %3").arg(shortText(value)).arg(m_pointer->x).arg(m_pointer->y);
}

} // namespace irmcore::view
