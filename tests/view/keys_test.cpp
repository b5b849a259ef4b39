// The window's keys and menus.
#include "apps/view/window/keycourtesy.h"
#include "windowfixture.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QSettings>

namespace irmcore::view::testing {
namespace {

class Keys : public Window {
protected:
    void SetUp() override {
        open();
        m_window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
        picture().setFocus();
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    bool checked(const char* action) { return find<QAction>(action).isChecked(); }
};

TEST_F(Keys, DoWhatTheyAreSaidToDo) {
    const struct {
        Qt::Key key;
        MouseMode mode;
        const char* action;
    } modes[] = {{Qt::Key_S, MouseMode::spot, "modeSpot"},
                 {Qt::Key_L, MouseMode::line, "modeLine"},
                 {Qt::Key_A, MouseMode::area, "modeArea"},
                 {Qt::Key_V, MouseMode::select, "modeSelect"},
                 {Qt::Key_A, MouseMode::area, "modeArea"}};
    for (const auto& c : modes) {
        key(c.key);
        EXPECT_EQ(picture().mode(), c.mode) << c.action;
        EXPECT_TRUE(checked(c.action)) << c.action;
    }
    drag({10, 10}, {50, 50});
    Tools& tools = m_window->tools();
    ASSERT_EQ(tools.all().size(), 1U);
    key(Qt::Key_Escape);
    EXPECT_TRUE(checked("modeSelect"));
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(tools.all().empty());
    key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(tools.all().size(), 1U);
    key(Qt::Key_Z, Qt::ControlModifier);
    key(Qt::Key_Y, Qt::ControlModifier);
    ASSERT_EQ(tools.all().size(), 1U);
    EXPECT_FALSE(find<QAction>("removeAction").isEnabled());
    tools.select(tools.all()[0].tool.id);
    key(Qt::Key_Delete);
    EXPECT_TRUE(tools.all().empty());
    key(Qt::Key_M);
    EXPECT_FALSE(checked("marksAction"));
    key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(QApplication::clipboard()->text().startsWith(QStringLiteral("Tool\tHighest\t")));
    key(Qt::Key_F11);
    EXPECT_TRUE(m_window->isFullScreen());
    key(Qt::Key_F11);
    EXPECT_FALSE(m_window->isFullScreen());
    const int rounds = m_window->snapshot()->calibrations;
    key(Qt::Key_F5);
    EXPECT_TRUE(until([=](const Snapshot& s) { return s.calibrations > rounds; }));
    key(Qt::Key_Space);
    EXPECT_TRUE(until([](const Snapshot& s) { return s.frozen; }));
    key(Qt::Key_Space);
    EXPECT_TRUE(until([](const Snapshot& s) { return !s.frozen; }));
    key(Qt::Key_F1);
    EXPECT_TRUE(find<QDialog>("keysWindow").isVisible());
    EXPECT_FALSE(find<QDialog>("keysWindow").isModal());
}

TEST_F(Keys, AreLeftToWhatHasAUseForThem) {
    KeyCourtesy courtesy;
    qApp->installEventFilter(&courtesy);
    auto& automatic = find<QAbstractButton>("automaticCalibration");
    find<QWidget>("cameraDock").raise();
    automatic.setFocus();
    ASSERT_EQ(QApplication::focusWidget(), &automatic);
    key(Qt::Key_Space);
    EXPECT_FALSE(automatic.isChecked());
    EXPECT_FALSE(checked("freezeAction"));
    key(Qt::Key_S); // a box has no use for a letter
    EXPECT_EQ(picture().mode(), MouseMode::spot);
    auto& palette = find<QComboBox>("palette");
    find<QWidget>("pictureDock").raise();
    palette.setFocus();
    ASSERT_EQ(QApplication::focusWidget(), &palette);
    key(Qt::Key_S); // Sepia
    EXPECT_EQ(palette.currentText(), QStringLiteral("Sepia"));
    key(Qt::Key_A, Qt::ShiftModifier);
    EXPECT_EQ(picture().mode(), MouseMode::spot);
    key(Qt::Key_F5);
    EXPECT_TRUE(until([](const Snapshot& s) { return s.calibrations > 1; }));
}

TEST_F(Keys, ArrangePanels) {
    auto& readings = find<QWidget>("readingsDock");
    readings.hide();
    find<QAction>("resetLayout").trigger();
    EXPECT_FALSE(readings.isHidden());
    m_window->tools().place(ToolKind::spot, {{1, 1}, {1, 1}});
    find<QAction>("clearTools").trigger();
    EXPECT_TRUE(m_window->tools().all().empty());
    EXPECT_TRUE(find<QAction>("undo").isEnabled());
    key(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_FALSE(m_window->isVisible());
}

TEST_F(Window, WordsGoBeforeWhatIsRemembered) {
    QSettings settings;
    settings.setValue(QStringLiteral("range"), 1);
    settings.setValue(QStringLiteral("marks"), false);
    const struct {
        int range;
        bool given;
        int shown;
    } cases[] = {{0, false, 1}, {0, true, 0}, {1, true, 1}};
    for (const auto& c : cases) {
        WindowPlan plan;
        plan.source.plan.wallFactor = 8;
        plan.source.plan.range = c.range;
        plan.rangeGiven = c.given;
        open(std::move(plan));
        EXPECT_EQ(find<QComboBox>("range").currentIndex(), c.shown);
        EXPECT_FALSE(find<QAction>("marksAction").isChecked());
        EXPECT_TRUE(until([&](const Snapshot& s) { return s.range == c.shown && s.settled; }));
        m_window.reset();
    }
    settings.clear();
}

TEST_F(Window, IsLeftAsItWasFoundAgain) {
    open(false);
    find<QAction>("fullScreenAction").trigger();
    ASSERT_TRUE(m_window->isFullScreen());
    m_window->close();
    m_window.reset();
    open(false);
    ASSERT_TRUE(m_window->isFullScreen());
    EXPECT_TRUE(find<QAction>("fullScreenAction").isChecked());
    find<QAction>("fullScreenAction").trigger();
    EXPECT_FALSE(m_window->isFullScreen());
    m_window->setWindowState(Qt::WindowFullScreen); // as the desktop does
    EXPECT_TRUE(find<QAction>("fullScreenAction").isChecked());
    m_window.reset();
    QSettings().clear();
}

} // namespace
} // namespace irmcore::view::testing
