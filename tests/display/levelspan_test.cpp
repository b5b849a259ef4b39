// The display window.
#include "support/host.h"

namespace {

using namespace irmtest;

/// The transfers that place a window.
std::string placed(unsigned level, unsigned gain) {
    return "W62:2=" + hex(level & 0xFF) + hex(level >> 8) + " W64:4=" + hex(gain & 0xFF) +
           hex(gain >> 8 & 0xFF) + hex(gain >> 16 & 0xFF) + hex(gain >> 24);
}

/// A frame as the FPGA reports it.
struct Scene {
    unsigned high, low, mid;
};

/// The limits as a host finds them when it has just begun.
const std::string s_limits = joined(m_levelSpanMinAD, m_levelSpanMaxAD, m_isStarLevelSpanControl);

struct Window : Host {
    Window() {
        if (!s_first.empty())
            return;
        camera.poke(0x70, word(0x1234)).poke(0x72, word(1000));
        s_first = transfersOf([&] { host->calcLevelSpan(LEVELSPAN_HAND, false); }) + '\n' + output;
        camera.unpoke(0x70).unpoke(0x72);
    }
    /// Lets the FPGA report a frame, or with 0xA0 its histogram.
    void report(const Scene& scene, unsigned first = 0x40) {
        for (const unsigned at : {first, first + 2, first + 4, 0x6CU})
            camera.unpoke(at);
        camera.poke(first, word(scene.high)).poke(first + 2, word(scene.low));
        camera.poke(first + 4, word(scene.mid)).poke(0x46, {0, 0, 0, 0}).poke(0x6C, {1, 0, 0, 0});
    }
    void limit(int min, int max) {
        m_levelSpanMinAD = min;
        m_levelSpanMaxAD = max;
    }
    std::string now() const { return joined(host->m_level, host->m_span); }

