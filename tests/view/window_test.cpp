// The window as a person uses it, on a screen that nobody sees.
#include "windowfixture.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QSettings>
#include <QTableView>

namespace irmcore::view::testing {

TEST_F(Window, PlacesMovesAndUndoes) {
    open();
    const int spot = place(MouseMode::spot, warm, warm);
    EXPECT_TRUE(reads(spot, 37.0));
    const int area = place(MouseMode::area, {232, 64}, {248, 80});
    EXPECT_TRUE(reads(area, 37.0));
    const int line = place(MouseMode::line, {48, 72}, {240, 72});
    EXPECT_TRUE(until([&](const Snapshot& s) {
        return s.readings.size() == 3 && s.readings[2].id == line &&
               std::abs(s.readings[2].coldest.celsius + 10.0) < 0.3;
    }));
    EXPECT_GE(find<QTableView>("readings").model()->rowCount(), 3);

    picture().setMode(MouseMode::select);
    m_window->tools().remove(line);
    m_window->tools().remove(area);
    drag(warm, cold);
    EXPECT_TRUE(reads(spot, -10.0));
    m_window->tools().history().undo();
    EXPECT_TRUE(reads(spot, 37.0));
    m_window->tools().history().redo();
    EXPECT_TRUE(reads(spot, -10.0));
    m_window->tools().select(spot);
    picture().setFocus();
    for (int i = 0; i < 3; ++i)
        QTest::keyClick(&picture(), Qt::Key_Right);
    const auto column = [&] { return m_window->tools().find(spot)->tool.place.from.x; };
    EXPECT_EQ(column(), cold.x + 3);
    m_window->tools().history().undo(); // the three are one
    EXPECT_EQ(column(), cold.x);
    QTest::keyClick(&picture(), Qt::Key_Delete);
    EXPECT_TRUE(m_window->tools().all().empty());
    for (int i = 0; i < 20; ++i) // the frame holds no more than twelve
        place(MouseMode::spot, {10 * i + 5, 200}, {10 * i + 5, 200});
    EXPECT_EQ(m_window->tools().all().size(), 12U);
}

TEST_F(Window, ChangesWhatIsMeasured) {
    open();
    const int spot = place(MouseMode::spot, warm, warm);
    ASSERT_TRUE(reads(spot, 37.0));
    find<QDoubleSpinBox>("offset").setValue(5.0);
    EXPECT_TRUE(reads(spot, 42.0));
    find<QDoubleSpinBox>("offset").setValue(0.0);
    find<QDoubleSpinBox>("emissivity").setValue(0.5);
    EXPECT_TRUE(reads(spot, 47.0, 2.0)); // looks hotter than it is
    find<QDoubleSpinBox>("emissivity").setValue(0.95);
    find<QComboBox>("range").setCurrentIndex(1);
    EXPECT_TRUE(until([](const Snapshot& s) { return s.range == 1 && s.settled; }));
    EXPECT_TRUE(reads(spot, 37.0, 0.5));
    find<QAbstractButton>("freeze").click();
    EXPECT_TRUE(until([](const Snapshot& s) { return s.frozen; }));
    find<QAbstractButton>("freeze").click();
    EXPECT_TRUE(until([](const Snapshot& s) { return !s.frozen; }));
}

TEST_F(Window, LosesTheCameraAndFindsIt) {
    open();
    const int spot = place(MouseMode::spot, warm, warm);
    ASSERT_TRUE(reads(spot, 37.0));
    const auto& status = find<QLabel>("trouble");
    EXPECT_FALSE(status.text().contains(QLatin1String("went away")));
    find<QAbstractButton>("unplug").click();
    ASSERT_TRUE(until([](const Snapshot& s) { return !s.present; }));
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return status.text().contains(QLatin1String("went away")); }, 5000));
    m_window->tools().change(spot, {cold, cold}, m_window->tools().newGesture());
    find<QAbstractButton>("unplug").click();
    ASSERT_TRUE(until([](const Snapshot& s) { return s.present && s.settled; }));
    EXPECT_TRUE(reads(spot, -10.0)); // what was wished meanwhile
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return !status.text().contains(QLatin1String("went away")); }, 5000));
}

TEST_F(Window, AnswersWhileTheCoreIsSilent) {
    open();
    find<QAbstractButton>("coreSilent").click();
    ASSERT_TRUE(until([](const Snapshot& s) { return s.core == CoreState::silent; }));
    find<QAbstractButton>("calibrate").click();
    const int spot = place(MouseMode::spot, warm, warm);
    EXPECT_TRUE(reads(spot, 37.0));
    EXPECT_EQ(m_window->snapshot()->core, CoreState::silent);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return find<QLabel>("trouble").text().contains(QLatin1String("does not answer")); },
        5000));
}

TEST_F(Window, RemembersButNotNonsense) {
    open(false);
    place(MouseMode::area, {232, 64}, {248, 80});
    find<QDoubleSpinBox>("emissivity").setValue(0.8);
    find<QComboBox>("palette").setCurrentIndex(COLOR_GREY);
    m_window->close();
    m_window.reset();
    open(false);
    ASSERT_EQ(m_window->tools().all().size(), 1U);
    const Span placed = m_window->tools().all()[0].tool.place;
    EXPECT_EQ(placed.to.x, 248);
    EXPECT_EQ(find<QDoubleSpinBox>("emissivity").value(), 0.8);
    EXPECT_EQ(find<QComboBox>("palette").currentIndex(), COLOR_GREY);
    m_window->close();
    m_window.reset();
    QSettings settings;
    const QStringList keys = settings.allKeys();
    EXPECT_GT(keys.size(), 10);
    for (const QString& key : keys)
        settings.setValue(key, QStringLiteral("nan -1e99 \x01"));
    settings.sync();
    open(false);
    EXPECT_TRUE(m_window->tools().all().empty());
    EXPECT_EQ(find<QDoubleSpinBox>("emissivity").value(), 0.95);
    m_window->close();
}

} // namespace irmcore::view::testing
