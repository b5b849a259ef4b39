// The temperatures of detector and shutter, and what follows from them.
#include "calib/modify.h"
#include "support/link.h"

#include <cerrno>

namespace {

using namespace irmtest;

struct Tracking : Host {
    /// What the FPGA shows of shutter and sensor, °C.
    void shows(double shutter, double sensor) {
        const auto raw = [](double t) { return word(static_cast<unsigned>(std::lround(t * 256))); };
        camera.poke(0x1C, raw(shutter)).poke(0x1E, raw(sensor));
    }
    std::string counts() {
        const TempInfoTab& t = host->m_tempInfoTab;
        const TempInfoTab used = host->getTempInfoTab();
        EXPECT_EQ(joined(used.ad[0], used.ad[2], used.minAD), joined(t.ad[0], t.ad[2], t.minAD));
        return joined(t.ad[0], t.ad[1], t.ad[2], t.minAD);
    }
    std::string limits() const { return joined(m_levelSpanMinAD, m_levelSpanMaxAD); }
};

TEST_F(Tracking, driftIsSteeperBelow31Degrees) {
    const std::tuple<float, double, const char*> cases[] = {
        {29, 30, "4.8"},   {31, 32, "1.6"}, {30, 31, "1.6"}, {31, 30.99609375, "-0.01875"},
        {30, 26, "-19.2"}, {26, 36, "16"},  {33, 33, "0"}};
    for (const auto& [reference, sensor, drift] : cases) {
        shows(99, sensor);
        host->setSensorTemp(reference, true);
        EXPECT_EQ(host->getDeltaTemp(), 0);
        EXPECT_EQ(joined(host->updateDeltaTemp(), host->getSensorTemp()), joined(drift, reference));
        EXPECT_EQ(joined(host->getDeltaTemp()), drift);
    }
    host->setSensorTemp(4, false);
    camera.failTransfer(1, irmsim::Fault::refused(EIO)); // counts as 0 °C
    printed([&] { EXPECT_EQ(host->updateDeltaTemp(), -19.2F); }, STDERR_FILENO);
}

TEST_F(Tracking, driftIsTakenOffEveryReadingUntilThePictureIsFrozen) {
    _fpga_point at{1, 1};
    IrTempStru out{};
    camera.poke(0x1014, word(32768));
    const auto reading = [&] {
        host->getSpotTemp(1, 0, PARA_SYSTEM, {}, at, out);
        return out.temp;
    };
    shows(30, 32.5);
    host->setSensorTemp(30, true);
    EXPECT_NEAR(reading(), 30.012743, 1e-5);
    EXPECT_EQ(host->updateDeltaTemp(), 4);
    EXPECT_NEAR(reading(), 26.012743, 1e-5);
    EXPECT_EQ(out.ad, 32768);
    camera.poke(0x14, {1}); // the register counts, not what the façade was told
    EXPECT_FALSE(host->getFreezeImageStatus());
    EXPECT_NEAR(reading(), 30.012743, 1e-5);
    camera.unpoke(0x14);
    EXPECT_EQ(transfersOf([&] { EXPECT_EQ(host->getDeltaTemp(), 0); }), "R14:1"); // it is gone
    EXPECT_EQ(host->updateDeltaTemp(), 4);
    EXPECT_NEAR(reading(), 26.012743, 1e-5);
}

TEST_F(Tracking, theVskFollowsTheInsideTemperature) {
    const struct {
        int generation;
        float reference;
        double shutter, sensor;
        unsigned short vsk; // that the core has
        const char* frames;
        float after; // the reference
    } cases[] = {
        {1, 19, 22, 18, 1875, "", 19},
        {2, 19, 22, 18, 1875, "", 19},
        {0, 40, 41.5, 40.25, 1875, "", 40},      // 0.875 above
        {0, 19, 22, 18, 1875, "77 78:5507", 20}, // 1877.5
        {-1, 19, 22, 18, 1875, "77 78:5507", 20},
        {0, 32, 30, 30, 1875, "77 78:4B07", 30},        // 1867
        {0, 30, 25, 25, 1875, "77 78:3F07", 25},        // 1855: 25 is not below 25
        {0, 30, 24.5, 24.5, 1875, "77 78:4507", 24.5F}, // 1861.25
        {0, 21, 20, 20, 1875, "77 78:5007", 20},        // 1872.5
        {0, 40, 20, 20, 5, "77 78:0000", 20},           // -45
        {0, 40, 41, 41, 65535, "77 78:0300", 41},       // 65539
    };
    for (const auto& c : cases) {
        start();
        host->getSerial()->setVSK(c.vsk);
        ASSERT_TRUE(received(camera, 1));
        camera.clearReceived();
        shows(c.shutter, c.sensor);
        host->m_coreVersionNum = c.generation;
        host->m_deltaTemp = 1;
        m_vskTemp = c.reference;
        const bool older = c.generation == 0 || c.generation == -1;
        EXPECT_EQ(transfersOf([&] { host->updateSensorTemp(false); }),
                  older ? "R1E:2 R1C:2" : "R1E:2");
        EXPECT_EQ(joined(m_vskTemp, host->m_deltaTemp), joined(c.reference, 0));
        EXPECT_EQ(transfersOf([&] { host->updateSensorTemp(true); }),
                  older ? "R1E:2 R1C:2" : "R1E:2");
        EXPECT_EQ(joined(m_vskTemp, host->getSensorTemp()), joined(c.after, c.sensor));
        host.reset(); // what waits is sent
        EXPECT_EQ(frames(camera), c.frames) << c.generation << c.reference;
        const bool sent = std::string(c.frames).size() > 2;
        EXPECT_EQ(output.rfind("============set vsk:", 0) == 0, sent) << output;
        camera.clearReceived();
    }
    start();
    camera.coreGarbled(3);
    host->m_coreVersionNum = 0;
    shows(22, 18);
    m_vskTemp = 19;
    EXPECT_EQ(printed([&] { host->updateSensorTemp(true); }), "");
    host.reset();
    EXPECT_EQ(joined(frames(camera), m_vskTemp), "77 20"); // moved, and nothing sent
}

TEST_F(Tracking, theTableIsBroughtToTheInsideTemperature) {
    const std::string head = "[ParaSet]\nMaxAD=B000\nMinTemp=-20\nMaxTemp=150\nTempNum=3\n";
    write("etc/calc_len0_temp0.conf", head + "[Temp2AD]\n-20=7000\n30=8000\n150=A000\n");
    start();
    EXPECT_EQ(counts(), "28672 32768 40960 28672");
    shows(40, 33); // 36.5: the first moves by -193.958, the last by 904.905
    host->m_deltaTemp = 1;
    EXPECT_EQ(transfersOf([&] { host->updateShutterTemp(false); }), "R1C:2 R1E:2");
    EXPECT_EQ(counts(), "28478 32768 41864 28284"); // the first twice for the lowest bound
    EXPECT_EQ(joined(host->getShutterTemp(), host->getSensorTemp(), host->m_deltaTemp), "40 30 1");
    printed([&] { host->updateShutterTemp(true); }); // anew from the file
    EXPECT_EQ(counts(), "28478 32768 41864 28284");
    write("etc/calc_len0_temp0.conf", head + "[Temp2AD]\n30=8000\n40=8100\n");
    printed([&] { host->updateShutterTemp(true); });
    EXPECT_EQ(counts(), "32768 33077 0 32769"); // 53.23 up at 40 °C, 1.377 at 30 °C
    std::filesystem::remove("etc/calc_len0_temp0.conf");
    shows(17, 16);
    printed([&] { host->updateShutterTemp(true); });
    EXPECT_EQ(counts(), "0 0 0 128"); // 128.61 of an entry that is not there
    write("etc/calc_len0_temp1.conf", head + "[Temp2AD]\n-20=7000\n30=8000\n150=A000\n");
    host->m_tempRange = 1;
    shows(33, 33);
    printed([&] { host->updateShutterTemp(true); });
    EXPECT_EQ(counts(), "28718 32768 40776 28764"); // 46.49 up and 183.7 down
}

TEST_F(Tracking, theShutterTemperatureIsTheInsideTemperatureTimesItsFactor) {
    std::string factors;
    for (int k = 0; k < 200; ++k)
        factors += "Averg_" + joined(k * 0.5 - 20) + "=" + std::to_string(k + 1) + "\n";
    write("Parameter/Modify", factors);
    const std::tuple<double, double, const char*> cases[] = {
        {-25, -25, "1 -25"},     {-20, -20, "1 -20"},   {0, -38.5, "2 -38.5"},  {20.5, 0.125, "61"},
        {79.875, 79.875, "200"}, {80, 80, "200 16000"}, {24, 25.5, "90 2227.5"}};
    for (const auto& [shutter, sensor, expected] : cases) {
        shows(shutter, sensor);
        printed([&] { host->updateShutterTemp(true); });
        const std::string got = joined(host->getModifyValue(), host->m_modifyShutterTemp);
        EXPECT_EQ(got.substr(0, std::string(expected).size()), expected);
        EXPECT_EQ(host->getModifyShutterTemp(), host->m_modifyShutterTemp);
    }
}

TEST_F(Tracking, aFrozenPictureKeepsItsShutterTemperature) {
    write("Parameter/Modify", "Averg_0=2\n");
    start();
    EXPECT_EQ(joined(host->getModifyShutterTemp(), limits()), "53 28672 36662");
    EXPECT_EQ(transfersOf([&] { EXPECT_EQ(host->freeze_image(true), 1); }), "R14:1 W14:1=01");
    EXPECT_TRUE(host->getFreezeImageStatus());
    shows(43, 30); // 36.5 inside
    m_levelSpanMaxAD = m_levelSpanMinAD = 1;
    printed([&] { host->updateShutterTemp(true); });
    EXPECT_EQ(joined(host->m_modifyShutterTemp, host->getModifyShutterTemp()), "73 53");
    EXPECT_EQ(counts(), "28478 49814 0 28284"); // is in force; 475.843 up at 400 °C
    EXPECT_EQ(limits(), "28672 36662");         // the reload's, from the table as it was
    EXPECT_EQ(transfersOf([&] { EXPECT_EQ(host->freeze_image(false), 1); }), "R14:1 W14:1=00");
    EXPECT_EQ(joined(host->getModifyShutterTemp(), limits()), "73 28672 36662");
    printed([&] { host->updateShutterTemp(true); });
    EXPECT_EQ(limits(), "28478 36787");
    camera.poke(0x14, {1}); // the bit alone does not hold it
    shows(20, 30);
    printed([&] { host->updateShutterTemp(true); });
    EXPECT_EQ(host->getModifyShutterTemp(), 50);
    start(); // but construction asks for it
    EXPECT_EQ(joined(host->m_modifyShutterTemp, host->getModifyShutterTemp()), "50 30");
    EXPECT_TRUE(host->getFreezeImageStatus());
}

TEST_F(Tracking, settersKeepWhatTheyAreGiven) {
    host->m_deltaTemp = 7;
    host->setSensorTemp(33, false);
    host->setShutterTemp(44);
    host->setLenTemp(55);
    EXPECT_EQ(joined(host->getSensorTemp(), host->m_deltaTemp, host->getShutterTemp(),
                     host->getModifyShutterTemp(), host->getLenTemp()),
              "33 0 44 29.999998 55");
    EXPECT_EQ(joined(host->getTempInfoTab().lenTemp, host->getTempInfoTab().sensorTemp), "55 30");
    EXPECT_EQ(transfersOf([&] { host->start_arm_lcd('\xFF'); }), "W30:1=01");
    EXPECT_EQ(m_shutterTempModify, 1.0);
}

} // namespace
