#include "sim/board.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

using namespace irmsim;

namespace {

/// A board over a scene of 20 °C (AD 32152), which tests paint.
class BoardTest : public testing::Test {
protected:
    std::uint64_t get(std::uint32_t address, std::size_t width = 2) {
        std::vector<std::uint8_t> bytes(width, 0xEE);
        EXPECT_EQ(board.read(address, bytes.data(), width), static_cast<long>(width));
        std::uint64_t value = 0;
        for (std::size_t i = width; i-- > 0;)
            value = value << 8 | bytes[i];
        return value;
    }
    void put(std::uint32_t address, std::initializer_list<int> bytes) {
        std::vector<std::uint8_t> raw;
        for (const int b : bytes)
            raw.push_back(static_cast<std::uint8_t>(b));
        EXPECT_EQ(board.write(address, raw.data(), raw.size()), static_cast<long>(raw.size()));
    }
    void bounds(std::uint32_t block, int x0, int y0, int x1, int y1) {
        for (const int v : {x0, y0, x1, y1}) {
            put(block, {v & 0xFF, v >> 8});
            block += 2;
        }
    }
    /// The word at `word` of a frame read in one transfer.
    unsigned frameWord(std::size_t bytes, std::size_t word) {
        std::vector<std::uint8_t> part(bytes);
        board.read(0x4000, part.data(), bytes);
        return part[2 * word] + 256U * part[2 * word + 1];
    }

    Scene scene = Scene::uniform(160, 120, 20.0);
    Detector detector;
    Clock clock;
    Board board{scene, detector, clock};
};

constexpr unsigned at20 = 32152;  // AD of 20 °C
constexpr unsigned at37 = 33826;  // of 37 °C
constexpr unsigned at100 = 42353; // of 100 °C
constexpr unsigned at0 = 30519;   // of 0 °C

} // namespace

TEST_F(BoardTest, frameStatisticsAreThoseOfTheScene) {
    EXPECT_EQ(get(0x70), at20);   // a flat frame:
    EXPECT_EQ(get(0x72), 64527U); // the least span, 4194304 / 65
    scene.fill(10, 20, 12, 20, 100.0);
    scene.fill(50, 60, 50, 61, 0.0);
    EXPECT_EQ(get(0x40), at100);
    EXPECT_EQ(get(0x50), 10U);
    EXPECT_EQ(get(0x52), 20U);
    EXPECT_EQ(get(0x42), at0);
    EXPECT_EQ(get(0x54), 50U);
    EXPECT_EQ(get(0x56), 60U);
    EXPECT_EQ(get(0x44, 6), 19195ULL * at20 + 3 * at100 + 2 * at0);
    EXPECT_EQ(get(0x6C, 4), 19200U);
    EXPECT_EQ(get(0xA0), at100);
    EXPECT_EQ(get(0xA2), at0);
    EXPECT_EQ(get(0xA4), at20);
    EXPECT_EQ(get(0x70), at0);
    EXPECT_EQ(get(0x72), 354U); // 4194304 / 11834
    // Without a margin of 20 columns and 15 rows the hot pixels are out of sight.
    EXPECT_EQ(get(0x4A), at20);
    EXPECT_EQ(get(0x58), 20U);
    EXPECT_EQ(get(0x5A), 15U);
    EXPECT_EQ(get(0x4C), at0);
    EXPECT_EQ(get(0x5C), 50U);
    EXPECT_EQ(get(0x5E), 60U);
}

TEST_F(BoardTest, histogramPeakIsTheLowestOfTheFullest) {
    scene.fill(0, 0, 79, 119, 100.0);
    EXPECT_EQ(get(0xA4), at20);
    scene.set(80, 0, 100.0);
    EXPECT_EQ(get(0xA4), at100);
}

