// The picture under the mouse and the keys, without a camera.
#include "apps/view/window/pictureview.h"
#include "synthetic.h"
#include "texts.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>
#include <QStringList>
#include <QTest>

namespace irmcore::view::testing {
namespace {

class Mouse : public ::testing::Test {
protected:
    void SetUp() override {
        m_view.resize(420, 280);
        m_view.setVisible(true);
        m_view.show(shared(synthetic(160, 120)));
        QObject::connect(&m_view, &PictureView::said, [this](const QString& s) { m_said += s; });
        QObject::connect(&m_view, &PictureView::targetMoved, [this](const Pixel& centre) {
            m_target.centre = centre;
            m_view.setTarget(m_target);
        });
        QObject::connect(&m_view, &PictureView::modeWanted,
                         [this](MouseMode mode) { m_view.setMode(mode); });
        ASSERT_FALSE(m_view.placement().empty());
    }

    // Points may lie beside the widget: it has caught the mouse.
    void send(QEvent::Type type, const QPointF& at, Qt::MouseButton button = Qt::LeftButton) {
        QMouseEvent event(type, at, at, type == QEvent::MouseMove ? Qt::NoButton : button, button,
                          Qt::NoModifier);
        QApplication::sendEvent(&m_view, &event);
    }
    QPointF at(Pixel pixel) const { return m_view.placement().centreOf(pixel); }
    void press(Pixel pixel) { send(QEvent::MouseButtonPress, at(pixel)); }
    void moveOut(const QPointF& point) { send(QEvent::MouseMove, point); }
    void move(Pixel pixel) { send(QEvent::MouseMove, at(pixel)); }
    void release(Pixel pixel) { send(QEvent::MouseButtonRelease, at(pixel)); }
    void drag(Pixel from, Pixel to) {
        press(from);
        move({(from.x + to.x) / 2, (from.y + to.y) / 2});
        move(to);
        release(to);
    }
    std::string place(int id) const {
        const PlacedTool* const placed = m_tools.find(id);
        return placed == nullptr ? "none" : textOf(placed->tool.place);
    }

