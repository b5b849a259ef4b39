// The camera's side of the window: what is wished comes about, and nothing waits for the core.
#include "apps/view/cameraloop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <poll.h>
#include <string>

namespace {

using namespace irmcore::view;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

/// A window without a window.
class Watcher {
public:
    Watcher(const Source& source, const Wishes& wishes) : m_loop(source, wishes) {}

    CameraLoop& loop() { return m_loop; }
    /// Waits for a snapshot as described; the last one, null without any in time.
    std::shared_ptr<const Snapshot> until(const std::function<bool(const Snapshot&)>& wanted,
                                          std::chrono::milliseconds patience = 60s) {
        const auto end = Clock::now() + patience;
        while (Clock::now() < end) {
            pollfd news{m_loop.newsDescriptor(), POLLIN, 0};
            ::poll(&news, 1, 100);
            auto snapshot = m_loop.latest();
            if (snapshot && wanted(*snapshot))
                return snapshot;
        }
        return nullptr;
    }

private:
    CameraLoop m_loop;
};

/// The simulated camera in a hurry: what it takes its time for is soon done.
Source hurried(double factor) {
    Source source;
    source.plan.wallFactor = factor;
    return source;
}

Tool tool(int id, ToolKind kind, Pixel from, Pixel to) { return {id, kind, {from, to}}; }

bool says(const Snapshot& s, const char* words) {
    for (const std::string& trouble : s.troubles)
        if (trouble.find(words) != std::string::npos)
            return true;
    return false;
}

Wishes withTools() {
    Wishes wishes;
    // Black bodies of 37 and 140 °C of the bench, the line across the latter.
    wishes.tools = {tool(1, ToolKind::spot, {240, 72}, {240, 72}),
                    tool(2, ToolKind::area, {230, 80}, {250, 62}),
                    tool(3, ToolKind::line, {230, 72}, {250, 72}),
                    tool(4, ToolKind::spot, {500, 72}, {500, 72})};
    return wishes;
}

TEST(CameraLoop, ReadsWhatIsPlaced) {
    Watcher watcher(hurried(4), withTools());
    const auto s = watcher.until([](const Snapshot& now) { return now.settled; });
    ASSERT_NE(s, nullptr);
    EXPECT_TRUE(s->troubles.empty());
    EXPECT_EQ(s->frame.width, 384);
    EXPECT_EQ(s->picture.pixels.size(), 110592U);
    ASSERT_EQ(s->readings.size(), 4U);
    for (const int i : {0, 1, 2}) {
        const ToolReading& reading = s->readings[static_cast<std::size_t>(i)];
        EXPECT_EQ(reading.id, i + 1);
        for (const Value& value : {reading.hottest, reading.coldest, reading.mean}) {
            EXPECT_EQ(value.status, "OK") << i;
            EXPECT_NEAR(value.celsius, 37.0, 0.2) << i;
        }
    }
    EXPECT_EQ(s->readings[3].hottest.status, "NULL"); // outside the frame
    EXPECT_NEAR(s->hottest.celsius, 140.0, 0.2);
    EXPECT_NEAR(s->coldest.celsius, -10.0, 0.2);
    EXPECT_LT(s->barLow.celsius, s->barHigh.celsius);
    EXPECT_EQ(s->calibrations, 1);
}

TEST(CameraLoop, BringsTheCameraToWhatIsWished) {
    Wishes wishes = withTools();
    Watcher watcher(hurried(4), wishes);
    const auto spot = [](const Snapshot& s) { return s.readings.at(0).hottest.celsius; };
    ASSERT_NE(watcher.until([](const Snapshot& s) { return s.settled; }), nullptr);

    wishes.parameters.offset = 5.0;
    watcher.loop().wish(wishes);
    EXPECT_NE(watcher.until([&](const Snapshot& s) { return std::abs(spot(s) - 42.0) < 0.2; }),
              nullptr);
    wishes.parameters.offset = 0.0;
    wishes.parameters.emissivity = 0.5; // a body of 0.95 looks hotter then
    watcher.loop().wish(wishes);
    EXPECT_NE(watcher.until([&](const Snapshot& s) { return spot(s) > 44.0 && spot(s) < 50.0; }),
              nullptr);
    wishes.parameters.emissivity = 0.95;

    wishes.range = 1;
    watcher.loop().wish(wishes);
    const auto high =
        watcher.until([](const Snapshot& s) { return s.range == 1 && s.settled && s.present; });
    ASSERT_NE(high, nullptr);
    EXPECT_NEAR(spot(*high), 37.0, 0.4);
    EXPECT_EQ(high->coldest.status, "L"); // -10 °C, the range begins at 0
    EXPECT_TRUE(high->troubles.empty());

    wishes.look.window = LEVELSPAN_HAND;
    wishes.look.low = 30.0;
    wishes.look.high = 90.0;
    wishes.look.palette = COLOR_GREY;
    wishes.isotherm = {true, 2, 30.0, 80.0, "Green"};
    watcher.loop().wish(wishes);
    const auto byHand = watcher.until([](const Snapshot& s) {
        return std::abs(s.barLow.celsius - 30.0) < 0.5 && std::abs(s.barHigh.celsius - 90.0) < 0.5;
    });
    ASSERT_NE(byHand, nullptr);
    EXPECT_EQ(byHand->bar[0], 0xFF000000U);                               // black
    EXPECT_GT(byHand->bar[255] >> 8U & 0xFFU, 100U);                      // green,
    EXPECT_LT(byHand->bar[255] & 0xFFU, 100U);                            // neither grey
    EXPECT_EQ(byHand->bar[128] & 0xFFU, byHand->bar[128] >> 16U & 0xFFU); // nor in the middle

    wishes.look.mode = IMAGE_CCD_PIPE_IR;
    watcher.loop().wish(wishes);
    const auto composed = watcher.until([](const Snapshot& s) { return s.picture.width == 768; });
    ASSERT_NE(composed, nullptr);
    EXPECT_EQ(composed->picture.height, 576);
}

TEST(CameraLoop, FreezesAndReleases) {
    Wishes wishes = withTools();
    Watcher watcher(hurried(4), wishes);
    ASSERT_NE(watcher.until([](const Snapshot& s) { return s.settled; }), nullptr);
    wishes.frozen = true;
    watcher.loop().wish(wishes);
    const auto frozen = watcher.until([](const Snapshot& s) { return s.frozen; });
    ASSERT_NE(frozen, nullptr);
    EXPECT_EQ(frozen->calibrations, 2); // one goes before
    Simulation simulation;
    simulation.target = SimulatedTarget{{240, 72}, 20, 20, 90.0};
    watcher.loop().simulate(simulation);
    const auto later =
        watcher.until([&](const Snapshot& s) { return s.number > frozen->number + 20; });
    ASSERT_NE(later, nullptr);
    EXPECT_NEAR(later->readings[0].hottest.celsius, 37.0, 0.2);
    wishes.frozen = false;
    watcher.loop().wish(wishes);
    EXPECT_NE(watcher.until([](const Snapshot& s) {
        return !s.frozen && std::abs(s.readings.at(0).hottest.celsius - 90.0) < 0.3;
    }),
              nullptr);
}

TEST(CameraLoop, FindsALostCameraAgain) {
    Wishes wishes = withTools();
    wishes.look.palette = COLOR_GREY_INVERTED;
    wishes.parameters.offset = 3.0;
    Watcher watcher(hurried(4), wishes);
    ASSERT_NE(watcher.until([](const Snapshot& s) { return s.settled; }), nullptr);
    Simulation simulation;
    simulation.unplugged = true;
    watcher.loop().simulate(simulation);
    const auto lost = watcher.until([](const Snapshot& s) { return !s.present; });
    ASSERT_NE(lost, nullptr);
    EXPECT_TRUE(says(*lost, "went away"));
    EXPECT_FALSE(lost->settled);
    EXPECT_EQ(lost->picture.pixels.size(), 110592U); // the last one stays
    simulation.unplugged = false;
    watcher.loop().simulate(simulation);
    const auto found = watcher.until([](const Snapshot& s) { return s.present && s.settled; });
    ASSERT_NE(found, nullptr);
    EXPECT_TRUE(found->troubles.empty());
    EXPECT_NEAR(found->readings.at(0).hottest.celsius, 40.0, 0.2);
    EXPECT_EQ(found->bar[255], 0xFF000000U);
}

TEST(CameraLoop, GoesOnWhileTheCoreIsSilent) {
    Wishes wishes = withTools();
    Watcher watcher(hurried(8), wishes);
    ASSERT_NE(watcher.until([](const Snapshot& s) { return s.settled; }), nullptr);
    Simulation simulation;
    simulation.coreSilent = true;
    watcher.loop().simulate(simulation);
    watcher.loop().calibrate();
    // The link waits for answers for 20 s and more of the camera's time now, 2.5 s of the wall's.
    wishes.tools.resize(1);
    wishes.tools[0].place = {{48, 72}, {48, 72}}; // -10 °C
    watcher.loop().wish(wishes);
    const auto moved = watcher.until([](const Snapshot& s) {
        return s.readings.size() == 1 && std::abs(s.readings[0].hottest.celsius + 10.0) < 0.2;
    });
    ASSERT_NE(moved, nullptr);
    EXPECT_EQ(moved->core, CoreState::answers); // that it does not is not even known yet
    EXPECT_NE(watcher.until([](const Snapshot& s) { return says(s, "does not answer"); }), nullptr);
    simulation.coreSilent = false;
    watcher.loop().simulate(simulation);
    const auto again = watcher.until(
        [](const Snapshot& s) { return s.troubles.empty() && s.settled && s.calibrations > 1; });
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->core, CoreState::answers);
}

