// Where pixels lie on a surface, and what a pointer has hold of there.
#include "apps/view/window/grip.h"
#include "texts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace irmcore::view::testing {
namespace {

/// "3 lt": the tool and the sides that go along; "3" the whole of it, "" nothing.
std::string gripText(const std::optional<Grip>& grip) {
    if (!grip)
        return {};
    std::string result = std::to_string(grip->id);
    if (grip->whole())
        return result;
    result += ' ';
    result += grip->fromX ? "l" : "";
    result += grip->fromY ? "t" : "";
    result += grip->toX ? "r" : "";
    result += grip->toY ? "b" : "";
    return result;
}

TEST(Placement, FitsTheFrameIntoTheMiddle) {
    const struct {
        QRectF room;
        QSize frame;
        QRectF area;
        double scale;
    } cases[] = {
        {{0, 0, 640, 480}, {160, 120}, {0, 0, 640, 480}, 4.0},
        {{10, 20, 1000, 240}, {160, 120}, {350, 20, 320, 240}, 2.0}, // bars left and right
        {{0, 0, 320, 1000}, {160, 120}, {0, 380, 320, 240}, 2.0},    // above and below
        {{0, 0, 100, 100}, {160, 120}, {0, 12.5, 100, 75}, 0.625},   // smaller than the frame
        {{5, 5, 384, 288}, {384, 288}, {5, 5, 384, 288}, 1.0},
    };
    for (const auto& c : cases) {
        const Placement placement(c.room, c.frame);
        EXPECT_FALSE(placement.empty());
        EXPECT_EQ(placement.area(), c.area) << c.area.x() << " " << c.area.y();
        EXPECT_EQ(placement.scale(), c.scale);
        EXPECT_EQ(placement.frame(), c.frame);
    }
    for (const Placement& none :
         {Placement(), Placement({0, 0, 0, 50}, {160, 120}), Placement({0, 0, 50, -1}, {160, 120}),
          Placement({0, 0, 50, 50}, {0, 120})}) {
        EXPECT_TRUE(none.empty());
        EXPECT_FALSE(none.pixelAt({0, 0}));
        EXPECT_EQ(none.nearest({30, 30}).x, 0);
        EXPECT_FALSE(gripAt({0, 0}, {{1, ToolKind::spot, {}}}, 0, none));
    }
}

TEST(Placement, GoesToTheSurfaceAndBack) {
    const Placement placement({10, 20, 1000, 240}, {160, 120}); // at 350, 20; two units a pixel
    EXPECT_EQ(placement.centreOf({0, 0}), QPointF(351, 21));
    EXPECT_EQ(placement.centreOf({159, 119}), QPointF(669, 259));
    EXPECT_EQ(placement.rectOf({{10, 5}, {3, 9}}), QRectF(QPointF(356, 30), QPointF(372, 40)));
    const double far = std::numeric_limits<double>::infinity();
    const struct {
        QPointF point;
        bool inside;
        Pixel nearest;
    } cases[] = {
        {{350, 20}, true, {0, 0}},          {{351.9, 21.9}, true, {0, 0}},
        {{352, 21.9}, true, {1, 0}},        {{351.9, 22}, true, {0, 1}},
        {{669.9, 259.9}, true, {159, 119}}, {{670, 260}, true, {159, 119}}, // the very edge
        {{349.9, 100}, false, {0, 40}},     {{670.1, 100}, false, {159, 40}},
        {{500, 19.9}, false, {75, 0}},      {{500, 260.1}, false, {75, 119}},
        {{-far, far}, false, {0, 119}},     {{1e300, -1e300}, false, {159, 0}},
    };
    for (const auto& c : cases) {
        const auto pixel = placement.pixelAt(c.point);
        const Pixel nearest = placement.nearest(c.point);
        const std::string where = std::to_string(c.point.x()) + "," + std::to_string(c.point.y());
        EXPECT_EQ(pixel.has_value(), c.inside) << where;
        EXPECT_EQ(textOf(Span{nearest, pixel.value_or(nearest)}),
                  textOf(Span{c.nearest, c.nearest}))
            << where;
    }
    for (int x = 0; x < 160; ++x) // both ways are one
        EXPECT_EQ(placement.pixelAt(placement.centreOf({x, x * 3 / 4}))->x, x);
}

// A surface of two units a pixel: the spot at 41, 41; the line from 81, 41 to 241, 41; the area
// from 80, 100 to 240, 200; the small one from 300, 20 to 306, 26.
const std::vector<Tool> bench{{1, ToolKind::spot, {{20, 20}, {20, 20}}},
                              {2, ToolKind::line, {{40, 20}, {120, 20}}},
                              {3, ToolKind::area, {{40, 50}, {119, 99}}},
                              {4, ToolKind::area, {{150, 10}, {152, 12}}}};
const Placement twice({0, 0, 320, 240}, {160, 120});

TEST(Grip, TakesEndsCornersSidesAndBodies) {
    const struct {
        QPointF point;
        const char* grip;
    } cases[] = {
        {{41, 41}, "1"},     {{51, 41}, "1"},      {{41, 31}, "1"},     {{52, 41}, ""},
        {{81, 41}, "2 lt"},  {{81, 49}, "2 lt"},   {{241, 46}, "2 rb"}, {{248, 41}, "2 rb"},
        {{160, 49}, "2"},    {{160, 33}, "2"},     {{160, 50}, ""},     {{250, 41}, ""},
        {{80, 100}, "3 lt"}, {{240, 100}, "3 tr"}, {{80, 200}, "3 lb"}, {{240, 200}, "3 rb"},
        {{160, 100}, "3 t"}, {{160, 207}, "3 b"},  {{73, 150}, "3 l"},  {{247, 150}, "3 r"},
        {{160, 150}, "3"},   {{90, 110}, "3"},     {{71, 150}, ""},     {{160, 209}, ""},
        {{303, 23}, "4"},    {{301, 21}, "4 lt"},  {{305, 25}, "4 rb"}, {{303, 30}, "4 b"},
        {{-100, -100}, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(gripText(gripAt(c.point, bench, 0, twice)), c.grip)
            << c.point.x() << " " << c.point.y();
}

TEST(Grip, ChoosesAmongSeveral) {
    const Span inside{{80, 75}, {80, 75}}; // its centre is 161, 151
    const Tool area = bench[2];
    const Tool below{targetId, ToolKind::area, {{60, 60}, {100, 90}}};
    const struct {
        std::vector<Tool> tools;
        int selected;
        const char* grip;
    } cases[] = {
        {{{7, ToolKind::spot, inside}, area}, 0, "7"}, // an area hides nothing in it
        {{area, {7, ToolKind::spot, inside}}, 0, "7"},
        {{area, {7, ToolKind::spot, inside}}, 3, "3"}, // unless it is selected
        {{{7, ToolKind::spot, inside}, {8, ToolKind::spot, inside}}, 0, "8"}, // the later one
        {{{7, ToolKind::spot, inside}, {8, ToolKind::spot, inside}}, 7, "7"},
        {{{7, ToolKind::spot, inside}, {8, ToolKind::spot, inside}}, 99, "8"},
        {{below, area}, 0, "3"}, // tools lie before the target
        {{below}, 0, "-1"},
        {{}, 0, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(gripText(gripAt({161, 151}, c.tools, c.selected, twice)), c.grip);
}

TEST(Grip, PullsWithinTheFrame) {
    const Grip whole{1};
    const Grip from{1, true, true, false, false};
    const Grip to{1, false, false, true, true};
    const Grip right{1, false, false, true, false};
    const struct {
        Span place;
        Grip grip;
        int dx, dy;
        const char* result;
    } cases[] = {
        {{{10, 10}, {20, 30}}, whole, 3, -4, "13,6 23,26"},
        {{{10, 10}, {20, 30}}, whole, -50, 200, "0,99 10,119"}, // keeps its size
        {{{50, 60}, {40, 20}}, whole, 200, 0, "159,60 149,20"},
        {{{50, 60}, {40, 20}}, whole, -200, -200, "10,40 0,0"},
        {{{159, 119}, {159, 119}}, whole, 1, 1, "159,119 159,119"},
        {{{10, 10}, {20, 30}}, to, 1000, -1000, "10,10 159,0"},
        {{{10, 10}, {20, 30}}, from, 15, 5, "25,15 20,30"}, // beyond the opposite corner
        {{{10, 10}, {20, 30}}, right, 7, 9, "10,10 27,30"},
        {{{10, 10}, {20, 30}}, from, -11, -9, "0,1 20,30"},
        // From a larger frame: as much of it as there is room for.
        {{{0, 0}, {300, 200}}, whole, 5, 5, "0,0 159,119"},
        {{{300, 200}, {300, 200}}, whole, 0, 0, "159,119 159,119"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(textOf(pulled(c.place, c.grip, c.dx, c.dy, {160, 120})), c.result);
}

TEST(Grip, SaysWhatItDoes) {
    const Span falling{{0, 0}, {10, 10}};
    const Span rising{{0, 10}, {10, 0}};
    const struct {
        Grip grip;
        Span place;
        Qt::CursorShape shape;
    } cases[] = {
        {{1, true, true, true, true}, falling, Qt::SizeAllCursor},
        {{1, true, false, false, false}, falling, Qt::SizeHorCursor},
        {{1, false, false, true, false}, falling, Qt::SizeHorCursor},
        {{1, false, true, false, false}, falling, Qt::SizeVerCursor},
        {{1, true, true, false, false}, falling, Qt::SizeFDiagCursor},
        {{1, false, false, true, true}, falling, Qt::SizeFDiagCursor},
        {{1, true, false, false, true}, falling, Qt::SizeBDiagCursor},
        {{1, false, true, true, false}, falling, Qt::SizeBDiagCursor},
        {{1, true, true, false, false}, rising, Qt::SizeBDiagCursor},
    };
    for (const auto& c : cases)
        EXPECT_EQ(cursorOf(c.grip, c.place), c.shape) << gripText(std::optional(c.grip));
    EXPECT_EQ(textOf(placeOf({{192, 144}, 40, 40, 80.0})), "172,124 211,163");
    EXPECT_EQ(textOf(placeOf({{10, 10}, 5, 3, 80.0})), "8,9 12,11");
}

} // namespace
} // namespace irmcore::view::testing