    Tools m_tools;
    PictureView m_view{m_tools};
    SimulatedTarget m_target{{80, 60}, 16, 12, 80.0};
    QStringList m_said;
};

TEST_F(Mouse, PlacesEachKind) {
    const struct {
        MouseMode mode;
        Pixel from;
        Pixel to;
        const char* place;
        int said;
    } cases[] = {
        {MouseMode::spot, {10, 20}, {50, 60}, "10,20 10,20", 0}, // where the button went down
        {MouseMode::line, {50, 60}, {10, 20}, "50,60 10,20", 0},
        {MouseMode::line, {50, 60}, {52, 60}, "50,60 52,60", 0},
        {MouseMode::line, {50, 60}, {51, 60}, "none", 1}, // a click is no line
        {MouseMode::area, {50, 60}, {10, 20}, "10,20 50,60", 0},
        {MouseMode::area, {50, 60}, {51, 59}, "50,59 51,60", 0},
        {MouseMode::area, {50, 60}, {50, 90}, "none", 1}, // neither is a stroke an area
    };
    for (const auto& c : cases) {
        m_tools.clear();
        m_said.clear();
        m_view.setMode(c.mode);
        drag(c.from, c.to);
        EXPECT_EQ(place(m_tools.selected()), c.place);
        EXPECT_EQ(m_said.size(), c.said) << c.place;
    }
    // Beside the picture begins nothing; what begins in it ends at its edge.
    m_tools.clear();
    for (const MouseMode mode : {MouseMode::spot, MouseMode::line, MouseMode::area}) {
        m_view.setMode(mode);
        send(QEvent::MouseButtonPress, {2, 2});
        move({100, 100});
        release({100, 100});
    }
    EXPECT_TRUE(m_tools.all().empty());
    press({100, 100});
    moveOut(QPointF(5000, -5000));
    send(QEvent::MouseButtonRelease, {5000, -5000});
    EXPECT_EQ(place(m_tools.selected()), "100,0 159,100");
}

TEST_F(Mouse, MovesAndResizes) {
    const Span area{{40, 30}, {100, 80}};
    const struct {
        Pixel from;
        Pixel to;
        const char* place;
    } cases[] = {
        {{40, 30}, {20, 10}, "20,10 100,80"},     {{100, 30}, {120, 10}, "40,10 120,80"},
        {{40, 80}, {20, 110}, "20,30 100,110"},   {{100, 80}, {159, 119}, "40,30 159,119"},
        {{70, 30}, {90, 5}, "40,5 100,80"},       {{40, 55}, {10, 99}, "10,30 100,80"},
        {{70, 55}, {75, 50}, "45,25 105,75"},     {{70, 55}, {159, 119}, "99,69 159,119"},
        {{40, 30}, {110, 100}, "100,80 110,100"}, // pulled over the opposite corner
    };
    for (const auto& c : cases) {
        const int id = m_tools.place(ToolKind::area, area);
        const int steps = m_tools.history().count();
        drag(c.from, c.to);
        EXPECT_EQ(place(id), c.place);
        EXPECT_EQ(m_tools.history().count(), steps + 1) << "a pull is one step";
        m_tools.history().undo();
        EXPECT_EQ(place(id), "40,30 100,80");
        m_tools.clear();
    }
    const int line = m_tools.place(ToolKind::line, {{20, 20}, {60, 40}});
    drag({60, 40}, {90, 100});
    EXPECT_EQ(place(line), "20,20 90,100");
    drag({20, 20}, {30, 15});
    EXPECT_EQ(place(line), "30,15 90,100");
    EXPECT_EQ(m_tools.history().undoText(), QStringLiteral("move L1"));
}

TEST_F(Mouse, SelectsAndGivesUp) {
    const int spot = m_tools.place(ToolKind::spot, {{20, 20}, {20, 20}});
    const int area = m_tools.place(ToolKind::area, {{60, 60}, {100, 100}});
    drag({20, 20}, {20, 20});
    EXPECT_EQ(m_tools.selected(), spot);
    drag({80, 80}, {80, 80});
    EXPECT_EQ(m_tools.selected(), area);
    drag({140, 20}, {150, 30}); // nothing there
    EXPECT_EQ(m_tools.selected(), 0);
    EXPECT_EQ(m_tools.history().count(), 2);
    // What is pulled goes back, by the key and by the other button.
    for (const bool key : {true, false}) {
        press({20, 20});
        move({90, 30});
        EXPECT_EQ(place(spot), "90,30 90,30");
        if (key)
            QTest::keyClick(&m_view, Qt::Key_Escape);
        else
            send(QEvent::MouseButtonPress, at({90, 30}), Qt::RightButton);
        EXPECT_EQ(place(spot), "20,20 20,20");
        move({50, 50}); // the button is still down
        release({50, 50});
        EXPECT_EQ(place(spot), "20,20 20,20");
        EXPECT_EQ(m_tools.history().count(), 2);
    }
    EXPECT_EQ(m_tools.selected(), spot);
    // What is drawn vanishes; then Esc lets go of the selection and of the mode.
    m_view.setMode(MouseMode::line);
    press({10, 100});
    move({50, 110});
    QTest::keyClick(&m_view, Qt::Key_Escape);
    release({50, 110});
    EXPECT_EQ(m_tools.all().size(), 2U);
    EXPECT_EQ(m_view.mode(), MouseMode::line);
    EXPECT_EQ(m_tools.selected(), spot);
    QTest::keyClick(&m_view, Qt::Key_Escape);
    EXPECT_EQ(m_view.mode(), MouseMode::select);
    EXPECT_EQ(m_tools.selected(), 0);
    // A tool that goes while it is pulled is gone.
    press({20, 20});
    m_tools.remove(spot);
    move({90, 30});
    release({90, 30});
    EXPECT_EQ(place(spot), "none");
    EXPECT_EQ(m_tools.all().size(), 1U);
}

TEST_F(Mouse, DragsTheTargetButNeverResizesIt) {
    m_view.setTarget(m_target); // from 72, 54 to 87, 65
    drag({80, 60}, {100, 50});
    EXPECT_EQ(m_target.centre.x, 100);
    EXPECT_EQ(m_target.centre.y, 50);
    drag({92, 44}, {0, 0}); // by its corner; it stays within the frame
    EXPECT_EQ(m_target.centre.x, 8);
    EXPECT_EQ(m_target.centre.y, 6);
    EXPECT_EQ(m_target.width, 16);
    press({8, 6});
    move({80, 60});
    QTest::keyClick(&m_view, Qt::Key_Escape);
    release({80, 60});
    EXPECT_EQ(m_target.centre.x, 8);
    EXPECT_EQ(m_tools.history().count(), 0);
    EXPECT_EQ(m_tools.selected(), 0);
}

TEST_F(Mouse, KeysMoveTheSelectedTool) {
    const int area = m_tools.place(ToolKind::area, {{60, 60}, {100, 100}});
    const int spot = m_tools.place(ToolKind::spot, {{20, 20}, {20, 20}});
    const struct {
        int id;
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        const char* place;
    } cases[] = {
        {spot, Qt::Key_Right, Qt::NoModifier, "21,20 21,20"},
        {spot, Qt::Key_Down, Qt::ShiftModifier, "21,30 21,30"},
        {spot, Qt::Key_Left, Qt::ShiftModifier, "11,30 11,30"},
        {spot, Qt::Key_Left, Qt::ShiftModifier, "1,30 1,30"},
        {spot, Qt::Key_Left, Qt::ShiftModifier, "0,30 0,30"}, // the edge
        {spot, Qt::Key_Up, Qt::NoModifier, "0,29 0,29"},
        {area, Qt::Key_Down, Qt::ShiftModifier, "60,70 100,110"},
        {area, Qt::Key_Down, Qt::ShiftModifier, "60,79 100,119"},
        {area, Qt::Key_Up, Qt::NoModifier, "60,78 100,118"},
    };
    for (const auto& c : cases) {
        m_tools.select(c.id);
        QTest::keyClick(&m_view, c.key, c.modifiers);
        EXPECT_EQ(place(c.id), c.place);
    }
    EXPECT_EQ(m_tools.history().count(), 4); // placed twice, moved twice
    m_tools.history().undo();
    EXPECT_EQ(place(area), "60,60 100,100");
    m_tools.history().undo();
    EXPECT_EQ(place(spot), "20,20 20,20");
    m_tools.select(0);
    QTest::keyClick(&m_view, Qt::Key_Right);
    EXPECT_EQ(place(spot), "20,20 20,20");
}

TEST_F(Mouse, TellsTheTemperatureUnderIt) {
    Snapshot snapshot = synthetic(160, 120);
    const struct {
        Pixel at;
        float celsius;
        unsigned char status;
        const char* text;
    } cases[] = {
        {{3, 7}, 37.04F, 0, "37.0 °C at 3, 7"},         {{0, 0}, -0.04F, 0, "0.0 °C at 0, 0"},
        {{159, 119}, -20.0F, 1, "< range at 159, 119"}, {{5, 5}, 150.0F, 4, "> range at 5, 5"},
        {{6, 5}, -12.3F, 0, "−12.3 °C at 6, 5"},        {{7, 5}, 1.0F, 9, "no reading at 7, 5"},
    };
    for (const auto& c : cases) {
        snapshot.frame.celsius[snapshot.frame.index(c.at)] = c.celsius;
        snapshot.frame.status[snapshot.frame.index(c.at)] = c.status;
    }
    m_view.show(shared(snapshot));
    EXPECT_EQ(m_view.pointerText(), QString());
    for (const auto& c : cases) {
        move(c.at);
        EXPECT_EQ(m_view.pointerText().toStdString(), c.text);
    }
    moveOut(QPointF(1, 1));
    EXPECT_EQ(m_view.pointerText(), QString());
    move({159, 119});
    m_view.show(shared(synthetic(32, 24))); // the pixel is not there any more
    EXPECT_EQ(m_view.pointerText(), QString());
    move({31, 23});
    QEvent leaves(QEvent::Leave);
    EXPECT_EQ(m_view.pointerText(), QStringLiteral("333.0 °C at 31, 23"));
    QApplication::sendEvent(&m_view, &leaves);
    EXPECT_EQ(m_view.pointerText(), QString());
}

} // namespace
} // namespace irmcore::view::testing