    static std::string s_first; ///< what the first `calcLevelSpan` of the process did and printed
};

std::string Window::s_first;

TEST_F(Window, isTakenOverByTheFirstCallAlone) {
    EXPECT_EQ(s_first, "R70:2 R72:2 W62:2=3412 W64:4=E8030000 W60:1=00\n"
                       "start level span control fpgaLevel:1234 fpgaSpan:1062\n");
    host->startLevelSpanControl(false);
    for (const int mode : {2, 2, 2, 3, -1})
        EXPECT_EQ(transfersOf([&] { host->calcLevelSpan(static_cast<Mode_t>(mode), true); }), "");
}

TEST_F(Window, staysWithinTheEndsOfItsRange) {
    EXPECT_EQ(s_limits, "0 0 0");
    for (const auto& [range, expected] : {std::pair(0, "28672 37599"), {1, "31527 45056"}}) {
        printed([&, to = range] { host->setSystemAdToTempTab(0, to); });
        EXPECT_EQ(joined(m_levelSpanMinAD, m_levelSpanMaxAD), expected);
    }
}

TEST_F(Window, followsTheSceneWithinTheLimits) {
    const std::tuple<Scene, Mode_t, int, int, unsigned, unsigned, unsigned> cases[] = {
        {{5000, 4000, 4500}, LEVELSPAN_AUTO, 3000, 9000, 4000, 1000, 4194},
        {{5000, 4000, 4500}, LEVELSPAN_ZFT, 3000, 9000, 4000, 1000, 4194},
        {{4100, 4000, 4050}, LEVELSPAN_AUTO, 3000, 9000, 3985, 128, 32768},
        {{4100, 4000, 4050}, LEVELSPAN_ZFT, 3000, 9000, 3985, 128, 32768},
        {{4128, 4000, 4050}, LEVELSPAN_AUTO, 3000, 9000, 3985, 128, 32768},
        {{4128, 4000, 4050}, LEVELSPAN_ZFT, 3000, 9000, 4000, 128, 32768},
        {{4129, 4000, 4050}, LEVELSPAN_AUTO, 3000, 9000, 4000, 129, 32513},
        {{4127, 4000, 4050}, LEVELSPAN_ZFT, 3000, 9000, 3985, 128, 32768},
        {{9500, 9100, 9200}, LEVELSPAN_AUTO, 3000, 9000, 8872, 128, 32768},
        {{9500, 9100, 9200}, LEVELSPAN_ZFT, 3000, 9000, 8872, 128, 32768},
        {{2000, 1000, 1500}, LEVELSPAN_AUTO, 3000, 9000, 2935, 128, 32768},
        {{65000, 10, 1500}, LEVELSPAN_AUTO, 3000, 9000, 3000, 6000, 699},
        {{100, 0, 30}, LEVELSPAN_AUTO, 0, 65535, 65501, 128, 32768}, // below 0 and round
        {{4000, 5000, 4500}, LEVELSPAN_AUTO, 3000, 9000, 4435, 128, 32768},
        {{4000, 5000, 4500}, LEVELSPAN_ZFT, 3000, 9000, 5000, 64536, 64},
        // Inverted limits: for the maximum the upper is tried first, for the others the lower.
        {{5000, 5000, 5000}, LEVELSPAN_AUTO, 9000, 3000, 2872, 128, 32768},
        {{5000, 5000, 5000}, LEVELSPAN_ZFT, 9000, 3000, 9000, 59536, 70},
        {{2000, 2000, 2000}, LEVELSPAN_AUTO, 9000, 3000, 8935, 128, 32768}};
    for (const auto& [scene, mode, min, max, level, span, gain] : cases) {
        const bool histogram = mode == LEVELSPAN_ZFT;
        report(scene, histogram ? 0xA0 : 0x40);
        report({60000, 50000, 55000}, histogram ? 0x40 : 0xA0); // is not looked at
        limit(min, max);
        EXPECT_EQ(transfersOf([&, m = mode] { host->calcLevelSpan(m, false); }),
                  (histogram ? "RA0:2 RA2:2 RA4:2 " : "R40:2 R42:2 R44:6 R6C:4 ") +
                      placed(level, gain));
        EXPECT_EQ(now(), joined(level, span)) << joined(scene.high, scene.low, mode, min);
    }
}

TEST_F(Window, mixesAQuarterOfTheNewWindowInWhenSmooth) {
    const std::tuple<Scene, int, int, unsigned, unsigned, unsigned> cases[] = {
        {{2800, 2000, 0}, 1000, 400, 1250, 500, 8388},
        {{2801, 2001, 0}, 1001, 401, 1251, 500, 8388}, // cut
        {{2000, 1990, 2065}, 0, 43, 500, 64, 0},       // 65536
        {{2000, 1990, 2065}, 0, 40, 500, 62, 2114},    // 67650
        {{65535, 0, 0}, 65535, 65535, 49151, 65535, 64}};
    limit(0, 65535);
    for (const auto& [scene, oldLevel, oldSpan, level, span, gain] : cases) {
        report(scene);
        host->m_level = static_cast<unsigned short>(oldLevel);
        host->m_span = static_cast<unsigned short>(oldSpan);
        EXPECT_EQ(transfersOf([&] { host->calcLevelSpan(LEVELSPAN_AUTO, true); }).substr(24),
                  placed(level, gain));
        EXPECT_EQ(now(), joined(level, span));
    }
}

TEST_F(Window, byHandLiesBetweenTwoTemperatures) {
    const std::tuple<float, float, std::string, const char*> cases[] = {
        {30, 100, placed(32767, 1480), "32767 2833"},
        {30, 30, placed(32767, 0), "32767 0"},
        {30, 30.05F, placed(32767, 2097152), "32767 2"}, // the gain whole
        {100, 30, placed(35600, 0), "35600 62703"},      // negative
        {-61, 30, "", "9 9"},
        {30, 4000.5F, "", "9 9"},
        {30, 400, "", "9 9"}};
    for (const auto& [low, high, moved, window] : cases) {
        host->m_level = host->m_span = 9;
        EXPECT_EQ(transfersOf([&, a = low, b = high] { EXPECT_EQ(host->handLevelSpan(a, b), 1); }),
                  moved);
        EXPECT_EQ(now(), window);
    }
    host->m_sysTempSetup.offset = 20; // is applied first
    host->handLevelSpan(50, 120);
    EXPECT_EQ(now(), "32767 2833");
    host->setLevelSpanMode(LEVELSPAN_ZFT), host->autoLevel(1), host->autoSpan(1);
    EXPECT_EQ(now(), "32767 2833");
}

TEST_F(Window, changesHandsAsTheFpgaShowsIt) {
    const std::tuple<unsigned, bool, std::string, const char*> cases[] = {
        {0, true, "R70:2 R72:2 " + placed(0xF234, 16448) + " W60:1=00", "ff"},
        {64, false, "R70:2 R72:2 W60:1=FF", "0"},
        {65535, false, "R70:2 R72:2 " + placed(0xF234, 65536) + " W60:1=FF", "40"}};
    for (const auto& [gain, on, moved, span] : cases) {
        camera.poke(0x70, word(0xF234)).poke(0x72, word(gain));
        const bool give = on;
        EXPECT_EQ(transfersOf([&] { EXPECT_EQ(host->startLevelSpanControl(give), 1); }), moved);
        EXPECT_EQ(output,
                  joined("start level span control fpgaLevel:f234", "fpgaSpan:") + span + "\n");
        EXPECT_EQ(m_isStarLevelSpanControl, on);
    }
}

TEST_F(Window, ofTheQueryHasTheMinimumSpanOfItsRange) {
    const std::tuple<int, Scene, unsigned, unsigned, unsigned> cases[] = {
        {0, {5000, 4900, 4950}, 4822, 255, 16448},  {1, {5000, 4900, 4950}, 4885, 128, 32768},
        {0, {9500, 8950, 9100}, 8745, 255, 16448},  {3, {9500, 8950, 9100}, 8872, 128, 32768},
        {0, {5255, 5000, 5100}, 4972, 255, 16448},  {0, {5256, 5000, 5100}, 5000, 256, 16384},
        {-1, {5128, 5000, 5100}, 5035, 128, 32768}, {1, {5129, 5000, 5100}, 5000, 129, 32513},
        {0, {5000, 6000, 5500}, 5372, 255, 16448}};
    limit(3000, 9000);
    for (const auto& [range, scene, level, span, gain] : cases) {
        report(scene);
        host->m_tempRange = range;
        IrTempStru low{}, high{};
        EXPECT_EQ(transfersOf([&] { host->getAutoMinMaxTemp(&low, &high); }),
                  "R40:2 R42:2 R44:6 R6C:4 " + placed(level, gain));
        EXPECT_EQ(joined(now(), low.ad, high.ad), joined(level, span, level, level + span));
    }
}

} // namespace
