// The calibration table in memory, its drift terms, and the air's transmission.
#include "measure/irpara.h"
#include "measure/literal.h"
#include "measure/radiometry.h"
#include "measure/tablelookup.h"
#include "support/host.h"

#include <cmath>

namespace {

using namespace irmtest;

using Entries = std::vector<std::pair<int, int>>;

TempInfoTab table(const Entries& entries) {
    TempInfoTab tab{};
    tab.maxAD = 65535;
    for (const auto& [temp, ad] : entries) {
        tab.temp[tab.tempNum] = static_cast<std::int16_t>(temp);
        tab.ad[tab.tempNum++] = static_cast<std::uint16_t>(ad);
    }
    return tab;
}

TEST(Table, startsWithTwoEntries) {
    IRPara para;
    const TempInfoTab t = para.getADToTempTab();
    EXPECT_EQ(joined(t.lenTemp, t.sensorTemp, t.shutterTemp, t.maxAD, t.minAD, t.reserved,
                     t.tempNum, t.baseTemp, t.ad[0], t.ad[1], t.ad[2], t.temp[0], t.temp[1]),
              "30 30 30 45056 0 0 2 30 28672 45056 0 -20 400");
    EXPECT_EQ(text(para.calTemp(0x9000)), "OK 185.12852");
    EXPECT_EQ(para.calAD(185.12852F).ad, 0x9000);
    const IrTempStru wide = para.calTemp(0x19000); // cut to 16 bits for the record alone
    EXPECT_EQ(joined(text(wide), wide.ad), "H 4001 36864");
}

TEST(Table, termsFollowTheTemperaturesAndTheTable) {
    IRPara para;
    EXPECT_EQ(joined(para.setShutterTemp(30), para.calShutterDeltaAD(), para.calSensorDeltaAD()),
              "1 1 1");
    EXPECT_EQ(para.readShutterDeltaAD(), -2135.5215F);
    EXPECT_NEAR(para.calTemp(32768 - 2135).temp, 30.0127, 1e-4);
    const TempInfoTab first = para.getADToTempTab();
    TempInfoTab other = table({{0, 30000}, {100, 40000}});
    other.lenTemp = other.sensorTemp = other.shutterTemp = 99; // are not taken over
    EXPECT_EQ(para.setADToTempTab(other), 1);
    const TempInfoTab now = para.getADToTempTab();
    EXPECT_EQ(joined(now.lenTemp, now.sensorTemp, now.shutterTemp, now.ad[1]), "30 30 30 40000");
    EXPECT_EQ(para.readShutterDeltaAD(), 257.640625F);
    para.setADToTempTab(first);
    const std::tuple<float, bool, float> steps[] = {
        {40, false, 408.64648F}, {30, false, 0}, {40, true, 0}, {30, false, -408.64648F}};
    for (const auto& [celsius, reset, term] : steps) {
        para.setSensorTemp(celsius, reset);
        EXPECT_EQ(para.readSensorDeltaAD(), term);
    }
    para.setLenTemp(99);
    EXPECT_EQ(joined(para.readSensorDeltaAD(), para.getADToTempTab().lenTemp), "-408.64648 99");
    para.setADToTempTab(first);
    EXPECT_EQ(para.readSensorDeltaAD(), 0);
}

TEST(Table, keepsTheTemperaturesItIsGiven) {
    IRPara para;
    const auto kept = [&para] {
        const TempInfoTab tab = para.getADToTempTab();
        EXPECT_EQ(para.getShutterTemp(), tab.shutterTemp);
        return joined(tab.shutterTemp, tab.sensorTemp, tab.lenTemp);
    };
    EXPECT_EQ(kept(), "30 30 30");
    para.setShutterTemp(41.5F);
    para.setSensorTemp(33.25F, true);
    para.setLenTemp(-7);
    EXPECT_EQ(kept(), "41.5 33.25 -7");
    para.setShutterTemp(-12.5F);
    EXPECT_EQ(kept(), "-12.5 33.25 -7");
}

TEST(Table, whatNoSegmentHoldsIsOutside) {
    const TempInfoTab two = table({{0, 1000}, {10, 2000}});
    EXPECT_EQ(text(irmcore::adToTableTemp(two, 999)), "L -4001");
    EXPECT_EQ(text(irmcore::adToTableTemp(two, 2001)), "H 4001");
    for (const TempInfoTab& tab : {table({}), table({{20, 1000}})})
        EXPECT_EQ(text(irmcore::adToTableTemp(tab, 1000)) + ' ' +
                      joined(irmcore::literal::findTemp(tab, 1000).celsius),
                  "L -4001 -4001");
    EXPECT_STREQ(irmcore::tempToTableAd(table({}), 20).status, "L");
    // Neighbours alike: the lower one holds. 25 °C is the same in the table.
    const TempInfoTab alike = table({{25, 1000}, {40, 1000}});
    EXPECT_EQ(text(irmcore::adToTableTemp(alike, 1000)), "OK 25");
    EXPECT_EQ(irmcore::literal::findTemp(alike, 1000).celsius, 25);
    EXPECT_EQ(irmcore::tempToTableAd(table({{25, 2000}, {25, 3000}, {30, 4000}}), 25).ad, 2000);
    EXPECT_EQ(irmcore::tableDeltaAd(table({{30, 1000}, {40, 2000}}), 10), 0);     // no slope
    EXPECT_EQ(irmcore::tableDeltaAd(table({{0, 30000}, {25, 40000}}), 25), 7232); // its last
    const TempInfoTab falling = table({{10, 3000}, {20, 2000}});
    EXPECT_EQ(text(irmcore::adToTableTemp(falling, 3000)), "H 4001");
    EXPECT_EQ(text(irmcore::adToTableTemp(falling, 2999)), "L -4001");
    Entries full;
    for (int i = 0; i < 60; ++i)
        full.emplace_back(10 * i - 300, 1000 + i);
    EXPECT_EQ(text(irmcore::adToTableTemp(table(full), 1059)), "OK 283.3985");
}

TEST(Table, countsInTheLastSegmentAreFoundAsAnyOther) {
    TempInfoTab rising = table({{0, 1000}, {10, 2000}, {20, 2000}, {30, 3000}, {40, 4000}});
    rising.minAD = 1500;
    rising.maxAD = 3500;
    const TempInfoTab falling = table({{0, 2000}, {10, 3000}, {20, 2500}, {30, 4000}});
    const std::tuple<const TempInfoTab&, unsigned, unsigned, float> cases[] = {
        {rising, 2500, 2000, 10},     {rising, 2500, 2001, 20.01F}, {rising, 2500, 3000, 30},
        {rising, 2500, 3001, 30.01F}, {rising, 1600, 1499, -4001},  {rising, 1600, 1500, 5},
        {rising, 3400, 3501, 4001},   {rising, 3400, 3500, 35},     {rising, 1499, 2500, 25},
        {falling, 3500, 2700, 7}, // in the first segment that holds it
    };
    for (const auto& [tab, before, ad, celsius] : cases) {
        irmcore::TableCursor cursor(tab);
        cursor.find(before);
        EXPECT_EQ(cursor.find(ad).celsius, celsius) << before << ' ' << ad;
        EXPECT_EQ(irmcore::literal::findTemp(tab, ad).celsius, celsius) << ad;
    }
}

TEST(Table, noTableGivesAReadingThatIsNoNumber) {
    std::vector<TempInfoTab> hostile{table({}),
                                     table({{20, 5}}),
                                     table({{10, 1000}, {20, 1000}, {30, 1000}}),
                                     table({{10, 1000}, {10, 2000}, {10, 3000}}),
                                     table({{30, 3000}, {20, 2000}, {10, 1000}}),
                                     table({{10, 3000}, {20, 2000}, {30, 1000}}),
                                     table({{-32768, 0}, {32767, 65535}, {-32768, 1}}),
                                     table({{30, 7}, {-300, 9}, {30, 65535}}),
                                     table({{20, 5}})};
    hostile.back().tempNum = 65535;
    for (const TempInfoTab& tab : hostile) {
        for (const float trans : {1.0F, 1e-40F, 0.0F, NAN})
            for (const float term : {0.0F, -2135.5F, 1e38F, NAN})
                for (unsigned ad = 0; ad < 66000; ad += 211) {
                    const irmcore::Model model{0.95F, 0, 25, 25, trans, -20, 150, true};
                    const IrTempStru reading =
                        irmcore::objectTemp(irmcore::termsOf(model), tab, term, 0, ad);
                    ASSERT_TRUE(std::isfinite(reading.temp + reading.biaoDingTemp)) << ad;
                }
        for (const float t : {NAN, INFINITY, -INFINITY, 1e38F, -300.0F, 0.0F, 30.0F, 4e3F})
            for (const float offset : {0.0F, NAN, 1e30F}) {
                const irmcore::Model model{1, offset, 25, 25, 1, -20, 150, false};
                const IrTempStru back = irmcore::objectAd(model, tab, 0, t);
                ASSERT_FALSE(irmcore::isOk(back) && !std::isfinite(t + offset)) << t;
            }
        EXPECT_TRUE(std::isfinite(irmcore::tableDeltaAd(tab, 30)));
    }
}

TEST(Air, isDefinedForEveryArgument) {
    const std::tuple<float, int, int> brackets[] = {
        {50, 8, 8},    {50.5F, 8, 9},     {-1, 0, 0}, {0.2F, 1, 2}, {0.19999999F, 0, 1},
        {200, 10, 10}, {INFINITY, 9, 10}, {NAN, 7, 7}}; // not a number: as they were
    CalcTrans air;
    for (const auto& [x, below, above] : brackets) {
        int lower = 7, upper = 7;
        air.findOrderTable(lower, upper, x);
        EXPECT_EQ(joined(lower, upper), joined(below, above)) << x;
    }
    EXPECT_EQ(joined(air.getDistanceFromLine(-1), air.getDistanceFromLine(1),
                     air.getDistanceFromLine(10), air.getDistanceFromLine(11)),
              "0 0.2 200 200");
    EXPECT_EQ(joined(air.calcH2OTrans(272.7F), air.calcCO2Trans(1)), "0 0.939283");
    for (const float env : {NAN, INFINITY, -INFINITY, 1e38F})
        for (const float humid : {0.6F, NAN, INFINITY, -INFINITY, -1.0F})
            for (const int dist : {-2147483647 - 1, 0, 5, 2147483647}) {
                const float trans = air.getTrans(env, humid, dist);
                EXPECT_TRUE(trans >= 0 && trans <= 1) << joined(env, humid, dist);
            }
}

} // namespace
