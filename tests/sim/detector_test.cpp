#include "sim/air.h"
#include "sim/detector.h"

#include <gtest/gtest.h>

#include <cmath>

using irmsim::Detector;
using irmsim::DriftLaw;
using irmsim::Surroundings;

// The expected counts come from the law in the class's comment, worked out apart from this code.

TEST(Air, transmissionFollowsBothCurves) {
    const struct {
        double envTemp, humidity, distance, transmission;
    } cases[] = {{25, 0.6, 0, 1.0},
                 {25, 0.6, 5, 0.9984651},
                 {20, 0.5, 1000, 0.8147446},
                 {25, 0.6, 100, 0.969732},
                 {25.9, 0.6, 100, 0.969732},
                 {30, 0.9, 10000, 0.0},
                 {-10, 0.5, 20000, 0.5112600},
                 {5, 0.4, 4000, 0.7196030},
                 {-30.5, 0.7, 150000, 0.3151962}};
    for (const auto& c : cases)
        EXPECT_NEAR(irmsim::airTransmission(c.envTemp, c.humidity, c.distance), c.transmission,
                    1e-6);
    EXPECT_EQ(irmsim::airTransmission(std::nan(""), 0.6, 0), 1.0);
}

TEST(Detector, curveHasItsGainAtThirtyDegrees) {
    Detector low;
    Detector high;
    high.setRange(1);
    EXPECT_DOUBLE_EQ(low.curve(30), 32768.0);
    EXPECT_NEAR(low.curve(-40), 27933.684828, 1e-5);
    EXPECT_NEAR(low.curve(100), 42030.193800, 1e-5);
    EXPECT_NEAR(high.curve(400), 59605.622376, 1e-5);
    low.setLens(1);
    EXPECT_NEAR(low.curve(100), 41103.974420, 1e-5); // a tenth nearer to mid-scale
}

TEST(Detector, countsFollowTheLawInEveryTerm) {
    const Surroundings far{0.8, 60, 0.7, 25, 35};
    const struct {
        const char* what;
        void (*prepare)(Detector&);
        double celsius, counts;
    } cases[] = {
        {"reference", [](Detector&) {}, 37, 33825.593654},
        {"hot", [](Detector&) {}, 100, 42353.034398},
        {"high range",
         [](Detector& d) {
             d.setRange(1);
             d.setTemperatures(43, 43);
             d.calibrate();
         },
         300, 49440.268778},
        {"second lens", [](Detector& d) { d.setLens(1); }, 37, 33719.834289},
        {"warm inside",
         [](Detector& d) {
             d.setTemperatures(34.5, 34.5);
             d.calibrate();
         },
         37, 32988.143531},
        {"sensor drift", [](Detector& d) { d.setTemperatures(26.5, 27.0); }, 37, 34085.425510},
        {"drift across 31 °C",
         [](Detector& d) {
             d.setTemperatures(30.5, 30.5);
             d.calibrate();
             d.setTemperatures(30.5, 31.5);
         },
         37, 33777.897631},
        {"offset drift",
         [](Detector& d) {
             d.setDriftLaw(DriftLaw::offset);
             d.setTemperatures(26.5, 27.0);
         },
         37, 34066.906698},
        {"modify slope",
         [](Detector& d) {
             d.setModifySlope(true);
             d.setTemperatures(36.5, 36.5);
             d.calibrate();
         },
         37, 32741.042399},
    };
    for (const auto& c : cases) {
        Detector detector;
        c.prepare(detector);
        EXPECT_NEAR(detector.counts(c.celsius), c.counts, 1e-5) << c.what;
        EXPECT_NEAR(detector.temperatureOf(c.counts), c.celsius, 1e-6) << c.what;
    }
    Detector detector;
    detector.setSurroundings(far);
    EXPECT_NEAR(detector.counts(37), 33821.306233, 1e-5);
    EXPECT_NEAR(detector.temperatureOf(33821.306233), 37.0, 1e-6);
}

TEST(Detector, rawIsRoundedAndCut) {
    Detector detector;
    EXPECT_EQ(detector.raw(37, 0, 0), 33826);
    EXPECT_EQ(detector.raw(1400, 0, 0), 65535);
    EXPECT_EQ(detector.raw(std::nan(""), 0, 0), 0);
    EXPECT_EQ(detector.rawOf(-5, 0, 0), 0);
    detector.setShutterClosed(true);
    EXPECT_EQ(detector.raw(100, 0, 0), 32768);
}

TEST(Detector, noiseRepeatsAndHasItsDeviation) {
    Detector detector;
    detector.setNoise(4.0, 7);
    double sum = 0;
    double squares = 0;
    constexpr int pixels = 20000;
    for (unsigned i = 0; i < pixels; ++i) {
        const double n = detector.raw(37, 3, i) - 33825.594;
        sum += n;
        squares += n * n;
    }
    EXPECT_NEAR(sum / pixels, 0.0, 0.15);
    EXPECT_NEAR(std::sqrt(squares / pixels), 4.0, 0.15);

    Detector other;
    other.setNoise(4.0, 8);
    int alike = 0;
    for (unsigned i = 0; i < 100; ++i) {
        EXPECT_EQ(detector.raw(37, 3, i), detector.raw(37, 3, i));
        alike += detector.raw(37, 3, i) == detector.raw(37, 4, i) ? 1 : 0;
        alike += detector.raw(37, 3, i) == other.raw(37, 3, i) ? 1 : 0;
    }
    EXPECT_LT(alike, 40); // of 200: another frame or seed is another noise
}
