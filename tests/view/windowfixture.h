#pragma once

#include "apps/view/window/mainwindow.h"
#include "objects.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QTest>

#include <cmath>
#include <functional>
#include <memory>

namespace irmcore::view::testing {

// Black bodies of the bench: -10 °C at 48, 72; 37 °C at 240, 72.
inline constexpr Pixel cold{48, 72};
inline constexpr Pixel warm{240, 72};

/// A window on a simulated camera that looks at the bench.
class Window : public ::testing::Test {
protected:
    void open(bool fresh = true) {
        WindowPlan plan;
        plan.source.plan.wallFactor = 8; // what the camera takes its time for is soon done
        plan.fresh = fresh;
        open(std::move(plan));
    }
    void open(WindowPlan plan) {
        m_window = std::make_unique<MainWindow>(std::move(plan));
        m_window->resize(1280, 800);
        m_window->show();
        ASSERT_TRUE(until([](const Snapshot& s) { return s.settled; }));
    }

    bool until(const std::function<bool(const Snapshot&)>& wanted) {
        return QTest::qWaitFor(
            [&] { return m_window->snapshot() != nullptr && wanted(*m_window->snapshot()); },
            30000);
    }
    /// Waits until a tool reads so many degrees.
    bool reads(int id, double celsius, double bound = 0.3) {
        return until([&](const Snapshot& s) {
            for (const ToolReading& r : s.readings)
                if (r.id == id)
                    return r.hottest.ok() && std::abs(r.hottest.celsius - celsius) < bound;
            return false;
        });
    }

    template <typename Object>
    Object& find(const char* name) {
        return in<Object>(*m_window, name);
    }
    PictureView& picture() { return find<PictureView>("picture"); }
    QPoint at(int x, int y) { return picture().placement().centreOf({x, y}).toPoint(); }
    /// Presses the button at one pixel of the frame and lets it go at another.
    void drag(Pixel from, Pixel to) {
        QTest::mousePress(&picture(), Qt::LeftButton, {}, at(from.x, from.y));
        move(at((from.x + to.x) / 2, (from.y + to.y) / 2));
        move(at(to.x, to.y));
        QTest::mouseRelease(&picture(), Qt::LeftButton, {}, at(to.x, to.y));
    }
    int place(MouseMode mode, Pixel from, Pixel to) {
        picture().setMode(mode);
        drag(from, to);
        return m_window->tools().selected();
    }

    std::unique_ptr<MainWindow> m_window;

private:
    /// With the button held: Qt 5's own test function moves the pointer, without one.
    void move(QPoint to) {
        QMouseEvent event(QEvent::MouseMove, to, to, picture().mapToGlobal(to), Qt::NoButton,
                          Qt::LeftButton, {});
        QCoreApplication::sendEvent(&picture(), &event);
    }
};

} // namespace irmcore::view::testing
