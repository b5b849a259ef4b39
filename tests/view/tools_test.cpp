// Tools: numbers, limits, and what can be undone.
#include "texts.h"

#include <gtest/gtest.h>

#include <string>

namespace irmcore::view::testing {
namespace {

constexpr Span spotAt(int x, int y) { return {{x, y}, {x, y}}; }

TEST(Tools, TakeTheLowestFreeNumberAndNoIdentityTwice) {
    Tools tools;
    const int first = tools.place(ToolKind::spot, spotAt(1, 1));
    const int second = tools.place(ToolKind::spot, spotAt(2, 2));
    const int third = tools.place(ToolKind::spot, spotAt(3, 3));
    EXPECT_EQ(tools.find(third)->number, 3);
    EXPECT_EQ(tools.find(tools.place(ToolKind::line, {{1, 1}, {9, 9}}))->number, 1);
    tools.remove(second);
    tools.remove(first);
    const int fourth = tools.place(ToolKind::spot, spotAt(4, 4));
    EXPECT_EQ(tools.find(fourth)->number, 1);
    EXPECT_EQ(tools.find(tools.place(ToolKind::spot, spotAt(5, 5)))->number, 2);
    tools.history().undo();
    tools.history().undo(); // the fourth has never been
    const int sixth = tools.place(ToolKind::spot, spotAt(6, 6));
    for (const int earlier : {first, second, third, fourth})
        EXPECT_NE(sixth, earlier);
    EXPECT_EQ(tools.find(fourth), nullptr);
    EXPECT_EQ(textOf(tools.all()), "S3 3,3 3,3; L1 1,1 9,9; S1 6,6 6,6");
    const std::vector<Tool> wished = tools.wished();
    ASSERT_EQ(wished.size(), 3U);
    EXPECT_EQ(wished[0], (Tool{third, ToolKind::spot, spotAt(3, 3)}));
}

TEST(Tools, AreNoMoreThanCanBeMeasured) {
    const struct {
        ToolKind kind;
        int most;
        const char* refusal;
    } cases[] = {
        {ToolKind::spot, 12,
         "There are 12 spots already, and no more can be measured. Remove one first."},
        {ToolKind::line, 8,
         "There are 8 lines already, and no more can be measured. Remove one first."},
        {ToolKind::area, 8,
         "There are 8 areas already, and no more can be measured. Remove one first."},
    };
    Tools tools;
    QString refused;
    QObject::connect(&tools, &Tools::refused, [&](const QString& why) { refused = why; });
    for (const auto& c : cases) {
        refused.clear();
        for (int i = 0; i < c.most; ++i)
            EXPECT_NE(tools.place(c.kind, {{i, i}, {i + 5, i + 5}}), 0);
        const int last = tools.selected();
        const int steps = tools.history().count();
        EXPECT_TRUE(refused.isEmpty());
        EXPECT_EQ(tools.place(c.kind, spotAt(0, 0)), 0);
        EXPECT_EQ(refused.toStdString(), c.refusal);
        EXPECT_EQ(tools.history().count(), steps);
        EXPECT_EQ(tools.selected(), last);
        tools.remove(last);
        EXPECT_NE(tools.place(c.kind, spotAt(0, 0)), 0);
    }
    EXPECT_EQ(tools.all().size(), 28U);
}

TEST(Tools, GoBackAndForthStepByStep) {
    Tools tools;
    std::vector<std::string> steps{textOf(tools.all())};
    const auto step = [&] { steps.push_back(textOf(tools.all())); };
    const int spot = tools.place(ToolKind::spot, spotAt(5, 5));
    step();
    const int area = tools.place(ToolKind::area, {{30, 10}, {20, 40}}); // corners in order
    step();
    const int line = tools.place(ToolKind::line, {{30, 10}, {20, 40}}); // ends as they were drawn
    step();
    const int first = tools.newGesture();
    for (int i = 1; i <= 4; ++i)
        tools.change(spot, spotAt(5 + i, 5), first);
    step();
    const int second = tools.newGesture(); // of the same tool, but another
    tools.change(spot, spotAt(9, 6), second);
    tools.change(spot, spotAt(9, 8), second);
    step();
    tools.change(area, {{50, 40}, {20, 10}}, tools.newGesture());
    step();
    tools.remove(line);
    step();
    tools.clear();
    step();
    EXPECT_EQ(steps, (std::vector<std::string>{
                         "",
                         "S1 5,5 5,5",
                         "S1 5,5 5,5; A1 20,10 30,40",
                         "S1 5,5 5,5; A1 20,10 30,40; L1 30,10 20,40",
                         "S1 9,5 9,5; A1 20,10 30,40; L1 30,10 20,40",
                         "S1 9,8 9,8; A1 20,10 30,40; L1 30,10 20,40",
                         "S1 9,8 9,8; A1 20,10 50,40; L1 30,10 20,40",
                         "S1 9,8 9,8; A1 20,10 50,40",
                         "",
                     }));
    ASSERT_EQ(tools.history().count(), 8);
    for (int at = 7; at >= 0; --at) {
        tools.history().undo();
        EXPECT_EQ(textOf(tools.all()), steps[static_cast<std::size_t>(at)]);
    }
    EXPECT_FALSE(tools.history().canUndo());
    for (int at = 1; at <= 8; ++at) {
        tools.history().redo();
        EXPECT_EQ(textOf(tools.all()), steps[static_cast<std::size_t>(at)]);
    }
    EXPECT_FALSE(tools.history().canRedo());
    EXPECT_EQ(tools.history().undoText(), QStringLiteral("clear tools"));
}

TEST(Tools, WhatChangesNothingIsNothingToUndo) {
    Tools tools;
    int told = 0;
    QObject::connect(&tools, &Tools::changed, [&] { ++told; });
    tools.clear();
    tools.remove(1);
    tools.change(1, spotAt(1, 1), tools.newGesture());
    EXPECT_EQ(tools.history().count(), 0);
    EXPECT_EQ(told, 0);
    const int spot = tools.place(ToolKind::spot, spotAt(5, 5));
    const int gesture = tools.newGesture();
    tools.change(spot, spotAt(5, 5), gesture);
    EXPECT_EQ(tools.history().count(), 1);
    tools.change(spot, spotAt(7, 5), gesture);
    tools.change(spot, spotAt(5, 5), gesture); // back where it was
    EXPECT_EQ(tools.history().count(), 1);
    EXPECT_EQ(tools.history().undoText(), QStringLiteral("place S1"));
    tools.change(spot, spotAt(8, 5), gesture); // and on with the same
    EXPECT_EQ(tools.history().undoText(), QStringLiteral("move S1"));
    tools.history().undo();
    EXPECT_EQ(textOf(tools.all()), "S1 5,5 5,5");
    EXPECT_EQ(told, 5);
}

TEST(Tools, SelectOnlyWhatIsThere) {
    Tools tools;
    std::vector<int> told;
    QObject::connect(&tools, &Tools::selectionChanged, [&](int id) { told.push_back(id); });
    const int spot = tools.place(ToolKind::spot, spotAt(5, 5));
    const int area = tools.place(ToolKind::area, {{1, 1}, {2, 2}});
    tools.select(spot);
    tools.change(area, {{1, 1}, {4, 4}}, tools.newGesture());
    EXPECT_EQ(tools.selected(), spot);
    tools.history().undo();
    EXPECT_EQ(tools.selected(), spot);
    tools.history().undo();
    tools.history().undo(); // now it is gone
    EXPECT_EQ(tools.selected(), 0);
    tools.history().redo();
    EXPECT_EQ(tools.selected(), 0);
    tools.select(spot);
    tools.select(999);
    EXPECT_EQ(tools.selected(), 0);
    EXPECT_EQ(told, (std::vector<int>{spot, area, spot, 0, spot, 0}));
}

TEST(Tools, ComeBackFromAnEarlierTime) {
    Tools tools;
    const int before = tools.place(ToolKind::spot, spotAt(1, 1));
    std::vector<PlacedTool> kept{{{before, ToolKind::area, {{30, 10}, {20, 40}}}, 7}};
    for (int i = 1; i <= 14; ++i)
        kept.push_back({{before, ToolKind::spot, spotAt(i, 0)}, 20 - i});
    tools.restore(kept);
    ASSERT_EQ(tools.all().size(), 13U); // an area and twelve spots
    EXPECT_EQ(textOf(tools.all()).substr(0, 32), "A7 20,10 30,40; S19 1,0 1,0; S18");
    EXPECT_FALSE(tools.history().canUndo());
    EXPECT_EQ(tools.selected(), 0);
    for (std::size_t i = 0; i < 13; ++i)
        for (std::size_t j = 0; j < i; ++j)
            EXPECT_NE(tools.all()[i].tool.id, tools.all()[j].tool.id);
    EXPECT_EQ(tools.find(before), nullptr);
}

} // namespace
} // namespace irmcore::view::testing
