// What tools read in the frame, and the frame's colours.
#include "view/looker.h"

#include "support/host.h"

#include <algorithm>
#include <array>

namespace {

using namespace irmtest;

/// 10 °C in the first column to 50 in the last of 160: column x has 10 + 40 x / 159.
Source ramp() {
    Source source = smallCamera(20);
    source.plan.scene.kind = irmsim::ScenePlan::Kind::gradient;
    source.plan.scene.from = 10.0;
    source.plan.scene.to = 50.0;
    return source;
}

TEST(Reading, LinesAndAreasReadWhatLiesInThem) {
    constexpr double close = 0.15;
    const struct {
        ToolKind kind;
        Span place;
        double hottest; // °C; nothing inside the frame: all are 0
        Pixel hottestAt;
        double coldest;
        Pixel coldestAt;
        double mean;
    } cases[] = {
        {ToolKind::line, {{0, 60}, {159, 60}}, 50.0, {159, 60}, 10.0, {0, 60}, 30.0},
        {ToolKind::line, {{159, 60}, {0, 60}}, 50.0, {159, 60}, 10.0, {0, 60}, 30.0},
        {ToolKind::line, {{53, 10}, {53, 90}}, 23.333, {53, -1}, 23.333, {53, -1}, 23.333},
        {ToolKind::line, {{0, 0}, {119, 119}}, 39.937, {119, 119}, 10.0, {0, 0}, 24.969},
        {ToolKind::line, {{119, 0}, {0, 119}}, 39.937, {119, 0}, 10.0, {0, 119}, 24.969},
        {ToolKind::line, {{80, 40}, {80, 40}}, 30.126, {80, 40}, 30.126, {80, 40}, 30.126},
        {ToolKind::line, {{150, 5}, {200, 5}}, 50.0, {159, 5}, 47.736, {150, 5}, 48.868},
        {ToolKind::line, {{-20, 5}, {10, 5}}, 12.516, {10, 5}, 10.0, {0, 5}, 11.258},
        {ToolKind::line, {{200, 5}, {170, 5}}, 0, {}, 0, {}, 0},
        {ToolKind::area, {{40, 20}, {60, 50}}, 25.094, {60, -1}, 20.063, {40, -1}, 22.579},
        {ToolKind::area, {{60, 50}, {40, 20}}, 25.094, {60, -1}, 20.063, {40, -1}, 22.579},
        {ToolKind::area, {{40, 50}, {60, 20}}, 25.094, {60, -1}, 20.063, {40, -1}, 22.579},
        {ToolKind::area, {{60, 20}, {40, 50}}, 25.094, {60, -1}, 20.063, {40, -1}, 22.579},
        {ToolKind::area, {{0, 0}, {159, 119}}, 50.0, {159, -1}, 10.0, {0, -1}, 30.7},
        {ToolKind::area, {{7, 9}, {7, 9}}, 11.761, {7, 9}, 11.761, {7, 9}, 11.761},
        {ToolKind::area, {{150, 100}, {180, 140}}, 50.0, {159, -1}, 47.736, {150, -1}, 48.868},
        {ToolKind::area, {{180, 140}, {160, 120}}, 0, {}, 0, {}, 0},
        {ToolKind::spot, {{80, 40}, {80, 40}}, 30.126, {80, 40}, 30.126, {80, 40}, 30.126},
        {ToolKind::spot, {{159, 119}, {159, 119}}, 50.0, {159, 119}, 50.0, {159, 119}, 50.0},
        {ToolKind::spot, {{160, 0}, {160, 0}}, 0, {}, 0, {}, 0},
        {ToolKind::spot, {{0, -1}, {0, -1}}, 0, {}, 0, {}, 0},
    };
    Wishes wishes;
    for (const auto& c : cases)
        wishes.tools.push_back({static_cast<int>(wishes.tools.size()), c.kind, c.place});
    Looker looker(ramp(), wishes);
    const auto live = looker.settle();
    ASSERT_NE(live, nullptr);
    const auto held = looker.closed();
    ASSERT_TRUE(held->calibrating);
    const auto meets = [](Pixel at, Pixel wanted) {
        return at.x == wanted.x && (wanted.y < 0 || at.y == wanted.y);
    };
    for (const Snapshot* s : {live.get(), held.get()}) {
        ASSERT_EQ(s->readings.size(), std::size(cases));
        for (std::size_t i = 0; i < std::size(cases); ++i) {
            const auto& c = cases[i];
            const ToolReading& r = s->readings[i];
            const std::string name = joined(i, s->calibrating ? "held" : "live");
            EXPECT_EQ(r.id, static_cast<int>(i));
            const char* status = c.mean == 0.0 ? "NULL" : "OK";
            EXPECT_EQ(r.hottest.status, status) << name;
            EXPECT_EQ(r.coldest.status, status) << name;
            EXPECT_EQ(r.mean.status, status) << name;
            if (c.mean == 0.0)
                continue;
            EXPECT_NEAR(r.hottest.celsius, c.hottest, close) << name;
            EXPECT_NEAR(r.coldest.celsius, c.coldest, close) << name;
            EXPECT_NEAR(r.mean.celsius, c.mean, close) << name;
            EXPECT_TRUE(meets(r.hottest.at, c.hottestAt)) << name << ' ' << r.hottest.at.x;
            EXPECT_TRUE(meets(r.coldest.at, c.coldestAt)) << name << ' ' << r.coldest.at.x;
        }
    }
}

TEST(Reading, ManyToolsHaveTheirOwnReadings) {
    // More than the FPGA has places for.
    Wishes wishes;
    for (int i = 0; i < 40; ++i) {
        wishes.tools.push_back(spotAt(100 + i, 4 * i, 3 * i));
        wishes.tools.push_back(areaOf(200 + i, {4 * i, 0}, {4 * i + 2, 119}));
    }
    Looker looker(ramp(), wishes);
    const auto s = looker.settle();
    ASSERT_NE(s, nullptr);
    ASSERT_EQ(s->readings.size(), 80U);
    for (int i = 0; i < 40; ++i) {
        const ToolReading& spot = s->readings[static_cast<std::size_t>(2 * i)];
        const ToolReading& area = s->readings[static_cast<std::size_t>(2 * i + 1)];
        EXPECT_EQ(spot.id, 100 + i);
        EXPECT_EQ(area.id, 200 + i);
        const double left = 10.0 + 160.0 * i / 159.0;
        EXPECT_NEAR(spot.hottest.celsius, left, 0.15) << i;
        EXPECT_NEAR(area.coldest.celsius, left, 0.15) << i;
        EXPECT_NEAR(area.hottest.celsius, left + 80.0 / 159.0, 0.15) << i;
    }
}

TEST(Reading, StatusesOfBothRanges) {
    const struct {
        int range;
        double truth;
        const char* status;
        double celsius;
    } cases[] = {
        {0, -40.0, "L", -20.0},   {0, -21.0, "LE", -21.0}, {0, -19.0, "OK", -19.0},
        {0, 149.0, "OK", 149.0},  {0, 151.0, "HE", 151.0}, {0, 165.0, "H", 150.0},
        {1, -19.0, "L", -4001.0}, {1, -10.0, "L", 0.0},    {1, -1.0, "LE", -1.0},
        {1, 149.0, "OK", 149.0},  {1, 165.0, "OK", 165.0}, {1, 375.0, "OK", 375.0},
    };
    std::vector<Mark> marks;
    Wishes wishes;
    for (const double truth : {-40.0, -21.0, -19.0, -10.0, -1.0, 149.0, 151.0, 165.0, 375.0}) {
        const int x = 10 + 16 * static_cast<int>(marks.size());
        marks.push_back({x, 50, truth});
        wishes.tools.push_back(spotAt(static_cast<int>(marks.size()), x, 50));
        wishes.tools.push_back(areaOf(static_cast<int>(marks.size()), {x, 50}, {x, 50}));
        wishes.tools.push_back(lineFrom(static_cast<int>(marks.size()), {x, 50}, {x, 50}));
    }
    // A tool has the worst of its pixels in its extremes, and says so of its mean.
    wishes.tools.push_back(lineFrom(99, {0, 50}, {11, 50}));
    Source source = smallCamera(8);
    source.plan.scene = marked(marks);
    Looker looker(source, wishes);
    for (const int range : {0, 1}) {
        wishes.range = range;
        looker.session().wish(wishes);
        const auto s = looker.until(
            [&](const Snapshot& now) { return now.range == range && Looker::atRest(now); });
        ASSERT_NE(s, nullptr);
        for (const auto& c : cases) {
            const auto mark = std::find_if(marks.begin(), marks.end(),
                                           [&](const Mark& m) { return m.celsius == c.truth; });
            if (c.range != range)
                continue;
            const auto tool = static_cast<std::size_t>(3 * (mark - marks.begin()));
            for (std::size_t i = tool; i < tool + 3; ++i)
                for (const Value* v :
                     {&s->readings[i].hottest, &s->readings[i].coldest, &s->readings[i].mean}) {
                    EXPECT_EQ(v->status, c.status) << range << ": " << c.truth << ' ' << i - tool;
                    EXPECT_NEAR(v->celsius, c.celsius, 0.5) << range << ": " << c.truth;
                }
        }
        const ToolReading& across = s->readings.back();
        EXPECT_EQ(across.hottest.status, "OK");
        EXPECT_NEAR(across.hottest.celsius, 22.0, 0.3);
        EXPECT_EQ(across.coldest.status, "L");
        EXPECT_EQ(across.mean.status, "L");
    }
}

int channel(std::uint32_t pixel, unsigned shift) {
    return static_cast<int>(pixel >> shift & 0xFFU);
}

TEST(Colours, ThePictureIsThePaletteAlongTheWindow) {
    Wishes wishes;
    wishes.look.window = LEVELSPAN_HAND;
    wishes.look.low = 20.0;
    wishes.look.high = 40.0;
    for (const bool inverted : {false, true}) {
        wishes.look.palette = inverted ? COLOR_GREY_INVERTED : COLOR_GREY;
        Looker looker(ramp(), wishes);
        ASSERT_NE(looker.settle(), nullptr);
        const auto s = looker.look();
        EXPECT_NEAR(s->barLow.celsius, 20.0, 0.3);
        EXPECT_NEAR(s->barHigh.celsius, 40.0, 0.3);
        ASSERT_EQ(s->picture.pixels.size(), 19200U);
        const int low = s->barLow.ad;
        const int span = s->barHigh.ad - low;
        for (int x = 0; x < 160; ++x) {
            const auto i = static_cast<std::size_t>(60 * 160 + x);
            const double share = std::clamp(double(s->frame.counts[i] - low) / span, 0.0, 1.0);
            const double grey = 255.0 * (inverted ? 1.0 - share : share);
            for (const unsigned shift : {0U, 8U, 16U})
                EXPECT_NEAR(channel(s->picture.pixels[i], shift), grey, 4.0) << x;
            EXPECT_EQ(s->picture.pixels[i] >> 24U, 0xFFU);
            // The bar goes the same way.
            const auto entry = static_cast<std::size_t>(255.0 * share);
            EXPECT_NEAR(channel(s->bar[entry], 8), grey, 4.0) << x;
        }
    }
}

TEST(Colours, IsothermsPaintTheirBand) {
    Wishes wishes;
    wishes.look.window = LEVELSPAN_HAND;
    wishes.look.low = 10.0;
    wishes.look.high = 50.0;
    wishes.look.palette = COLOR_GREY;
    Looker looker(ramp(), wishes);
    ASSERT_NE(looker.settle(), nullptr);
    const struct {
        int type;
        bool on;
        int from; // the first column that is green, and the first after it
        int to;
    } cases[] = {
        {0, true, 0, 60}, {1, true, 60, 100}, {2, true, 100, 160},
        {1, false, 0, 0}, {0, true, 0, 60},
    };
    for (const auto& c : cases) {
        wishes.isotherm = {c.on, c.type, 10.0 + 40.0 * 60 / 159, 10.0 + 40.0 * 100 / 159, "Green"};
        looker.session().wish(wishes);
        looker.look();
        const auto s = looker.look();
        for (int x = 4; x < 156; ++x) {
            if (std::abs(x - 60) < 3 || std::abs(x - 100) < 3)
                continue; // an edge is known to a step of the palette
            const std::uint32_t pixel = s->picture.pixels[static_cast<std::size_t>(60 * 160 + x)];
            const bool green = channel(pixel, 8) > channel(pixel, 0) + 30 &&
                               channel(pixel, 8) > channel(pixel, 16) + 30;
            EXPECT_EQ(green, x >= c.from && x < c.to) << c.type << ' ' << x << ' ' << pixel;
        }
    }
}

TEST(Colours, CompositionsHaveTheScreensSize) {
    const struct {
        Image_Mode_t mode;
        bool screen; // else the frame alone
    } cases[] = {{IMAGE_CCD, true},         {IMAGE_CCD_PIPE_IR, true}, {IMAGE_IR, false},
                 {IMAGE_IR_PIPE_CCD, true}, {IMAGE_CCD_MIX_IR, true},  {IMAGE_IR_MIX_CCD, true},
                 {IMAGE_FUSION, true},      {IMAGE_BLANK, true},       {IMAGE_IR, false}};
    for (const bool big : {false, true}) {
        Source source = smallCamera(20);
        if (big)
            source.plan.scene = {};
        const int width = big ? 384 : 160;
        const int height = big ? 288 : 120;
        const int scale = big ? 2 : 4;
        Wishes wishes;
        Looker looker(source, wishes);
        ASSERT_NE(looker.settle(), nullptr);
        for (const auto& c : cases) {
            wishes.look.mode = c.mode;
            looker.session().wish(wishes);
            const auto s = looker.look();
            EXPECT_EQ(s->picture.width, c.screen ? scale * width : width) << c.mode;
            EXPECT_EQ(s->picture.height, c.screen ? scale * height : height) << c.mode;
            ASSERT_EQ(s->picture.pixels.size(),
                      static_cast<std::size_t>(s->picture.width * s->picture.height));
            EXPECT_EQ(s->frame.width, width); // what is measured in stays
            const auto [least, most] =
                std::minmax_element(s->picture.pixels.begin(), s->picture.pixels.end());
            EXPECT_EQ(*least == *most, c.mode == IMAGE_BLANK) << c.mode;
        }
    }
}

} // namespace
