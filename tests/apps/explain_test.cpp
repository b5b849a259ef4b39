#include "apps/explain/opened.h"

#include "measure/literal.h"
#include "measure/radiometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <string>

namespace {

namespace app = irmcore::app;
using irmcore::Breakdown;
using irmcore::Model;

bool sameBits(const IrTempStru& a, const IrTempStru& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

/// The reading that a breakdown's parts add up to, in the order that its header states.
IrTempStru sumOf(const Breakdown& b, const TempInfoTab& table, const Model& model) {
    IrTempStru sum{};
    const unsigned corrected = b.ad + static_cast<unsigned>(b.shift);
    sum.ad = static_cast<std::uint16_t>(b.ad);
    sum.correctAD = static_cast<std::uint16_t>(corrected);
    sum.deltaAD = static_cast<std::uint16_t>(b.shift);
    const auto end = [&sum](const char* status, float temp) {
        std::strcpy(sum.status, status);
        sum.temp = temp;
        return sum;
    };
    if (b.segment < 0)
        return b.segment == irmcore::belowSegments ? end("L", -4001.0F) : end("H", 4001.0F);
    const int i = b.segment;
    const int run = table.ad[i + 1] - table.ad[i];
    const auto product = static_cast<float>((std::int64_t{corrected} - table.ad[i]) *
                                            (table.temp[i + 1] - table.temp[i]));
    const float t = (run == 0 ? 0.0F : product / static_cast<float>(run)) + table.temp[i];
    const double body = std::pow(static_cast<double>(t) + 273.15, 4.0);
    const auto radicand = static_cast<float>(0.95 * body + 0.05 * std::pow(298.15, 4.0));
    const auto seen = static_cast<float>(std::pow(static_cast<double>(radicand), 0.25) - 273.15);
    EXPECT_EQ(t, b.table.celsius);
    EXPECT_EQ(seen, b.seen);
    const double power = (b.observed - b.reflected) - b.air;
    if (power < 0.0)
        return end("L", static_cast<float>(model.rangeMin));
    const double v = std::pow(power, 0.25) - 273.15 + static_cast<double>(b.offset) -
                     static_cast<double>(b.deltaTemp);
    const double low = model.rangeMin;
    const double high = model.rangeMax;
    const auto temp = static_cast<float>(v);
    if (std::isnan(v) || v < low - 2.0)
        return end("L", static_cast<float>(low));
    if (v < low && v != low - 2.0)
        return end("LE", temp);
    if (v > high + 2.0)
        return end("H", static_cast<float>(high));
    return end(v > high && v != high + 2.0 ? "HE" : "OK", temp);
}

class Cases {
public:
    double between(double low, double high) {
        return low + (high - low) * (static_cast<double>(m_engine()) / 4294967296.0);
    }
    int whole(int low, int high) { return static_cast<int>(std::floor(between(low, high + 1.0))); }
    float single(double low, double high) { return static_cast<float>(between(low, high)); }
    bool oneIn(int n) { return whole(1, n) == 1; }

    TempInfoTab table() {
        TempInfoTab table{};
        table.tempNum = static_cast<std::uint16_t>(oneIn(50) ? whole(0, 100) : whole(2, 60));
        table.minAD = static_cast<std::uint16_t>(oneIn(4) ? whole(0, 32000) : 0);
        table.maxAD = static_cast<std::uint16_t>(oneIn(4) ? whole(34000, 65535) : 65535);
        const bool hostile = oneIn(10); // neither rising nor even
        int ad = whole(10000, 28000);
        int temp = whole(-8, 0) * 10;
        for (int i = 0; i < 60; ++i) {
            table.ad[i] = static_cast<std::uint16_t>(hostile ? whole(0, 65535) : ad);
            table.temp[i] = static_cast<std::int16_t>(hostile ? whole(-32768, 32767) : temp);
            ad = std::min(65535, ad + whole(0, 1400));
            temp += 10;
        }
        return table;
    }

    Model model() {
        Model model{};
        model.emiss = oneIn(10) ? single(0.001, 0.1) : single(0.3, 1.0);
        model.offset = oneIn(2) ? 0.0F : single(-100, 100);
        model.envTemp = single(-40, 50);
        model.reflecTemp = single(-40, 100);
        model.trans = oneIn(20) ? static_cast<float>(whole(0, 1)) : single(0.2, 1.0);
        model.rangeMin = oneIn(2) ? -20 : 0;
        model.rangeMax = model.rangeMin == 0 ? 400 : 150;
        return model;
    }

private:
    std::mt19937 m_engine{1};
};

TEST(Explain, thePartsAddUpToTheReadingBitByBit) {
    Cases cases;
    std::map<std::string, int> met;
    for (int n = 0; n < 100000; ++n) {
        const TempInfoTab table = cases.table();
        Model model = cases.model();
        const float shutter = cases.single(-40000, 5000) * (cases.oneIn(20) ? 1.0F : 0.02F);
        const float delta = cases.oneIn(2) ? 0.0F : cases.single(-20, 20);
        const auto ad = static_cast<unsigned>(cases.whole(0, 65535));
        const Breakdown b = irmcore::breakDown(model, table, shutter, delta, ad);
        if (cases.oneIn(3) && b.celsius > -300.0 && b.celsius < 3000.0) {
            // Limits close by, so that all statuses are met.
            const int near = static_cast<int>(b.celsius) + cases.whole(-4, 4);
            (cases.oneIn(2) ? model.rangeMin : model.rangeMax) = near;
        }
        const Breakdown moved = irmcore::breakDown(model, table, shutter, delta, ad);
        const IrTempStru reading =
            irmcore::objectTemp(irmcore::termsOf(model), table, shutter, delta, ad);
        ASSERT_TRUE(sameBits(moved.reading, reading)) << n;
        ASSERT_TRUE(sameBits(sumOf(moved, table, model), reading))
            << n << ": " << reading.status << ' ' << reading.temp;
        ASSERT_EQ(moved.shift, static_cast<int>(shutter));
        ++met[reading.status];
        met["wrapped"] += moved.corrected > 65535U;
        met["no power"] += moved.power < 0.0;
    }
    for (const char* what : {"OK", "L", "LE", "HE", "H", "wrapped", "no power"})
        EXPECT_GT(met[what], 100) << what;
}

TEST(Explain, isTheFacadesReadingInAnyState) {
    app::CameraChoice choice;
    for (const int range : {0, 1})
        for (const int lens : {0, 1}) {
            choice.range = range;
            choice.lens = lens;
            choice.shutter = 31.0 + 9 * lens;
            choice.sensor = 33.5;
            app::OpenedCamera camera(choice);
            ASSERT_EQ(camera.error(), QString());
            app::Parameters parameters = camera.parameters();
            parameters.setup.emiss = 0.7F;
            parameters.setup.dist = 70.9F;
            parameters.humid = 0.8F;
            parameters.reflecTemp = 40.0F;
            const app::Basis basis = camera.basis();
            TempHandler handler(&camera.host());
            ASSERT_TRUE(app::load(handler, parameters));
            handler.setTempRangeMinMax(basis.limits.min, basis.limits.max);
            for (unsigned ad = 0; ad < 65536; ad += 61)
                ASSERT_TRUE(
                    sameBits(app::breakDown(basis, parameters, ad).reading, handler.irAD2Temp(ad)))
                    << ad;
            EXPECT_EQ(app::airOf(parameters).trans, handler.getTrans());
            EXPECT_EQ(app::airOf(parameters).water * app::airOf(parameters).carbonDioxide,
                      handler.getTrans());
        }
}

TEST(Explain, errorsHaveTheEffectsOfAnIndependentCalculation) {
    // A table of two entries: -20 °C at 28672, 400 °C at 45056.
    const app::Basis basis{IRPara().getADToTempTab(), 0.0F, 0.5F, {0, 400}};
    const app::Parameters parameters{{0.8F, 100.0F, 1.0F, 0}, 0.5F, 20.0F, 30.0F};
    const auto effects = [&](app::Parameters moved, unsigned ad,
                             const std::array<double, app::sources>& errors) {
        return app::uncertaintyOf(basis, moved, ad, errors);
    };
    const std::array<double, app::sources> errors{0.02, 1.0, 0.1, 2.0, 2.0, 0.1, 0.2, 2.0};
    EXPECT_NEAR(app::breakDown(basis, parameters, 0x9000).celsius, 209.52001, 2e-4);
    const app::Uncertainty whole = effects(parameters, 0x9000, errors);
    const std::array<double, app::sources> expected{2.543515, 0.023315, 0.305471, 0.167036,
                                                    0.124269, 0.1,      0.2,      0.055165};
    for (std::size_t i = 0; i < app::sources; ++i)
        EXPECT_NEAR(whole.effects[i], expected[i], 5e-5) << app::sourceInfos[i].name;
    EXPECT_NEAR(whole.combined, 2.580641, 1e-4);

    // Where there is nothing to one side, and parts of a count.
    app::Parameters edge = parameters;
    edge.setup.emiss = 1.0F;
    EXPECT_NEAR(effects(edge, 0x9000, errors).effects[0], 1.895683, 5e-5);
    edge = parameters;
    edge.setup.dist = 0.0F;
    EXPECT_NEAR(effects(edge, 0x9000, errors).effects[1], 0.022934, 5e-5);
    EXPECT_NEAR(effects(parameters, 0xB000, errors).effects[7], 0.054113, 5e-5);
    const app::Uncertainty noise = effects(parameters, 0x9000, {0, 0, 0, 0, 0, 0, 0, 0.5});
    EXPECT_NEAR(noise.combined, 0.013791, 2e-5);
    EXPECT_TRUE(std::isnan(effects(parameters, 0xB001, errors).combined)); // outside the table
}

TEST(Explain, theAirIsMadeOfWaterAndCarbonDioxide) {
    struct Case {
        float envTemp, humid, dist;
        double precipitable, water, path, carbonDioxide;
    };
    const Case cases[] = {
        {25.0F, 0.6F, 5.0F, 0.069, 0.99884425, 0.005, 0.99962043},
        {25.9F, 0.6F, 500.9F, 6.9, 0.89356808, 0.5, 0.965717}, // whole degrees and metres
        {20.0F, 0.5F, 100.0F, 0.865, 0.98559991, 0.1, 0.9924085},
        {-60.0F, 1.0F, 1000.0F, 0.0431, 0.99927808, 1.0, 0.939283}, // the coldest of the table
        {25.0F, 0.6F, 0.9F, 0.0, 1.0, 0.0, 1.0},
    };
    for (const Case& c : cases) {
        const app::Air air = app::airOf({{0.9F, c.dist, 0.0F, 0}, c.humid, c.envTemp, 25.0F});
        EXPECT_NEAR(air.precipitable, c.precipitable, 1e-6) << c.dist;
        EXPECT_NEAR(air.water, c.water, 1e-6) << c.dist;
        EXPECT_NEAR(air.path, c.path, 1e-8) << c.dist;
        EXPECT_NEAR(air.carbonDioxide, c.carbonDioxide, 1e-6) << c.dist;
        EXPECT_EQ(air.trans, air.water * air.carbonDioxide) << c.dist;
    }
}

} // namespace
