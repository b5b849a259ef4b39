// The object temperature model and its parameters.
#include "measure/breakdown.h"
#include "measure/radiometry.h"
#include "support/host.h"

#include <cmath>

namespace {

using namespace irmtest;

struct OpenModel : TempHandler {
    using TempHandler::m_trans, TempHandler::m_tempRangeMin, TempHandler::m_tempRangeMax;
    using TempHandler::TempHandler;
};

TEST(Model, marksTemperaturesAgainstTheRange) {
    const std::pair<double, const char*> cases[] = {
        {-21.5, "LE -21.5"}, {-22.5, "L -20"},   {-22, "OK -22"}, {-20, "OK -20"},
        {151, "HE 151"},     {152.5, "H 150"},   {152, "OK 152"}, {150, "OK 150"},
        {NAN, "L -20"},      {INFINITY, "H 150"}};
    const irmcore::Model model{1, 0, 25, 25, 1, -20, 150, false};
    for (const auto& [celsius, expected] : cases) {
        IrTempStru reading{"OK", 0, 0, 0, 0, 0};
        irmcore::classify(model, celsius, reading);
        EXPECT_EQ(text(reading), expected);
    }
}

TEST(Model, isTheSameOnlyInEveryParameter) {
    const irmcore::Model model{1, 1.5F, 25, 26, 0.5F, -20, 150, false};
    EXPECT_TRUE(irmcore::sameModel(model, model));
    for (const irmcore::Model& other : {irmcore::Model{2, 1.5F, 25, 26, 0.5F, -20, 150, false},
                                        {1, 1.25F, 25, 26, 0.5F, -20, 150, false},
                                        {1, 1.5F, 24, 26, 0.5F, -20, 150, false},
                                        {1, 1.5F, 25, 27, 0.5F, -20, 150, false},
                                        {1, 1.5F, 25, 26, 1, -20, 150, false},
                                        {1, 1.5F, 25, 26, 0.5F, -19, 150, false},
                                        {1, 1.5F, 25, 26, 0.5F, -20, 151, false},
                                        {1, 1.5F, 25, 26, 0.5F, -20, 150, true}})
        EXPECT_FALSE(irmcore::sameModel(model, other) || irmcore::sameModel(other, model));
}

TEST(Model, beginsWithTheFirstRangeAndKnowsEveryMode) {
    OpenModel handler(nullptr);
    EXPECT_EQ(joined(handler.m_tempRangeMin, handler.m_tempRangeMax), "-20 150");
    const TempSetup setup = handler.getTempSetup();
    EXPECT_EQ(joined(setup.emiss, setup.dist, setup.offset, handler.irAD2Temp(7).status),
              "0.95 5 0 NULL");
    EXPECT_NEAR(handler.getTrans(), 0.998465, 1e-6);
    EXPECT_EQ(joined(PARA_CUSTOM, PARA_SYSTEM), "0 1");
}

TEST(Model, shiftsABareReadingByOffsetAndDrift) {
    irmcore::Model model{1, 1.5F, 25, 25, 1, -20, 150, false};
    const TempInfoTab tab{0, 0, 0, 1000, 0, 0, 2, 30, {0, 1000}, {20, 30}};
    EXPECT_NEAR(irmcore::objectTemp(irmcore::termsOf(model), tab, 0, 0.25F, 500).temp, 26.25, 1e-5);
    EXPECT_NEAR(irmcore::breakDown(model, tab, 0, 0.25F, 500).reading.temp, 26.25, 1e-5);
    EXPECT_EQ(irmcore::objectAd(model, tab, 0, 27.5F).ad, 605); // the drift plays no part
    model.emiss = 0.1F;
    model.reflecTemp = 300; // the object would have to be colder than 0 K
    const IrTempStru dark = irmcore::objectTemp(irmcore::termsOf(model), tab, -0.9F, 0, 500);
    EXPECT_EQ(joined(text(dark), dark.correctAD), "L -20 500"); // a term below 1 counts as 0
}

TEST(Model, checksAndNamesItsParameters) {
    const std::pair<TempSetup, const char*> cases[] = {
        {{1, 5, 0, 0}, ""},
        {{0.001F, 0, -100.001F, 0}, ""},
        {{1, 100000, 100.001F, 0}, ""},
        {{1.0015F, 5, 0, 0}, " emiss para error emiss:1.001500\n"},
        {{1.001F, 5, 0, 0}, " emiss para error emiss:1.001000\n"},
        {{0.0005F, -5, 999, 0}, " emiss para error emiss:0.000500\n"},
        {{NAN, 5, 0, 0}, " emiss para error emiss:nan\n"},
        {{1, 100000.5F, 999, 0}, " dist para error\n"},
        {{1, NAN, 0, 0}, " dist para error\n"},
        {{1, 5, -100.01F, 0}, " offset para error\n"},
        {{1, 5, 100.01F, 0}, " offset para error\n"},
        {{1, 5, NAN, 0}, " offset para error\n"}};
    const std::string head = "measure/temphandler.cpp setTempSetup ";
    for (const auto& [setup, complaint] : cases) {
        TempHandler handler(nullptr);
        int accepted = -1;
        const std::string line = printed([&, s = setup] { accepted = handler.setTempSetup(s); });
        const TempSetup now = handler.getTempSetup();
        const std::string values = joined(accepted, now.emiss, now.dist, now.offset);
        if (*complaint == '\0') {
            EXPECT_EQ(line + values, joined(1, setup.emiss, setup.dist, setup.offset));
            continue;
        }
        EXPECT_EQ(values, "0 0.95 5 0");
        EXPECT_EQ(line.substr(0, head.size()), head);
        EXPECT_EQ(line.substr(line.find(' ', head.size())), complaint);
    }
}

TEST(Model, computesTransmissionAndDewPointWhenTheyChange) {
    OpenModel handler(nullptr);
    EXPECT_EQ(joined(handler.getTrans(), handler.getDewpoint()), "0.9984651 16.695337");
    handler.m_trans = 0.5F;
    EXPECT_EQ(handler.setTempSetup({0.95F, 5, 0, 7}), 1); // the same again
    handler.setReflecTemp(99);
    EXPECT_EQ(handler.getTrans(), 0.5F);
    handler.setEnvTemp(10);
    EXPECT_EQ(joined(handler.getTrans(), handler.getDewpoint()), "0.9991488 16.695337");
    handler.setHumid(1);
    EXPECT_NEAR(handler.getDewpoint(), 10, 1e-4);
    for (const float humid : {0.0F, -0.5F, NAN, INFINITY}) {
        handler.setHumid(humid);
        EXPECT_EQ(handler.getDewpoint(), -237.3F) << humid;
    }
    handler.setEnvTemp(25), handler.setHumid(0.6F);
    handler.setTempSetup({0.95F, 100.9F, 0, 0}); // whole metres
    EXPECT_EQ(handler.getTrans(), 0.9697315F);
    EXPECT_STREQ(handler.irAD2Temp(32768).status, "NULL"); // there is no camera
    EXPECT_STREQ(handler.irTemp2AD(20).status, "NULL");
}

struct HostModel : Host {
    TempHandler& model = *host->m_sysTempHandler;
};

TEST_F(HostModel, convertsWithTheShutterTerm) {
    const std::pair<unsigned, const char*> cases[] = {
        {32768, "OK 30.012743 32768 30633 63401 0"}, {36000, "OK 109.9684 36000 33865 63401 0"},
        {40000, "H 150 40000 37865 63401 0"},        {47192, "H 4001 47192 45057 63401 0"},
        {100, "H 4001 100 63501 63401 0"}, // below 0 and round
        {0x18000, "H 4001 32768 30633 63401 0"}};
    for (const auto& [ad, expected] : cases) {
        const IrTempStru r = model.irAD2Temp(ad);
        EXPECT_EQ(joined(text(r), r.ad, r.correctAD, r.deltaAD, r.biaoDingTemp), expected);
    }
    const std::tuple<float, const char*, int> back[] = {
        {30, "OK 30", 32767},  {100, "OK 100", 35600},   {-20, "L -20", 28672},
        {400, "H 400", 45056}, {-60, "L -60", 28672},    {4000, "H 4000", 45056},
        {-61, "L -61", 0},     {4000.5F, "H 4000.5", 0}, {NAN, "L nan", 0}};
    for (const auto& [celsius, expected, ad] : back)
        EXPECT_EQ(joined(text(model.irTemp2AD(celsius)), model.irTemp2AD(celsius).ad),
                  joined(expected, ad));
    for (const bool on : {true, false}) {
        host->startBiaoDing(on);
        EXPECT_EQ(joined(model.irAD2Temp(32768).biaoDingTemp,
                         host->m_queryTempHandler->irAD2Temp(32768).biaoDingTemp),
                  on ? "82.65018 82.65018" : "0 0");
    }
}

TEST_F(HostModel, takesParametersAndRefreshesTheLimits) {
    const auto limitsAfter = [](auto set) {
        m_levelSpanMinAD = m_levelSpanMaxAD = -1;
        printed(set);
        return joined(m_levelSpanMinAD, m_levelSpanMaxAD);
    };
    const auto take = [&](float emiss) {
        EXPECT_EQ(host->setSystemTempSetup({emiss, 5, 0, 42}), 1);
    };
    EXPECT_EQ(limitsAfter([&] { take(0.95F); }), "30810 37433");
    EXPECT_EQ(limitsAfter([&] { take(2); }), "30810 37433"); // kept, not applied
    EXPECT_EQ(joined(host->m_sysTempSetup.emiss, host->m_sysTempSetup.reserved,
                     host->getSystemTempSetup().emiss),
              "2 42 0.95");
    take(1);
    for (const auto set : {&FPGA::setReflecTemp, &FPGA::setHumid, &FPGA::setEnvTemp})
        EXPECT_NE(limitsAfter([&] { (*host.*set)(1); }), "-1 -1");
    EXPECT_EQ(model.getTrans(), host->m_queryTempHandler->getTrans());
    EXPECT_EQ(model.getDewpoint(), host->m_queryTempHandler->getDewpoint());
    EXPECT_NEAR(model.getDewpoint(), 25, 1e-4); // of before the last
}

} // namespace
