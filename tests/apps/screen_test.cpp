#include "apps/screen.h"
#include "apps/visible.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <vector>

namespace irmcore::app {

namespace {

constexpr Rgb black{0, 0, 0}, white{255, 255, 255}, red{253, 0, 0}, green{0, 255, 1};
constexpr Rgb blue{0, 0, 252}, wood{200, 100, 50}; // wood is all that the visible camera sees
using Yuv = std::array<std::uint8_t, 3>;
constexpr Yuv whiteYuv{235, 128, 128}, redYuv{81, 90, 239}, greenYuv{145, 54, 34};
constexpr Yuv blueYuv{40, 239, 109};
using Box = std::array<int, 4>;
constexpr Box none{-1, -1, -1, -1};

/// 160x120 pixels of 20 °C (AD 32152), the window the library's own: what is hotter (37 °C: 33826,
/// 100 °C: 42353) shows entry 255, red, the rest (0 °C: 30519) entry 0, white; all others are
/// black.
class Screen : public testing::Test {
protected:
    Screen() {
        for (std::uint32_t i = 0; i < 261; ++i)
            entry(i, {16, 128, 128});
        entry(0, whiteYuv);
        entry(255, redYuv);
        word(0x62, 32152);
        byte(0x60, 0);
        visible.pixels.assign(visible.pixels.size(), wood);
    }
    void byte(std::uint32_t address, int value) { word(address, value, 1); }
    void word(std::uint32_t address, int value, int bytes = 2) {
        for (int i = 0; i < bytes; ++i) {
            const auto b = static_cast<std::uint8_t>((value >> (8 * i)) & 0xFF);
            board.write(address + static_cast<std::uint32_t>(i), &b, 1);
        }
    }
    void entry(std::uint32_t i, Yuv yuv) { board.write(0x1300 + 4 * i, yuv.data(), 3); }
    Rgb at(int x, int y) { return screen(board, visible).at(x, y); }
    /// x0, y0, x1, y1 of all that has this colour.
    Box box(Rgb colour) {
        const Picture shown = screen(board, visible);
        Box b = none;
        for (int y = 0; y < shown.height; ++y)
            for (int x = 0; x < shown.width; ++x)
                if (shown.at(x, y) == colour)
                    b = {b[0] < 0 ? x : std::min(b[0], x), b[1] < 0 ? y : b[1], std::max(b[2], x),
                         y};
        return b;
    }

