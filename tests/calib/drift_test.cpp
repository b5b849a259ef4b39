// The drift of counts with the inside temperature, the check of the tables, and calibration mode.
#include "calib/drift.h"
#include "calib/modify.h"
#include "support/host.h"

#include <iterator>

namespace {

using namespace irmtest;

TEST(Drift, countsMoveWithTheInsideTemperature) {
    const struct {
        int range;
        float inside;
        int celsius;
        std::uint16_t ad, toReference, fromReference;
    } cases[] = {
        {0, 36.5F, 100, 8000, 7546, 8453}, // 45.385 a degree
        {1, 33, 300, 9000, 9560, 8439},    // 56.0524 a degree
        {-1, 33, 300, 9000, 9560, 8439},
        {0, 26.5F, 55, 1234, 1234, 1234},
        {2, 43, 55, 1234, 1234, 1234},
        {0, 36.5F, 160, 8000, 6992, 9007},
        {0, 36.5F, 161, 8000, 8000, 9018}, // the polynomial ends there in one direction
        {1, 33, 410, 9000, 9940, 8059},
        {1, 33, 411, 9000, 9000, 8055},
        {0, 36.5F, -20, 100, 293, 0}, // never below 0
        {0, 16.5F, -20, 100, 0, 293},
        {0, -20, 100, 65000, 1574, 62889}, // 67110 has 17 bits
        // Each of these would be one more in the other precision.
        {0, 26.16796875F, 92, 41885, 41898, 41871},
        {0, 9.62109375F, 120, 50451, 51500, 49401},
        {1, 16.69140625F, 52, 22960, 23027, 22893},
        {1, 26.53515625F, 148, 49045, 49341, 48749},
    };
    for (const auto& c : cases) {
        const std::string name = joined(c.range, c.inside, c.celsius, c.ad);
        EXPECT_EQ(irmcore::toReference(c.range, c.inside, c.celsius, c.ad), c.toReference) << name;
        EXPECT_EQ(irmcore::fromReference(c.range, c.inside, c.celsius, c.ad), c.fromReference)
            << name;
    }
    EXPECT_EQ(irmcore::driftSlope(0, 100), 45.385F);
    EXPECT_EQ(irmcore::driftSlope(1, 300), 56.0524F);
    EXPECT_EQ(irmcore::fromReference(0, 1e30F, 100, 1), 65535); // does not fit
}

struct Correction : Host {};

TEST_F(Correction, followsTheRange) {
    const auto both = [&](int range, float inside, int celsius) {
        host->m_tempRange = range;
        return joined(host->BiaoDingXiuzheng(1, 2, inside, celsius, 8000),
                      host->BiaoDingXiuzhengGet(3, 4, inside, celsius, 8000));
    };
    EXPECT_EQ(both(0, 36.5F, 100), "7546 8453");
    EXPECT_EQ(both(1, 33, 171), "8226 7773"); // 22.66528 a degree
    EXPECT_EQ(both(7, 33, 171), "8226 7773");
}

TEST_F(Correction, tablesRiseAndFactorsLieBetween) {
    const auto check = [&](const std::vector<int>& counts, int entry = 0, float factor = 1) {
        host->m_tempInfoTab.tempNum = static_cast<std::uint16_t>(counts.size());
        std::copy(counts.begin(), counts.end(), host->m_tempInfoTab.ad);
        std::fill(std::begin(s_modify), std::end(s_modify), 1.0F);
        s_modify[entry] = factor;
        return host->checkBiaoDingTab();
    };
    for (const auto& falling : std::vector<std::vector<int>>{
             {}, {100, 300, 200}, {100, 100}, {2, 1}, {1, 5, 6, 4}, {40000, 65535, 0}})
        EXPECT_EQ(check(falling, 0, 9), -1); // before the factors
    EXPECT_EQ(check({7}), 0);
    EXPECT_EQ(check({100, 200, 40000}), 0);
    const std::pair<float, int> factors[] = {{0.1F, 0}, // widened it is above 0.1
                                             {0.0999F, -2},   {0, -2}, {-1, -2},
                                             {2.9999998F, 0}, {3, -2}, {NAN, -2}};
    for (const auto& [factor, result] : factors)
        for (const int entry : {0, 199})
            EXPECT_EQ(check({1, 2}, entry, factor), result) << factor;
}

TEST_F(Correction, calibrationModeAddsTheTableTemperature) {
    _fpga_point at{1, 1};
    IrTempStru out{};
    camera.poke(0x1014, word(36000));
    for (const auto& [on, expected] : {std::pair{true, "36000 163.42448"}, {false, "36000 0"}}) {
        host->startBiaoDing(on);
        for (const ParaMode_t mode : {PARA_SYSTEM, PARA_CUSTOM}) {
            host->getSpotTemp(1, 0, mode, {1, 0, 0, 0}, at, out);
            EXPECT_EQ(joined(out.ad, out.biaoDingTemp), expected);
        }
    }
}

} // namespace