TEST(CameraLoop, ACoreThatIsGoneCalibratesNothing) {
    Source source = hurried(2);
    source.plan.scene.width = 160; // quick also where a sanitizer watches
    source.plan.scene.height = 120;
    source.plan.warmUp = irmsim::WarmUp::inside(26.5, 40.0, 60.0);
    irmsim::Event gone;
    gone.at = irmsim::timeOf(15.0);
    gone.what = irmsim::What::port;
    source.plan.events = {gone};
    Watcher watcher(source, Wishes{});
    ASSERT_NE(watcher.until([](const Snapshot& s) { return s.settled && s.calibrations > 1; }),
              nullptr);
    const auto later = watcher.until([](const Snapshot& s) { return s.seconds > 30.0; });
    ASSERT_NE(later, nullptr);
    EXPECT_FALSE(later->settled); // the shutter has not closed since
    EXPECT_TRUE(says(*later, "next calibration, wait"));
}

TEST(CameraLoop, LetsGoOfACameraWithoutWaitingForItsCore) {
    Wishes wishes = withTools();
    Watcher watcher(hurried(6), wishes);
    ASSERT_NE(watcher.until([](const Snapshot& s) { return s.settled; }), nullptr);
    Simulation simulation;
    simulation.coreSilent = true;
    watcher.loop().simulate(simulation);
    watcher.loop().calibrate();
    ASSERT_NE(watcher.until([](const Snapshot& s) { return !s.settled; }), nullptr);
    // For 3 s of the wall's time and more somebody waits for an answer.
    simulation.unplugged = true;
    watcher.loop().simulate(simulation);
    const auto lost = watcher.until([](const Snapshot& s) { return !s.present; });
    ASSERT_NE(lost, nullptr);
    EXPECT_EQ(lost->core, CoreState::unknown);
    wishes.tools.resize(1);
    wishes.tools[0].place = {{48, 72}, {48, 72}};
    watcher.loop().wish(wishes);
    watcher.loop().open(hurried(6));
    const auto moved = watcher.until([](const Snapshot& s) { return s.readings.size() == 1; });
    ASSERT_NE(moved, nullptr);
    EXPECT_EQ(moved->camera, 1U); // not yet gone, and read in its last frame
    EXPECT_NEAR(moved->readings[0].hottest.celsius, -10.0, 0.2);
    EXPECT_FALSE(moved->settled);
    EXPECT_NE(watcher.until([](const Snapshot& s) { return s.camera == 2 && s.settled; }), nullptr);
}

