// Construction, versions, and the temperatures that the façade tracks.
#include "sim/cameradir.h"
#include "support/host.h"

namespace {

using namespace irmtest;

TEST(Startup, needsNeitherDeviceNorFiles) {
    const WorkDir dir;
    irmsim::Camera camera;
    camera.devicePresent(false).install();
    std::optional<Probe> host;
    std::string trace;
    EXPECT_EQ(printed([&] { trace = printed([&] { host.emplace(); }); }, STDERR_FILENO),
              "open fpga device failed: No such file or directory\n");
    EXPECT_NE(trace.find("] etc/calc_len6_temp0.conf is no exist\n"), std::string::npos);
    EXPECT_NE(trace.find("] etc/calc_len6_temp0_default.conf\n"), std::string::npos);
    EXPECT_EQ(host->getDllVersion(), QLatin1String("QRV20180705.2.00"));
    for (const QString& text : {host->getCoreFPGAVerisonStr(), host->getCoreCpuVerisonStr()})
        EXPECT_TRUE(text.isEmpty() && !text.isNull());
    EXPECT_EQ(joined(host->getCoreVersionNum(), host->getLenIndex(), host->m_tempRange), "1 6 0");
    EXPECT_EQ(joined(host->m_level, host->m_span, host->getTempInfoTab().tempNum), "0 255 0");
    EXPECT_EQ(joined(host->getSensorTemp(), m_levelSpanMaxAD, m_levelSpanMinAD), "0 0 0");
    for (unsigned ad = 0; ad < 65536; ad += 997)
        EXPECT_FALSE(irmcore::isOk(host->m_sysTempHandler->irAD2Temp(ad))) << ad;
    EXPECT_TRUE(std::filesystem::is_empty(".")); // nothing is written
}

/// A host of a camera with sample files.
struct Sample : testing::Test {
    void start(int range) {
        std::string error;
        EXPECT_TRUE(irmsim::writeCameraDirectory(".", {irmsim::Surroundings{}, range}, error));
        camera.range(range).install();
        printed([&] { host.emplace(); });
    }
    /// Status and temperature, in whole degrees, of a uniform scene.
    std::string reading(double celsius) {
        camera.scene(irmsim::Scene::uniform(160, 120, celsius));
        _fpga_point at{80, 60};
        IrTempStru out{}, own{};
        host->getSpotTemp(1, 0, PARA_SYSTEM, {}, at, out);
        host->getSpotTemp(1, 0, PARA_CUSTOM, {0.95F, 5, 0, 0}, at, own);
        EXPECT_EQ(text(out), text(own));
        return joined(out.status, std::lround(out.temp));
    }
    WorkDir dir;
    irmsim::Camera camera;
    std::optional<Probe> host;
};

TEST_F(Sample, isReadInTheOrderOfItsParts) {
    camera.poke(0x70, word(30000)).poke(0x72, word(4194));
    start(0);
    EXPECT_EQ(transfers(camera), "R1E:2 R14:1 R0F:1 R1C:2 R1E:2 R70:2 R72:2");
    EXPECT_EQ(joined(host->getLenIndex(), host->m_level, host->m_span), "0 30000 1000");
    EXPECT_EQ(joined(host->getSensorTemp(), host->getModifyShutterTemp()), "26.5 26.5");
    camera.lensCode(1).clearLog();
    EXPECT_EQ(host->getLenIndex(), 0); // as last stored
    EXPECT_EQ(transfers(camera), "");
}

TEST_F(Sample, measuresWithinTheLimitsOfItsRange) {
    start(0);
    for (const auto& [celsius, expected] : std::vector<std::pair<double, const char*>>{
             {37, "OK 37"}, {-21, "LE -21"}, {-30, "L -20"}, {151, "HE 151"}, {160, "H 150"}})
        EXPECT_EQ(reading(celsius), expected);
    host->setTempRangeMinMax(30, 40);
    EXPECT_EQ(reading(20), "L 30");
    camera.uninstall();
    std::filesystem::remove_all("etc"), std::filesystem::remove_all("Parameter");
    start(1);
    for (const auto& [celsius, expected] : std::vector<std::pair<double, const char*>>{
             {200, "OK 200"}, {-1, "LE -1"}, {-10, "L 0"}, {401, "HE 401"}, {410, "H 400"}})
        EXPECT_EQ(reading(celsius), expected);
}

TEST_F(Sample, withoutALensHasLensMinusOne) {
    camera.lensCode(7);
    write("etc/calc_len-1_temp0.conf", twoEntries);
    start(0);
    EXPECT_EQ(joined(host->getLenIndex(), host->getTempInfoTab().ad[1]), "-1 45056");
}

TEST_F(Host, theInsideTemperatureMovesTheShutterTerm) {
    camera.temperatures(20, 30);
    host->m_deltaTemp = 7;
    EXPECT_EQ(transfersOf([&] { host->updateShutterTemp(false); }), "R1C:2 R1E:2");
    EXPECT_EQ(joined(host->getShutterTemp(), host->getSensorTemp(), host->getModifyShutterTemp()),
              "20 30 25"); // the sensor's is the reference
    EXPECT_EQ(joined(host->m_irPara.readShutterDeltaAD(), m_levelSpanMaxAD), "-2340.5723 37804");
    host->setSensorTemp(33, false);
    host->setLenTemp(55);
    const TempInfoTab tab = host->getTempInfoTab();
    EXPECT_EQ(joined(host->getSensorTemp(), host->m_deltaTemp, tab.sensorTemp, tab.lenTemp),
              "33 0 30 55");
    camera.poke(0x14, {1});
    start(); // frozen: the term waits
    EXPECT_EQ(joined(host->m_modifyShutterTemp, host->getModifyShutterTemp()), "25 30");
    EXPECT_EQ(transfersOf([&] { host->start_arm_lcd('\xFF'); }), "W30:1=01");
}

} // namespace