    irmsim::Scene scene = irmsim::Scene::uniform(160, 120, 20.0);
    irmsim::Detector detector;
    irmsim::Clock clock;
    irmsim::Board board{scene, detector, clock};
    Picture visible{160, 120};
};

TEST_F(Screen, coloursAreThoseOfLimitedRangeVideo) {
    EXPECT_EQ(rgbOf(125, 128, 128), (Rgb{127, 127, 127}));
    EXPECT_EQ(rgbOf(0, 0, 0), (Rgb{0, 136, 0}));
    EXPECT_EQ(rgbOf(255, 255, 255), (Rgb{255, 125, 255}));
}

TEST_F(Screen, windowPutsACountOnItsEntry) {
    entry(0, {16, 128, 128});
    const int cases[][3] = {// level, gain, entry
                            {32152, 4096, 0},      {32153, 4096, 0},    {32151, 16383, 0},
                            {32151, 16384, 1},     {31898, 16384, 254}, {31896, 16384, 255},
                            {30000, 1000, 131},    {32152, 0, 0},       {32151, 0, 255},
                            {32150, 0x10000, 8},     // four bytes of gain
                            {31128, 0x400000, 255}}; // 2^32
    for (const auto& [level, gain, index] : cases) {
        const auto i = static_cast<std::uint32_t>(index);
        word(0x62, level);
        word(0x64, gain, 4);
        entry(i, blueYuv);
        EXPECT_EQ(box(blue), (Box{0, 0, 639, 479})) << level << ' ' << gain;
        entry(i, {16, 128, 128});
    }
}

TEST_F(Screen, windowIsTheFpgasUntilALibraryTakesIt) {
    scene.fill(0, 0, 0, 0, 0.0);
    scene.fill(1, 0, 1, 0, 100.0); // 30519..42353: gain 354, and 20 °C is (1633·354) >> 14 = 35
    entry(35, blueYuv);
    EXPECT_EQ(box(blue), none);
    byte(0x60, 0xFF);
    EXPECT_EQ(at(320, 240), blue);
    irmsim::Board fresh{scene, detector, clock};
    std::uint8_t owner = 0;
    fresh.read(0x60, &owner, 1);
    EXPECT_EQ(owner, 0xFF);
}

TEST_F(Screen, isothermColoursWhatLiesOutsideTheWindow) {
    scene.fill(0, 0, 0, 0, 0.0);
    scene.fill(1, 0, 1, 0, 37.0);
    scene.fill(2, 0, 2, 0, 100.0);
    entry(0, {16, 128, 128});
    entry(258, redYuv);
    entry(259, greenYuv);
    entry(260, blueYuv);
    const Rgb colours[] = {red, green, blue};
    const int cases[][6] = {// type, limits, then the colours of 0, 37 and 100 °C
                            {0, 30519, 0, 0, 2, 2},     {0, 30518, 0, 1, 2, 2},
                            {0, 42353, 0, 0, 0, 0},     {1, 33826, 42353, 1, 0, 0},
                            {1, 33827, 42352, 1, 2, 2}, {2, 0, 42353, 1, 2, 0},
                            {2, 0, 42354, 1, 2, 2},     {3, 0, 65535, 1, 2, 2}};
    for (const auto& c : cases) {
        byte(0x200, 1);
        byte(0x201, c[0]);
        word(0x202, c[1]);
        word(0x204, c[2]);
        // A span of 128 below 20 °C: its upper end, on entry 255, is still the window's.
        word(0x62, 32152 - 128);
        word(0x64, 32768, 4);
        entry(255, whiteYuv);
        const Picture shown = screen(board, visible);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(shown.at(4 * i, 0), colours[c[3 + i]]) << c[0] << ' ' << c[1] << ' ' << i;
        EXPECT_EQ(shown.at(12, 0), white);
        entry(255, blueYuv); // the band ends below the window's top
        EXPECT_EQ(at(8, 0), blue);
        byte(0x200, 0);
        entry(255, whiteYuv);
        EXPECT_EQ(at(0, 0), black);
        EXPECT_EQ(at(8, 0), white);
    }
}

TEST_F(Screen, imageModesPutThePicturesTogether) {
    const Rgb colours[] = {white, wood, black, {228, 178, 153}, {214, 139, 101}};
    const int cases[][6] = {// mode, visible share, infrared share, band from; middle, top left
                            {0, 0, 0, 0, 0, 0},     {1, 0, 0, 0, 1, 1},   {2, 0, 0, 0, 0, 1},
                            {3, 0, 0, 0, 1, 0},     {4, 64, 0, 0, 3, 3},  {4, 0, 128, 0, 0, 0},
                            {4, 128, 0, 0, 1, 1},   {4, 255, 0, 0, 1, 1}, {5, 0, 32, 0, 4, 4},
                            {5, 128, 0, 0, 1, 1},   {5, 0, 128, 0, 0, 0}, {6, 0, 0, 32152, 0, 0},
                            {6, 0, 0, 32153, 1, 1}, {7, 0, 0, 0, 2, 2},   {0x88, 0, 0, 0, 0, 0}};
    byte(0x201, 1);
    word(0x204, 40000);
    for (const auto& c : cases) {
        byte(0x00, c[0]);
        byte(0x2F, c[1]);
        byte(0x2A, c[2]);
        word(0x202, c[3]);
        EXPECT_EQ(at(320, 240), colours[c[4]]) << c[0] << ' ' << c[1];
        EXPECT_EQ(at(30, 30), colours[c[5]]) << c[0] << ' ' << c[1];
    }
    byte(0x00, 7);
    byte(0x10, 0xC3); // no overlay on a blank screen
    EXPECT_EQ(box(black), (Box{0, 0, 639, 479}));
    EXPECT_EQ(box(white), none);
}

TEST_F(Screen, mode5ShowsTheFrameWithoutItsMargin) {
    byte(0x00, 5);
    byte(0x2A, 128);
    scene.fill(20, 15, 20, 15, 100.0);
    EXPECT_EQ(box(red), (Box{0, 0, 4, 4})); // 5 1/3 screen pixels for one of the frame
    scene.fill(139, 104, 139, 104, 100.0);
    EXPECT_EQ(box(red), (Box{0, 0, 639, 479}));
}

TEST_F(Screen, insetsLieInTheirCornerInTheirSize) {
    scene.fill(159, 119, 159, 119, 100.0);
    const int cases[][7] = {// corner, large, bar; place
                            {0, 0, 0, 10, 10, 222, 169},     {1, 0, 0, 417, 10, 629, 169},
                            {2, 0, 0, 10, 310, 222, 469},    {3, 0, 0, 417, 310, 629, 469},
                            {0, 1, 0, 10, 10, 329, 249},     {3, 1, 0, 310, 230, 629, 469},
                            {3, 0, 0x80, 385, 310, 597, 469}}; // left of the bar
    for (const auto& [corner, large, bar, x0, y0, x1, y1] : cases) {
        byte(0x10, bar);
        byte(0x00, 2);
        byte(0x01, corner << 4 | (3 - corner));
        byte(0x25, large ? 0x0F : 0xFE); // bit 0
        EXPECT_EQ(box(wood), (Box{x0, y0, x1, y1})) << corner;
        byte(0x00, 3);
        byte(0x01, corner | (3 - corner) << 4);
        byte(0x25, large ? 0xF0 : 0x7F); // bit 7
        EXPECT_EQ(at(x0, y0), white) << corner;
        EXPECT_EQ(at(x1, y1), red) << corner; // the whole frame is in it
        EXPECT_EQ(at(x1 + 1, y1 + 1), wood) << corner;
    }
}

TEST_F(Screen, alignmentMovesTheVisiblePictureOnTheInfraredOne) {
    for (int y = 0; y < 120; ++y)
        for (int x = 0; x < 160; ++x)
            visible.at(x, y) = x >= 60 && y >= 70 ? white : black;
    const int cases[][7] = {// dx, dy, zoom; all white from the middle of pixel 60, 70
                            {0, 0, 0, 242, 282, 639, 479},
                            {5, 4, 256, 262, 298, 639, 479},
                            {0xFB, 0xF6, 0, 222, 242, 619, 439},
                            {0, 0, 512, 164, 324, 639, 479},
                            {5, 0xF6, 128, 301, 221, 499, 319}};
    byte(0x2F, 128);
    for (const auto& [dx, dy, zoom, x0, y0, x1, y1] : cases) {
        byte(0x28, dx);
        byte(0x29, dy);
        word(0x26, zoom);
        byte(0x00, 4);
        EXPECT_EQ(box(white), (Box{x0, y0, x1, y1})) << dx << ' ' << zoom;
        byte(0x00, 1); // alone, it is not aligned with anything
        EXPECT_EQ(box(white), (Box{242, 282, 639, 479}));
    }
}

TEST_F(Screen, anyRegisterContentsGiveAPicture) {
    for (const int fill : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
        for (int mode = 0; mode < 8; ++mode) {
            for (std::uint32_t address = 1; address < 0x80; ++address)
                byte(address, fill);
            byte(0x00, mode);
            word(0x1200, fill << 8);
            EXPECT_EQ(screen(board, Picture(mode, 3)).pixels.size(), 640U * 480U);
        }
    }
    irmsim::Scene dot = irmsim::Scene::uniform(1, 1, 20.0);
    irmsim::Board tiny{dot, detector, clock};
    for (std::uint8_t mode = 0; mode < 8; ++mode) {
        tiny.write(0x00, &mode, 1);
        tiny.write(0x10, "\xFF", 1);
        EXPECT_EQ(screen(tiny, visible).pixels.size(), 16U);
    }
}

TEST_F(Screen, linesCoverTheirRowAndColumn) {
    entry(257, blueYuv);
    const int cases[][8] = {// mode, shown, row, column; where
                            {0, 0, 7, 9, -1, -1, -1, -1},
                            {0, 1, 7, 9, 0, 28, 639, 31},
                            {0, 2, 7, 9, 36, 0, 39, 479},
                            {0, 3, 120, 160, -1, -1, -1, -1},   // outside
                            {5, 3, 14, 139, 635, 0, 639, 479}}; // above what is shown
    for (const auto& [mode, shown, row, column, x0, y0, x1, y1] : cases) {
        byte(0x00, mode);
        byte(0x10, shown);
        word(0x1200, row);
        word(0x1202, column);
        EXPECT_EQ(box(blue), (Box{x0, y0, x1, y1})) << mode << ' ' << shown;
    }
    entry(257, {0, 0, 0}); // an empty table's line has a colour all the same
    EXPECT_EQ(at(639, 0), (Rgb{16, 255, 15}));
}

TEST_F(Screen, saturationMarksTheEndsOfTheCount) {
    entry(256, {0, 0, 0});
    scene.fill(150, 110, 150, 110, 900.0); // 65535
    EXPECT_EQ(box(red), (Box{600, 440, 603, 443}));
    byte(0x10, 0x40);
    EXPECT_EQ(box(Rgb{141, 141, 198}), (Box{600, 440, 603, 443}));
    entry(256, blueYuv);
    detector.setDriftLaw(irmsim::DriftLaw::offset);
    detector.setTemperatures(26.5, -200.0); // a detector that cold delivers 0
    EXPECT_EQ(at(320, 240), blue);
}

TEST_F(Screen, barShowsEveryEntryInAsManyRows) {
    byte(0x00, 1);
    entry(1, blueYuv);
    entry(128, greenYuv);
    EXPECT_EQ(box(red), none);
    byte(0x10, 0x80);
    EXPECT_EQ(box(red), (Box{610, 112, 629, 112}));
    EXPECT_EQ(box(green), (Box{610, 239, 629, 239}));
    EXPECT_EQ(box(blue), (Box{610, 366, 629, 366}));
    EXPECT_EQ(box(white), (Box{610, 367, 629, 367}));
    EXPECT_EQ(colourBar(768, 576).y1 - colourBar(768, 576).y0, 511);
    EXPECT_LT(colourBar(640, 200).y1, colourBar(640, 200).y0);
}

TEST_F(Screen, frozenPictureStaysWhileTheSceneGoesOn) {
    byte(0x14, 1);
    scene.fill(0, 0, 159, 119, 100.0);
    EXPECT_EQ(at(320, 240), white);
    entry(0, blueYuv); // the table stays the host's
    EXPECT_EQ(at(320, 240), blue);
    byte(0x14, 0);
    EXPECT_EQ(at(320, 240), red);
}

TEST_F(Screen, visiblePictureTellsThingsApartAndNothingGlows) {
    const irmsim::Scene bench = irmsim::Scene::bench(160, 120);
    const Picture picture = visiblePicture(bench);
    EXPECT_EQ(picture.pixels, visiblePicture(bench).pixels);
    const auto brightness = [&](int x, int y) {
        const Rgb c = picture.at(x, y);
        return c.r + c.g + c.b;
    };
    EXPECT_GT(brightness(40, 30), brightness(20, 30) + 60);  // wall and the coldest black body
    EXPECT_GT(brightness(80, 90), brightness(100, 90) + 60); // wall and the hottest one
    EXPECT_NEAR(brightness(40, 60), brightness(80, 60), 60); // wall and wall
    for (const double odd : {-1e308, 1e308, std::numeric_limits<double>::quiet_NaN()}) {
        irmsim::Scene two = irmsim::Scene::uniform(2, 1, odd);
        two.set(1, 0, 20.0);
        EXPECT_EQ(visiblePicture(two).pixels.size(), 2U);
    }
}

} // namespace
} // namespace irmcore::app
