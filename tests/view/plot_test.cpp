// Readings over time.
#include "apps/view/window/plotpanel.h"
#include "synthetic.h"

#include <gtest/gtest.h>

#include <QPushButton>

namespace irmcore::view::testing {
namespace {

Snapshot at(double seconds, std::vector<ToolReading> readings = {}) {
    Snapshot result = synthetic(4, 4, seconds);
    result.readings = std::move(readings);
    return result;
}

ToolReading spot(int id, double degrees, const char* status = "OK") {
    return {id, ToolKind::spot, {{}, 0, status, degrees}, {}, {}};
}

TEST(History, TakesWhatIsToBeReliedOnFourTimesASecond) {
    History history;
    const struct {
        double seconds;
        bool Snapshot::*flag; ///< is turned over
        bool taken;
    } cases[] = {
        {100.0, &Snapshot::present, false},
        {100.0, &Snapshot::settled, false},
        {100.0, &Snapshot::calibrating, false},
        {100.0, &Snapshot::frozen, false},
        {100.0, nullptr, true},
        {100.1, nullptr, false},
        {100.23, nullptr, false},
        {100.245, nullptr, true}, // a little early
        {100.45, nullptr, false},
        {100.5, nullptr, true},
        {103.0, &Snapshot::calibrating, false},
        {103.0, nullptr, true},
    };
    for (const auto& c : cases) {
        Snapshot snapshot = at(c.seconds, {spot(1, 20.0)});
        if (c.flag != nullptr)
            snapshot.*c.flag = !(snapshot.*c.flag);
        EXPECT_EQ(history.add(snapshot), c.taken) << c.seconds;
    }
    EXPECT_NEAR(history.length(), 3.0, 1e-6);
    EXPECT_EQ(history.curve(1).size(), 4);
    EXPECT_NEAR(history.curve(1)[1].x(), -2.755, 1e-6);
}

TEST(History, KeepsFiveMinutesOfEachTool) {
    History history;
    EXPECT_EQ(history.length(), 0.0);
    EXPECT_TRUE(history.curve(1).isEmpty());
    for (int second = 0; second <= 400; ++second)
        history.add(at(second, {spot(1, second), spot(2, 10.0, second % 2 == 0 ? "OK" : "H")}));
    EXPECT_EQ(history.length(), 300.0);
    const QVector<QPointF> all = history.curve(1);
    ASSERT_EQ(all.size(), 301);
    EXPECT_EQ(all.front(), QPointF(-300.0, 100.0));
    EXPECT_EQ(all.back(), QPointF(0.0, 400.0));
    EXPECT_EQ(history.curve(2).size(), 151); // those that are OK
    EXPECT_TRUE(history.curve(3).isEmpty());
    history.clear();
    EXPECT_TRUE(history.empty());
    EXPECT_TRUE(history.curve(1).isEmpty());
}

TEST(History, IsATableOfSecondsAndTemperatures) {
    const std::vector<PlacedTool> tools{
        {{1, ToolKind::spot, {}}, 1}, {{5, ToolKind::area, {}}, 2}, {{7, ToolKind::line, {}}, 3}};
    History history;
    EXPECT_EQ(history.csv({}), "seconds\n");
    history.add(at(50.0, {spot(1, 20.5), spot(9, 99.0)})); // 9 has been removed since
    history.add(at(51.0, {spot(5, -3.254), spot(1, 20.506)}));
    history.add(at(52.5, {spot(5, 150.0, "H"), spot(1, 21.0)}));
    EXPECT_EQ(history.csv(tools).toStdString(),
              "seconds,S1_highest_celsius,A2_highest_celsius,L3_highest_celsius\n"
              "0.00,20.50,,\n"
              "1.00,20.51,-3.25,\n"
              "2.50,21.00,,\n");
}

class Plot : public ::testing::Test {
protected:
    QChart& chart() { return *m_panel.findChild<QChartView*>()->chart(); }
    QValueAxis& axis(Qt::Orientation orientation) {
        return *qobject_cast<QValueAxis*>(chart().axes(orientation).constFirst());
    }
    bool enabled(const char* name) {
        return m_panel.findChild<QPushButton*>(QLatin1String(name))->isEnabled();
    }

    Tools m_tools;
    PlotPanel m_panel{m_tools};
};

TEST_F(Plot, HasACurveForEachTool) {
    m_panel.setVisible(true);
    EXPECT_FALSE(enabled("savePlot"));
    m_panel.show(at(0.0));
    EXPECT_FALSE(enabled("savePlot")); // of no tool
    const int first = m_tools.place(ToolKind::spot, {});
    const int second = m_tools.place(ToolKind::area, {{1, 1}, {3, 3}});
    for (int i = 1; i <= 31; ++i)
        m_panel.show(at(i, {spot(first, 20.0 + i), spot(second, 25.0)}));
    ASSERT_EQ(chart().series().size(), 2);
    EXPECT_EQ(chart().series()[0]->name(), QStringLiteral("S1"));
    EXPECT_EQ(chart().series()[1]->name(), QStringLiteral("A1"));
    EXPECT_EQ(qobject_cast<QLineSeries*>(chart().series()[0])->count(), 31);
    EXPECT_TRUE(enabled("savePlot"));
    EXPECT_EQ(axis(Qt::Horizontal).min(), -60.0); // 31 s do not fit into 30
    EXPECT_EQ(axis(Qt::Horizontal).max(), 0.0);
    m_tools.remove(first);
    ASSERT_EQ(chart().series().size(), 1);
    EXPECT_EQ(chart().series()[0]->name(), QStringLiteral("A1"));
    m_tools.history().undo(); // with its past
    EXPECT_EQ(chart().series().size(), 2);
    EXPECT_EQ(qobject_cast<QLineSeries*>(chart().series().back())->count(), 31);
    m_panel.findChild<QPushButton*>(QStringLiteral("clearPlot"))->click();
    EXPECT_TRUE(m_panel.history().empty());
    EXPECT_FALSE(enabled("savePlot"));
    EXPECT_EQ(qobject_cast<QLineSeries*>(chart().series().back())->count(), 0);
    EXPECT_EQ(axis(Qt::Horizontal).min(), -30.0);
}

TEST_F(Plot, HasRoundLimitsAndFewTicks) {
    const struct {
        double low, high, bottom, top;
        int ticks;
    } cases[] = {
        {20.0, 30.0, 15.0, 35.0, 5},      // 19 to 31 by fives
        {25.0, 25.0, 24.5, 25.5, 3},      // half a degree around, by halves
        {-20.0, 400.0, -200.0, 600.0, 5}, // -62 to 442 by two hundreds
        {-0.1, 0.1, -0.5, 0.5, 3},        {36.6, 37.4, 36.5, 37.5, 3}, // 36.5 to 37.5
    };
    m_panel.setVisible(true);
    const int id = m_tools.place(ToolKind::spot, {});
    for (const auto& c : cases) {
        m_panel.clear();
        m_panel.show(at(0.0, {spot(id, c.low)}));
        m_panel.show(at(1.0, {spot(id, c.high)}));
        m_panel.show(at(2.0, {spot(id, 1000.0, "H")}));
        const QValueAxis& shown = axis(Qt::Vertical);
        EXPECT_NEAR(shown.min(), c.bottom, 1e-9) << c.low;
        EXPECT_NEAR(shown.max(), c.top, 1e-9) << c.low;
        EXPECT_EQ(shown.tickCount(), c.ticks) << c.low;
    }
}

} // namespace
} // namespace irmcore::view::testing