TEST(CameraLoop, FollowsLensSceneAndSource) {
    Wishes wishes = withTools();
    Watcher watcher(hurried(4), wishes);
    ASSERT_NE(watcher.until([](const Snapshot& s) { return s.settled; }), nullptr);
    Simulation simulation;
    simulation.lens = 1;
    watcher.loop().simulate(simulation);
    const auto other = watcher.until([](const Snapshot& s) { return s.lens == 1 && s.settled; });
    ASSERT_NE(other, nullptr);
    EXPECT_NEAR(other->readings.at(0).hottest.celsius, 37.0, 0.3);

    irmsim::ScenePlan scene;
    scene.kind = irmsim::ScenePlan::Kind::pgm;
    scene.pgm = "P2 nothing";
    watcher.loop().showScene(scene);
    EXPECT_NE(watcher.until([](const Snapshot& s) { return says(s, "cannot be shown"); }), nullptr);
    scene.kind = irmsim::ScenePlan::Kind::uniform;
    scene.width = 160;
    scene.height = 120;
    scene.from = 50.0;
    watcher.loop().showScene(scene);
    const auto small = watcher.until([](const Snapshot& s) { return s.frame.width == 160; });
    ASSERT_NE(small, nullptr);
    EXPECT_TRUE(small->troubles.empty());
    EXPECT_EQ(small->readings.at(0).hottest.status, "NULL"); // its place is outside now
    EXPECT_NEAR(small->hottest.celsius, 50.0, 0.3);

    Source recording;
    recording.kind = SourceKind::recording;
    recording.recording = TEST_DATA "/bench160.irmrec";
    wishes.tools[0].place = {{100, 30}, {100, 30}}; // a black body of 37 °C
    watcher.loop().wish(wishes);
    watcher.loop().open(recording);
    const auto recorded = watcher.until([](const Snapshot& s) {
        return s.source == SourceKind::recording && !s.frame.counts.empty();
    });
    ASSERT_NE(recorded, nullptr);
    EXPECT_EQ(recorded->sourceName, "bench160.irmrec");
    EXPECT_NEAR(recorded->readings.at(0).hottest.celsius, 37.0, 0.5);

    recording.recording = "/nowhere/there.irmrec";
    watcher.loop().open(recording);
    EXPECT_NE(watcher.until([](const Snapshot& s) {
        return !s.present && says(s, "there.irmrec cannot be replayed");
    }),
              nullptr);
}

} // namespace