TEST_F(BoardTest, pointsReadTheirPixelAndZeroOutside) {
    scene.set(159, 119, 37.0);
    EXPECT_EQ(get(0x1004), 0U); // never set
    put(0x1000, {159, 0, 119, 0});
    put(0x1100, {160, 0, 119, 0});
    EXPECT_EQ(get(0x1004), at37);
    EXPECT_EQ(get(0x1104), 0U);
    EXPECT_EQ(get(0x1000, 4), 0x0077009FU);
}

TEST_F(BoardTest, areaAverageIsTheMeanOfItsCounts) {
    scene.set(10, 10, 100.0);
    scene.set(11, 11, 0.0);
    bounds(0x1100, 10, 10, 11, 11); // area 1
    EXPECT_EQ(get(0x1110), at100);
    EXPECT_EQ(get(0x1112), at0);
    EXPECT_EQ(get(0x1114), 34294U); // (2·32152 + 42353 + 30519) / 4 = 34294
    EXPECT_EQ(get(0x1120, 8), 0x000B'000B'000A'000AULL);
    put(0x1104, {12, 0}); // one bound alone moves the area
    scene.set(12, 10, 140.0);
    EXPECT_GT(get(0x1110), at100);
}

TEST_F(BoardTest, areaIsCutAtTheFrameAndEmptyBeyondIt) {
    scene.set(159, 119, 37.0);
    bounds(0x10C0, 159, 118, 400, 400);
    EXPECT_EQ(get(0x10D4), 32989U); // (32152 + 33826) / 2
    for (const auto& b : {std::array{160, 0, 170, 5}, std::array{5, 5, 4, 6}}) {
        bounds(0x10C0, b[0], b[1], b[2], b[3]);
        EXPECT_EQ(get(0x10D0, 8), 0U);
        EXPECT_EQ(get(0x10E0, 8), 0U);
    }
}

TEST_F(BoardTest, sharedBlockBelongsToItsLastWriter) {
    bounds(0x10C0, 0, 0, 3, 3); // area 0
    EXPECT_EQ(get(0x10D4), at20);
    put(0x10D0, {1, 0, 2, 0}); // point 13
    EXPECT_EQ(get(0x10D0, 4), 0x00020001U);
    EXPECT_EQ(get(0x10D4), at20);
    EXPECT_EQ(get(0x10D2), 2U); // no longer the area's minimum
    put(0x10C0, {0, 0});
    EXPECT_EQ(get(0x10D2), 2U); // one bound is not yet an area
    put(0x10C0, {1, 0, 2, 0});  // point 12
    bounds(0x10C0, 0, 0, 3, 3);
    EXPECT_EQ(get(0x10D2), at20);
    EXPECT_EQ(get(0x10C4), 3U); // the points are gone

    bounds(0x1300, 0, 0, 3, 3); // area 9
    EXPECT_EQ(get(0x1310), at20);
    const std::vector<std::uint8_t> table(1044, 0xA5);
    board.write(0x1300, table.data(), table.size());
    EXPECT_EQ(get(0x1310), 0xA5A5U);
    bounds(0x1300, 0, 0, 3, 3);
    EXPECT_EQ(get(0x1310), at20);
    EXPECT_EQ(get(0x1340), 0xA5A5U);
}

TEST_F(BoardTest, writesAreKeptAndTheRestReadsZero) {
    put(0x62, {0x34, 0x12});
    put(0x64, {1, 2, 3, 4});
    EXPECT_EQ(get(0x62), 0x1234U);
    EXPECT_EQ(get(0x64), 0x0201U);
    EXPECT_EQ(get(0x64, 4), 0x04030201U);
    for (const std::uint32_t address : {0x02U, 0x3FFEU, 0x5000U, 0x7FFFFFFFU})
        EXPECT_EQ(get(address), 0U) << address;
    put(0x3FFE, {1, 2, 3, 4}); // the last two fall outside
    EXPECT_EQ(get(0x3FFC, 8), 0x02010000U);
    put(0x40, {0xFF, 0xFF});
    EXPECT_EQ(get(0x40), at20); // measured, whatever is written
}

TEST_F(BoardTest, boardSensorsCarryTheirEncodings) {
    detector.setTemperatures(-0.00390625, 127.99609375);
    EXPECT_EQ(get(0x1C), 0xFFFFU);
    EXPECT_EQ(get(0x1E), 0x7FFFU);
    detector.setTemperatures(-400, 26.502); // 26.502·256 = 6784.5
    EXPECT_EQ(get(0x1C), 0x8000U);
    EXPECT_EQ(get(0x1E), 6785U);
    EXPECT_EQ(get(0x8C), 6466U); // 25 °C
    EXPECT_EQ(get(0x8E), 1806U); // 60 %
    Surroundings cold;
    cold.envTemp = -10;
    cold.humidity = 0.35;
    detector.setSurroundings(cold);
    EXPECT_EQ(get(0x8C), 2966U);
    EXPECT_EQ(get(0x8E), 1140U);
    EXPECT_EQ(get(0x0F, 1), 0x83U);
    board.setLensCode(5);
    board.setPower(false);
    board.setLensVariant(true);
    EXPECT_EQ(get(0x0F, 1), 0x05U);
    EXPECT_EQ(get(0x00, 1), 0x80U);
    EXPECT_EQ(get(0xF0, 8), 0x46206D69736D7269U); // "irmsim F"
}

TEST_F(BoardTest, largeFrameComesInEightPartsAndAnyOtherReadStartsItAnew) {
    scene = Scene::uniform(384, 288, 20.0);
    for (int part = 0; part < 8; ++part)
        scene.set(0, 36 * part, part == 7 ? 100.0 : 37.0 * (part % 2));
    EXPECT_EQ(frameWord(27648, 0), at0);
    EXPECT_EQ(frameWord(27648, 0), at37);
    EXPECT_EQ(frameWord(27648, 0), at0);
    EXPECT_EQ(frameWord(2, 0), at20); // the beginning of the small frame
    EXPECT_EQ(frameWord(27648, 0), at0);
    board.restartFrame();
    for (int part = 0; part < 7; ++part)
        EXPECT_EQ(frameWord(27648, 0), part % 2 == 0 ? at0 : at37);
    EXPECT_EQ(board.frameNumber(), 0U);
    scene.fill(0, 0, 383, 287, 20.0); // all parts are of the frame that was begun
    EXPECT_EQ(frameWord(27648, 0), at100);
    EXPECT_EQ(board.frameNumber(), 1U);
    EXPECT_DOUBLE_EQ(secondsOf(clock.now()), 0.04);
}

TEST_F(BoardTest, frameOfTheOtherSizeTakesTheNearestPixel) {
    scene.set(1, 0, 37.0);
    EXPECT_EQ(frameWord(38400, 1), at37); // 160 columns: as it is
    EXPECT_EQ(frameWord(27648, 2), at37); // 384 columns: 2 to 4
    board.restartFrame();
    EXPECT_EQ(frameWord(27648, 1), at20);
    scene = Scene::uniform(384, 288, 20.0);
    scene.set(3, 1, 100.0);
    EXPECT_EQ(frameWord(38400, 1), at100); // centre of column 1: 3.6
}

TEST_F(BoardTest, frozenBoardStandsStill) {
    detector.setNoise(3.0, 1);
    put(0x14, {1});
    const auto sum = get(0x44, 6);
    scene.fill(0, 0, 159, 119, 100.0);
    frameWord(38400, 0);
    board.nextFrame();
    EXPECT_EQ(board.frameNumber(), 0U);
    EXPECT_EQ(get(0x44, 6), sum);
    EXPECT_NEAR(board.ad(5, 5), at20, 12);
    put(0x14, {0});
    EXPECT_NEAR(board.ad(5, 5), at100, 12);
    const auto first = get(0x44, 6);
    board.nextFrame();
    EXPECT_NE(get(0x44, 6), first); // noise moves on with the frame
}
