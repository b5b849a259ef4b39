#pragma once

#include "grip.h"
#include "overlay.h"
#include "placement.h"
#include "tools.h"

#include "../snapshot.h"

#include <QWidget>

#include <memory>
#include <optional>

namespace irmcore::view {

/// What the mouse does on the picture.
enum class MouseMode { select, spot, line, area };

/// The live picture with its colour bar and the tools on it.
class PictureView : public QWidget {
    Q_OBJECT
public:
    /// The tools outlive the view.
    explicit PictureView(Tools& tools, QWidget* parent = nullptr);

    void show(std::shared_ptr<const Snapshot> snapshot);
    void setMode(MouseMode mode);
    MouseMode mode() const { return m_mode; }
    void setMarks(bool marks);
    void setTarget(const std::optional<SimulatedTarget>& target);

    /// Picture, bar and tools at a size that shows every pixel, whatever the widget's.
    QImage rendered() const;
    /// Temperature under the mouse pointer: "37.2 °C at 192, 144". Empty beside the picture.
    QString pointerText() const;
    /// Where the frame lies in the widget.
    const Placement& placement() const { return m_placement; }

    QSize sizeHint() const override { return {768, 576}; }
    QSize minimumSizeHint() const override { return {320, 200}; }

Q_SIGNALS:
    void pointerMoved();
    void modeWanted(irmcore::view::MouseMode mode);
    void targetMoved(const irmcore::view::Pixel& centre);
    /// Something to say to the person, in plain words.
    void said(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// A tool or the target that is being pulled.
    struct Pull {
        Grip grip;
        Span start; ///< where it was
        Pixel from; ///< where the button went down
        int gesture = 0;
    };

    QSize frameSize() const;
    void place();
    void paint(QPainter& painter, const QRectF& room, const Placement& placement,
               const QColor& text, const Overlay& overlay) const;
    Overlay overlay() const;
    std::vector<Tool> grippable() const;
    void press(const QPointF& point);
    void pull(const QPointF& point);
    void moveTo(const Pull& pull, const Span& where);
    void cancel();
    void nudge(int dx, int dy);
    void updateCursor(const QPointF& point);

    Tools& m_tools;
    std::shared_ptr<const Snapshot> m_snapshot;
    Placement m_placement;
    MouseMode m_mode = MouseMode::select;
    bool m_marks = true;
    std::optional<SimulatedTarget> m_target;
    std::optional<Pixel> m_pointer;
    std::optional<Pull> m_pull;
    std::optional<Tool> m_drawn; ///< a line or area between press and release
    int m_nudge = 0;             ///< gesture of the arrow keys; 0 when the next one is a new one
};

} // namespace irmcore::view
