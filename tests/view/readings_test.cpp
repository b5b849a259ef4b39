// The table of readings, and the words for them.
#include "apps/view/window/readingspanel.h"
#include "apps/view/window/wording.h"
#include "synthetic.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QTableView>

namespace irmcore::view::testing {
namespace {

Value withStatus(const char* status, double celsius = 0.0) { return {{}, 0, status, celsius}; }

TEST(Wording, SaysTemperaturesAndStatuses) {
    const struct {
        Value value;
        const char* text;
        const char* status;
    } cases[] = {
        {celsius(37.24), "37.2 °C", "OK"},
        {celsius(-0.04), "0.0 °C", "OK"}, // no minus before zero
        {celsius(-0.06), "−0.1 °C", "OK"},
        {celsius(-20.0), "−20.0 °C", "OK"},
        {celsius(1000.0), "1000.0 °C", "OK"},
        {withStatus("L", -20.0), "< range", "below range"},
        {withStatus("LE", -21.0), "< range", "just below range"},
        {withStatus("HE", 151.0), "> range", "just above range"},
        {withStatus("H", 150.0), "> range", "above range"},
        {withStatus("NULL"), "no reading", "no reading"},
        {withStatus(""), "no reading", "no reading"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(shortText(c.value).toStdString(), c.text);
        EXPECT_EQ(statusInWords(c.value.status).toStdString(), c.status);
    }
    // The first that keeps a reading from being relied on.
    const struct {
        const char *hottest, *coldest, *mean, *status;
    } tools[] = {{"OK", "OK", "OK", "OK"},
                 {"OK", "L", "OK", "below range"},
                 {"OK", "OK", "LE", "just below range"},
                 {"H", "L", "OK", "above range"}};
    for (const auto& c : tools)
        EXPECT_EQ(statusInWords(ToolReading{1, ToolKind::area, withStatus(c.hottest),
                                            withStatus(c.coldest), withStatus(c.mean)}),
                  QString::fromLatin1(c.status));
}

/// A spot, an area and a line that has no reading yet.
class Readings : public ::testing::Test {
protected:
    void SetUp() override {
        m_spot = m_tools.place(ToolKind::spot, {{5, 5}, {5, 5}});
        m_area = m_tools.place(ToolKind::area, {{1, 1}, {9, 9}});
        m_line = m_tools.place(ToolKind::line, {{1, 1}, {9, 9}});
        m_snapshot.hottest = withStatus("H", 150.0);
        m_snapshot.coldest = celsius(-3.5);
        m_snapshot.readings = {
            {m_area, ToolKind::area, celsius(50.06), withStatus("L", -20.0), celsius(25.0)},
            {m_spot, ToolKind::spot, celsius(37.24), celsius(37.24), celsius(37.24)}};
    }

    Tools m_tools;
    int m_spot = 0;
    int m_area = 0;
    int m_line = 0;
    Snapshot m_snapshot = synthetic();
};

TEST_F(Readings, AreATable) {
    ReadingsModel model(m_tools);
    EXPECT_EQ(model.rowCount(), 4);
    EXPECT_EQ(model.columnCount(), 5);
    EXPECT_EQ(model.rowCount(model.index(0, 0)), 0);
    EXPECT_EQ(model.text().section(QLatin1Char('\n'), 1, 1),
              QString::fromUtf8("Frame\t–\t–\t–\t–"));
    model.show(shared(m_snapshot));
    const std::string text = "Tool\tHighest\tLowest\tMean\tStatus\n"
                             "Frame\t> range\t−3.5 °C\t–\tabove range\n"
                             "S1\t37.2 °C\t–\t–\tOK\n"
                             "A1\t50.1 °C\t< range\t25.0 °C\tbelow range\n";
    EXPECT_EQ(model.text().toStdString(), text + "L1\t–\t–\t–\t–\n");
    m_tools.remove(m_line);
    EXPECT_EQ(model.text().toStdString(), text);
    const struct { int row, id; } rows[] = {{-1, 0}, {0, 0}, {1, m_spot}, {2, m_area}, {3, 0}};
    for (const auto& c : rows)
        EXPECT_EQ(model.idOf(c.row), c.id);
    EXPECT_EQ(model.rowOf(m_area), 2);
    EXPECT_EQ(model.rowOf(m_line), -1);
    EXPECT_EQ(model.rowOf(0), -1);
    EXPECT_FALSE(model.data(model.index(7, 0), Qt::DisplayRole).isValid());
}

TEST_F(Readings, AreGreyUntilTheyAreToBeReliedOn) {
    ReadingsPanel panel(m_tools);
    auto* const hint = panel.findChild<QLabel*>(QStringLiteral("readingsHint"));
    const QAbstractItemModel* const model = panel.findChild<QTableView*>()->model();
    const struct {
        bool settled, present, grey, hint;
    } cases[] = {{true, true, false, false}, {false, true, true, true}, {false, false, true, true}};
    for (const auto& c : cases) {
        m_snapshot.settled = c.settled;
        m_snapshot.present = c.present;
        panel.show(shared(m_snapshot));
        for (int row = 0; row < 4; ++row) {
            const QModelIndex cell = model->index(row, 1);
            EXPECT_EQ(model->data(cell, Qt::ForegroundRole).isValid(), c.grey);
            EXPECT_EQ(model->data(cell, Qt::ToolTipRole)
                          .toString()
                          .startsWith(QStringLiteral("Not to be relied on")),
                      c.grey);
        }
        EXPECT_EQ(!hint->isHidden(), c.hint);
    }
}

TEST_F(Readings, ShareTheSelectionOfTheTools) {
    ReadingsPanel panel(m_tools);
    auto* const table = panel.findChild<QTableView*>();
    const auto row = [&] {
        const auto rows = table->selectionModel()->selectedRows();
        return rows.isEmpty() ? -1 : rows.front().row();
    };
    panel.show(shared(m_snapshot));
    for (const auto& [id, at] : {std::pair(m_area, 2), {m_spot, 1}, {m_line, 3}, {0, -1}}) {
        m_tools.select(id);
        EXPECT_EQ(row(), at);
    }
    for (const auto& [at, id] : {std::pair(1, m_spot), {3, m_line}, {0, 0}, {2, m_area}}) {
        table->selectRow(at);
        EXPECT_EQ(m_tools.selected(), id) << at;
    }
    panel.show(shared(synthetic())); // other readings
    EXPECT_EQ(row(), 2);
    m_tools.remove(m_spot); // the area's row is another
    EXPECT_EQ(m_tools.selected(), m_area);
    EXPECT_EQ(row(), 1);
    const int placed = m_tools.place(ToolKind::spot, {{2, 2}, {2, 2}});
    EXPECT_EQ(m_tools.selected(), placed);
    EXPECT_EQ(row(), 3);
    m_tools.history().undo();
    EXPECT_EQ(m_tools.selected(), 0);
    EXPECT_EQ(row(), -1);
    panel.show(shared(m_snapshot));
    panel.copy();
    EXPECT_EQ(QGuiApplication::clipboard()->text().section(QLatin1Char('\n'), 2, 3).toStdString(),
              "A1\t50.1 °C\t< range\t25.0 °C\tbelow range\nL1\t–\t–\t–\t–");
}

} // namespace
} // namespace irmcore::view::testing
