// What `irmcore measure` and `irmcore calibrate` are made of.
#include "apps/calibrate/curve.h"
#include "apps/driver.h"
#include "apps/measure/places.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>

namespace calibration = irmcore::app::calibration;
namespace measuring = irmcore::app::measuring;

namespace {

TEST(Lines, areConnectedAndKeepToTheStraightOne) {
    for (const measuring::Pixel to : {measuring::Pixel{40, 31},
                                      {0, 0},
                                      {19, 60},
                                      {50, 20},
                                      {20, 1},
                                      {3, 37},
                                      {21, 21},
                                      {20, 20}}) {
        const measuring::Pixel from{20, 20};
        const int dx = to.x - from.x;
        const int dy = to.y - from.y;
        const int longer = std::max(std::abs(dx), std::abs(dy));
        const auto pixels = measuring::pixelsOf({from, to});
        ASSERT_EQ(pixels.size(), static_cast<std::size_t>(longer) + 1);
        EXPECT_TRUE(pixels.back().x == to.x && pixels.back().y == to.y);
        for (int i = 0; i <= longer; ++i) {
            const double share = longer == 0 ? 0.0 : static_cast<double>(i) / longer;
            const measuring::Pixel& at = pixels[static_cast<std::size_t>(i)];
            EXPECT_LE(std::abs(at.x - (from.x + share * dx)), 0.5);
            EXPECT_LE(std::abs(at.y - (from.y + share * dy)), 0.5);
        }
    }
}

TEST(Curve, findsTheLawAndKeepsToIt) {
    const calibration::PlanckLaw law{1800.0, 20000.0, 900000.0};
    std::vector<calibration::Sample> samples;
    for (const double t : {-20.0, 3.0, 25.0, 61.0, 110.0, 150.0})
        samples.push_back({t, law.ad(t)});
    const calibration::PlanckLaw found = calibration::fitPlanck(samples);
    EXPECT_NEAR(found.b, 1800.0, 0.1);
    // 900000 / (exp(1800 / 303.15) - 1) = 2380.67
    EXPECT_NEAR(law.ad(30.0), 22380.67, 0.01);
    const calibration::Curve curve(found, samples);
    for (double t = -60.0; t <= 200.0; t += 0.7)
        EXPECT_NEAR(curve.ad(t), law.ad(t), 0.05) << t;
}

TEST(Curve, meetsEverySampleSmoothlyAndNeverFalls) {
    const std::vector<calibration::Sample> samples{{-20, 100}, {0, 101},   {10, 5000},  {30, 5001},
                                                   {31, 9000}, {90, 9100}, {150, 30000}};
    const calibration::PlanckLaw law = calibration::fitPlanck(samples);
    const calibration::Curve curve(law, samples);
    for (const calibration::Sample& sample : samples) {
        EXPECT_NEAR(curve.ad(sample.celsius), sample.ad, 1e-6);
        if (sample.celsius > -20 && sample.celsius < 150) {
            const double before = curve.ad(sample.celsius) - curve.ad(sample.celsius - 1e-5);
            const double after = curve.ad(sample.celsius + 1e-5) - curve.ad(sample.celsius);
            EXPECT_NEAR(before, after, 0.01 * std::abs(before) + 5e-6) << sample.celsius;
        }
    }
    for (double t = -20.0; t < 150.0; t += 0.1)
        EXPECT_LE(curve.ad(t), curve.ad(t + 0.1)) << t;
}

TEST(Driver, goesByTheClockThatItIsGiven) {
    irmsim::Camera camera;
    ASSERT_TRUE(camera.install());
    FPGA host;
    double now = 1e9;
    irmcore::app::Driver driver(host, [&] { return now; }, {});
    driver.start();
    EXPECT_EQ(driver.rounds(), 1);
    for (const auto& [later, rounds] : {std::pair{179.9, 1}, {0.2, 2}, {179.9, 2}, {0.2, 3}}) {
        now += later;
        camera.advance(600.0); // another clock's time
        driver.beforeReadings();
        EXPECT_EQ(driver.rounds(), rounds);
    }
}

} // namespace
