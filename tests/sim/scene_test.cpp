#include "sim/scene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>

using irmsim::Scene;

namespace {

std::string pgm(const std::string& header, std::size_t pixelBytes) {
    return header + std::string(pixelBytes, 'r'); // "rr" is 0x7272: 292.98 K
}

} // namespace

TEST(Scene, gradientIsStraightOverTheColumns) {
    const Scene scene = Scene::gradient(160, 120, 0.0, 159.0);
    EXPECT_DOUBLE_EQ(scene.at(0, 60), 0.0);
    EXPECT_DOUBLE_EQ(scene.at(40, 0), 40.0);
    EXPECT_DOUBLE_EQ(scene.at(159, 119), 159.0);
    EXPECT_DOUBLE_EQ(scene.at(1000, -3), 159.0);
}

TEST(Scene, benchShowsItsTargetsInBothSizes) {
    const double celsius[] = {-10, 0, 37, 60, 80, 100, 140, 34};
    for (const int width : {384, 160}) {
        const Scene scene = Scene::bench(width, width * 3 / 4);
        ASSERT_EQ(scene.targets().size(), 8U);
        for (std::size_t i = 0; i < 8; ++i)
            EXPECT_DOUBLE_EQ(scene.at(scene.targets()[i].x, scene.targets()[i].y), celsius[i]);
        EXPECT_NEAR(scene.at(0, 0), 21.75, 0.01);
        EXPECT_EQ(scene.min(), -10.0);
        EXPECT_EQ(scene.max(), 140.0);
        // The hand has no edge: nowhere near it do neighbours differ by 5 °C.
        const auto& hand = scene.targets().back();
        for (int x = hand.x - width / 10; x < hand.x + width / 10; ++x)
            EXPECT_LT(std::abs(scene.at(x, hand.y) - scene.at(x + 1, hand.y)), 5.0);
    }
}

TEST(Scene, pgmWordsAreHundredthsOfAKelvinHighByteFirst) {
    std::string bytes = pgm("P5\n# a comment\n160 120 # another\n65535\n", 38400);
    bytes[bytes.size() - 2] = '\x6A'; // 0x6AB3 = 27315
    bytes[bytes.size() - 1] = '\xB3';
    std::string error;
    const auto scene = Scene::parsePgm(bytes, error);
    ASSERT_TRUE(scene) << error;
    EXPECT_EQ(scene->width(), 160);
    EXPECT_NEAR(scene->at(0, 0), 19.83, 1e-9);
    EXPECT_NEAR(scene->at(159, 119), 0.0, 1e-9);
    EXPECT_TRUE(Scene::parsePgm(pgm("P5 384 288 65535\n", 221184), error));
}

TEST(Scene, malformedPgmIsNamedAndRefused) {
    const struct {
        std::string bytes;
        const char* part;
    } cases[] = {
        {"", "P5"},
        {"P", "P5"},
        {"P2\n160 120 65535\n", "P5"},
        {"P5", "malformed"},
        {"P5\n160", "malformed"},
        {"P5 160 120 65535", "malformed"},
        {"P5 # no end", "malformed"},
        {"P5 -160 120 65535\n", "malformed"},
        {"P5 99999999999999999999 120 65535\n", "malformed"},
        {pgm("P5 160 120 65535x", 38399), "malformed"},
        {pgm("P5 0 0 65535\n", 0), "0x0"},
        {pgm("P5 320 240 65535\n", 153600), "320x240"},
        {pgm("P5 160 288 65535\n", 92160), "160x288"},
        {pgm("P5 160 120 255\n", 19200), "maxval is 255"},
        {pgm("P5 160 120 65535\n", 38399), "38399 follow"},
        {pgm("P5 160 120 65535\n", 38401), "38401 follow"},
    };
    for (const auto& c : cases) {
        std::string error;
        EXPECT_FALSE(Scene::parsePgm(c.bytes, error));
        EXPECT_NE(error.find(c.part), std::string::npos) << error;
    }
}

TEST(Scene, fileThatCannotBeReadIsNamed) {
    std::string error;
    EXPECT_FALSE(Scene::fromPgm("/nowhere/scene.pgm", error));
    EXPECT_EQ(error, "/nowhere/scene.pgm: cannot be opened");
    EXPECT_FALSE(Scene::fromPgm("/tmp", error));
    EXPECT_EQ(error.substr(0, 5), "/tmp:");

    const std::string path = testing::TempDir() + "irmsim_scene.pgm";
    std::ofstream(path, std::ios::binary) << pgm("P5\n160 120\n65535\n", 38400);
    EXPECT_TRUE(Scene::fromPgm(path, error)) << error;
    std::remove(path.c_str());
}
