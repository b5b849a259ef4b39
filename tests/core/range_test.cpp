// Ranges, lenses and VSK, and the start of the core, for each generation of it.
#include "core/vsk.h"
#include "support/link.h"

namespace {

using namespace irmtest;

struct Range : Host {
    Range() { m_vskValue0 = m_vskValue1 = 0; }
    /// A host of a core of this generation, with the sensor at so many °C.
    void start(int generation, double sensor, const std::string& settings = "") {
        write("Parameter/Setting", settings);
        Host::start();
        host->m_coreVersionNum = generation;
        camera.poke(0x1E, word(static_cast<unsigned>(std::lround(sensor * 256))));
        camera.clearReceived();
        m_vskTemp = 50;
    }
    /// The frames that something sends; also its transfers.
    template <typename Run>
    std::string framesOf(Run run) {
        made = transfersOf(run);
        range = host->m_tempRange;
        host.reset(); // what waits is sent
        return frames(camera);
    }
    std::string made;
    int range = 0;
};

TEST_F(Range, theCoreIsStartedByItsGeneration) {
    const std::string both = "VSKTemp=39\nVSKValue_Range0=1875\nVSKValue_Range1=1980\n"
                             "[BiaoDing]\nVSKTemp=30\nIntTime0=120\nIntTime1=210\n";
    const struct {
        int generation;
        double sensor;
        std::string settings;
        const char* frames;
        const char* vsk; // reference and bases
        const char* transfers;
        // clang-format off
    } starts[] = {
        {1, 41, "", "82:64000000", "50 0 0", "W31:1=01"},
        {1, 41, both, "82:78000000", "50 0 0", "W31:1=01"},
        {1, 41, both + "TempRange=1\n", "82:D2000000", "50 0 0", "W31:1=01"},
        {1, 41, both + "TempRange=2\n", "82:BE000000", "50 0 0", "W31:1=01"},
        {1, 41, both + "TempRange=-3\nIntTime-3=65540\n", "82:04000000", "50 0 0", "W31:1=01"},
        {2, 41, both, "", "50 0 0", ""},
        {-2, 41, both, "", "50 0 0", ""},
        {0, 41, "", "82:64005707", "41 1875 1980", "R1E:2"},     // 1879
        {0, 40.5, "", "82:64005307", "40 1875 1980", "R1E:2"},   // 1875
        {0, 20, "", "82:64002107", "20 1875 1980", "R1E:2"},     // 1825
        {0, 30, "", "82:64002B07", "30 1875 1980", "R1E:2"},     // 1835
        {0, 10.5, "", "82:64000907", "10.5 1875 1980", "R1E:2"}, // 1801.25
        {0, 41, both, "82:78005B07", "41 1875 1980", "R1E:2"},   // 8 more, not 44
        {0, 41, both + "TempRange=1\n", "82:D200C407", "41 1875 1980", "R1E:2"},
        {0, 41, "VSKTemp=40.5\nVSKValue_Range0=65537\n[BiaoDing]\nTempRange=7\nIntTime7=9\n", "82:0900BC07", "40.5 1 1980", "R1E:2"},
        {0, 20, "VSKValue_Range0=40\n", "82:64000000", "20 40 1980", "R1E:2"}, // -10
        {0, 42, "VSKValue_Range0=65530\n", "82:64000200", "42 65530 1980", "R1E:2"},
    };
    // clang-format on
    for (const auto& c : starts) {
        start(c.generation, c.sensor, c.settings);
        EXPECT_EQ(framesOf([&] { host->init(); }), c.frames) << c.settings;
        EXPECT_EQ(made, c.transfers);
        EXPECT_EQ(joined(m_vskTemp, m_vskValue0, m_vskValue1), c.vsk) << c.settings;
    }
}

TEST_F(Range, theOldestCoreIsStartedByThreeCommands) {
    for (int i = 0; i < 20; ++i) {
        start(-1, 20, "VSKTemp=40\n[BiaoDing]\nTempRange=1\nIntTime1=210\n");
        const std::string sent = framesOf([&] { host->init(); });
        EXPECT_EQ(made, "R1E:2");
        // One that was not sent yet may have been replaced by the next.
        const std::string all[] = {"70:D200 78:8A07 31", "78:8A07 31", "70:D200 31", "31"};
        EXPECT_NE(std::find(std::begin(all), std::end(all), sent), std::end(all)) << sent;
        EXPECT_EQ(output, "");
        EXPECT_EQ(joined(m_vskTemp, m_vskValue0, m_vskValue1, range), "20 1875 1980 1");
    }
}

TEST_F(Range, theCoreIsSwitchedByItsGeneration) {
    const std::string settings = "VSKTemp=39\n[BiaoDing]\nVSKTemp=40\nIntTime1=7\n";
    const struct {
        int generation, range;
        double sensor;
        const char* frames; // the last of them, which is certain
        float reference;
        const char* prints;
        // clang-format off
    } switches[] = {
        {1, 1, 41, "82:BE000000", 50, "change temp range intTime:190 vsk:0\n"},
        {2, 5, 41, "", 50, ""},
        {0, 0, 41, "82:BE005707", 41, "============da yu sensorTemp:41.000000 m_vskTemp:40.000000 \nchange temp range intTime:190 vsk:1879\n"},
        {0, 0, 40.5, "82:BE005307", 40, "============da yu sensorTemp:40.500000 m_vskTemp:40.000000 \nchange temp range intTime:190 vsk:1875\n"},
        {0, 1, 40, "82:BE00BC07", 40, "============da yu sensorTemp:40.000000 m_vskTemp:40.000000 \nchange temp range intTime:190 vsk:1980\n"},
        {0, 0, 39.5, "82:BE005307", 40, "============xiao yu sensorTemp:39.500000 m_vskTemp:40.000000 \nchange temp range intTime:190 vsk:1875\n"},
        {0, 3, 20, "82:BE008A07", 20, "============xiao yu sensorTemp:20.000000 m_vskTemp:40.000000 \nchange temp range intTime:190 vsk:1930\n"},
        {0, 0, 30, "82:BE002B07", 30, "============xiao yu sensorTemp:30.000000 m_vskTemp:40.000000 \nchange temp range intTime:190 vsk:1835\n"},
        {-1, 0, 20, "78:5307", 40, "============set vsk:1875\n"},
        {-1, 1, 20, "78:BC07", 40, "============set vsk:1980\n"},
        {-1, 2, 20, "70:BE00", 40, ""},
    };
    // clang-format on
    for (const auto& c : switches) {
        start(c.generation, c.sensor, settings);
        m_vskValue0 = 1875;
        m_vskValue1 = 1980;
        const std::string sent = framesOf([&] { host->changeTempRange(c.range, 190); });
        const bool two = sent.rfind("70:BE00 ", 0) == 0; // was sent before it was replaced
        EXPECT_EQ(two ? sent.substr(8) : sent, c.frames);
        EXPECT_EQ(joined(output, m_vskTemp, range), joined(c.prints, c.reference, c.range));
    }
    start(0, 20, "[BiaoDing]\nVSKTemp=20.25\n");
    EXPECT_EQ(transfersOf([&] { host->changeTempRange(0, 1); }), "R1E:2");
    EXPECT_EQ(joined(host->getSensorTemp(), m_vskTemp), "20 20.25");
}

TEST_F(Range, baseVskIsSentUnchanged) {
    for (const auto& [index, expected] :
         {std::pair{0, "78:5307 40.5"}, {1, "78:BC07 40.5"}, {2, " 40.5"}, {-1, " 40.5"}}) {
        start(1, 20, "VSKTemp=39\n[BiaoDing]\nVSKTemp=40.5\n");
        m_vskValue0 = 1875;
        m_vskValue1 = 1980;
        const std::string sent = framesOf([&, i = index] { host->setVSK(i); });
        EXPECT_EQ(sent + " " + joined(m_vskTemp), expected);
        EXPECT_EQ(output, sent.empty() ? ""
                          : index == 0 ? "============set vsk:1875\n"
                                       : "============set vsk:1980\n");
    }
    start(1, 20);
    EXPECT_EQ(framesOf([&] { host->setVSK(0); }), "78:5307"); // as last read by anyone
    EXPECT_EQ(m_vskTemp, 40);
}

TEST_F(Range, theTableFollowsRangeAndLens) {
    const auto loaded = [&](auto run) {
        made = transfersOf(run);
        const auto at = output.find("etc/");
        return joined(made,
                      at == output.npos ? "none" : output.substr(at, output.find(".conf") - at),
                      m_levelSpanMinAD, m_levelSpanMaxAD);
    };
    host->setTempRangeMinMax(-20, 150);
    EXPECT_EQ(loaded([&] { host->setTempRange(1); }), "etc/calc_len0_temp1 31527 45056");
    EXPECT_EQ(host->m_sysTempHandler->irAD2Temp(41000).temp, 150); // the limits stay
    host->setTempRangeMinMax(0, 400);
    for (TempHandler* model : {host->m_sysTempHandler, host->m_queryTempHandler})
        EXPECT_GT(model->irAD2Temp(41000).temp, 200);
    EXPECT_EQ(loaded([&] { host->setTempRange(0); }), "etc/calc_len0_temp0 28672 37599");
    EXPECT_EQ(loaded([&] { host->setTempRange(5); }), "etc/calc_len0_temp5 0 0");
    EXPECT_EQ(host->m_tempRange, 5);
    EXPECT_EQ(loaded([&] { EXPECT_EQ(host->get_set_lenIndex(), 0); }), "R0F:1 none 0 0");
    host->m_tempRange = 1;
    camera.lensCode(7);
    EXPECT_EQ(loaded([&] { EXPECT_EQ(host->get_set_lenIndex(), -1); }),
              "R0F:1 R00:1 etc/calc_len-1_temp1 0 0");
    EXPECT_EQ(host->getLenIndex(), -1);
    EXPECT_EQ(loaded([&] { EXPECT_EQ(host->get_set_lenIndex(), -1); }), "R0F:1 R00:1 none 0 0");
    camera.lensCode(3);
    EXPECT_EQ(loaded([&] { EXPECT_EQ(host->get_set_lenIndex(), 0); }),
              "R0F:1 etc/calc_len0_temp1 31527 45056");
    host.reset();
    EXPECT_EQ(frames(camera), ""); // none of it concerns the core
}

TEST_F(Range, theFacadePassesCommandsOn) {
    const std::pair<int (*)(Probe&), const char*> commands[] = {
        {[](Probe& f) { return f.setIntTime(3, 258); }, "70:0201"},
        {[](Probe& f) { return f.insideShutter(); }, "31"},
        {[](Probe& f) { return f.insideShutterNoVSK(); }, "51"},
        {[](Probe& f) { return f.autoShutter(true); }, "30:01"},
        {[](Probe& f) { return f.setSerialVSK(1000); }, "78:E803"}};
    for (const auto& [command, expected] : commands) {
        start(1, 20);
        EXPECT_EQ(framesOf([&, run = command] { EXPECT_EQ(run(*host), 0); }), expected);
        EXPECT_EQ(range, expected[0] == '7' && expected[1] == '0' ? 3 : 0);
    }
    EXPECT_EQ(output, "============set vsk:1000\n");
    start(1, 20);
    unsigned short vsk = 9, sum = 9;
    EXPECT_EQ(host->getSerialVSK(&vsk) + host->getSerialSum(&sum), 0);
    EXPECT_EQ(joined(vsk, sum), "1000 30000");
    camera.coreGarbled(3);
    EXPECT_EQ(joined(host->getSerialVSK(&vsk), vsk), "-1 0");
}

} // namespace
