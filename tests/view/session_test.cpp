// How the window's camera is brought to where it is wished, and what goes wrong on the way.
#include "view/looker.h"

#include "sim/cameradir.h"
#include "support/host.h"

#include <algorithm>
#include <cerrno>

namespace {

using namespace irmtest;
using irmsim::What;

TEST(Session, TellsTheCoreWhatItNeedsInOrder) {
    const Ear ear;
    {
        Looker looker(smallCamera(4), spotsOnBodies());
        const auto first = looker.look();
        EXPECT_TRUE(first->calibrating);
        EXPECT_EQ(first->frame.counts.size(), 19200U); // read before the shutter closes
        bool early = false;
        const auto settled = looker.until(Looker::atRest, [&](const Snapshot& s) {
            early = early || (s.calibrating && s.frame.counts != first->frame.counts);
        });
        ASSERT_NE(settled, nullptr);
        EXPECT_FALSE(early); // nothing is shown while the shutter may be closed
        // Range 0's integration time of 120, the shutter to the host, a calibration; half a second
        // after each.
        ASSERT_EQ(ear.words(), "82:78000000 30:00 31");
        EXPECT_GE(ear.timeOf(1), 0.5);
        EXPECT_GE(ear.timeOf(2), 1.0);
        EXPECT_GE(settled->seconds, 1.5);
        EXPECT_EQ(settled->calibrations, 1);
        expectBodies(*settled, 0.2, "settled");
        EXPECT_NE(looker.until([](const Snapshot& s) { return s.core == CoreState::answers; }),
                  nullptr);
    }
    EXPECT_EQ(ear.words(), "82:78000000 30:00 31 30:01"); // the shutter is the core's again
}

TEST(Session, CalibratesWhenItIsDueAndOnlyThen) {
    // The inside temperatures of one camera, each 4 s after the other; a round is due at 0.2 °C
    // since the last one, and at 31 °C.
    const struct {
        double celsius;
        int rounds; // while it is that
    } steps[] = {{26.65, 0}, {26.75, 1}, {26.6, 0},  {26.5, 1},  {30.93, 1}, {31.05, 1},
                 {31.2, 0},  {30.97, 1}, {30.85, 0}, {31.02, 1}, {29.0, 1},  {29.15, 0}};
    constexpr double first = 8.0; // s, after the start
    constexpr double lasts = 4.0;
    for (const bool automatic : {true, false}) {
        Source source = smallCamera(hurry(10));
        double time = first;
        for (const auto& step : steps) {
            if (!automatic && step.celsius > 30.0)
                break;
            source.plan.events.push_back(at(time, What::inside, {step.celsius}));
            time += lasts;
        }
        const Ear ear;
        Wishes wishes = spotsOnBodies();
        wishes.calibrates = automatic;
        Looker looker(source, wishes);
        const auto settled = looker.settle();
        ASSERT_NE(settled, nullptr);
        ASSERT_LT(settled->seconds, first);
        const auto last = looker.after(time, [&](const Snapshot& s) {
            // Where a step has not been followed yet, its drift is.
            if (s.settled && automatic && std::fmod(s.seconds, lasts) > 2.0)
                expectBodies(s, 0.4, joined(s.seconds, s.sensorTemp));
        });
        ASSERT_NE(last, nullptr);
        std::vector<int> rounds(std::size(steps));
        for (std::size_t i = 3; i < ear.count(); ++i)
            ++rounds.at(static_cast<std::size_t>((ear.timeOf(i) - first) / lasts));
        for (std::size_t i = 0; i < std::size(steps); ++i)
            EXPECT_EQ(rounds[i], automatic ? steps[i].rounds : 0) << steps[i].celsius;
        if (automatic)
            continue;
        // A person's round, with F5, is done all the same.
        looker.session().calibrate();
        const auto asked = looker.until([](const Snapshot& s) { return s.calibrations == 2; });
        ASSERT_NE(asked, nullptr);
        expectBodies(*asked, 0.3, "asked for");
        EXPECT_EQ(ear.words(), "82:78000000 30:00 31 31");
    }
}

TEST(Session, CalibratesAfterThreeMinutes) {
    Looker looker(smallCamera(30), spotsOnBodies());
    const auto settled = looker.settle();
    ASSERT_NE(settled, nullptr);
    double longest = 0.0;
    const auto again = looker.until([](const Snapshot& s) { return s.calibrations == 2; },
                                    [&](const Snapshot& s) {
                                        if (s.calibrations == 1 && s.calibrating)
                                            longest = std::max(longest, s.sinceCalibration);
                                    });
    ASSERT_NE(again, nullptr);
    EXPECT_GE(longest, 180.0);
    EXPECT_LT(longest, 900.0);
}

TEST(Session, FollowsAWarmUp) {
    Source source = smallCamera(3);
    source.plan.inside = 29.5;
    Looker looker(source, spotsOnBodies());
    const auto start = looker.settle();
    ASSERT_NE(start, nullptr);
    looker.session().warmUp(33.0, 60.0); // passes 31 °C after 33.6 s
    int readings = 0;
    const auto end = looker.after(start->seconds + 40.0, [&](const Snapshot& s) {
        if (!s.settled)
            return;
        expectBodies(s, 0.4, joined(s.seconds, s.sensorTemp, s.drift, s.calibrating));
        readings += s.calibrating ? 0 : 1;
    });
    ASSERT_NE(end, nullptr);
    EXPECT_GT(end->sensorTemp, 31.0);
    EXPECT_GT(end->calibrations, 5);
    EXPECT_GT(readings, 50);
}

TEST(Session, AWarmUpMayBeginWhereTheSensorHasDrifted) {
    Source source = smallCamera(8);
    source.plan.events = {at(8.0, What::inside, {26.65})}; // too little for a round
    Looker looker(source, spotsOnBodies());
    ASSERT_NE(looker.after(9.0), nullptr);
    looker.session().warmUp(26.65, 100.0); // nothing changes
    const auto end = looker.after(14.0, [](const Snapshot& s) {
        if (s.settled)
            expectBodies(s, 0.4, joined(s.seconds, s.drift));
    });
    ASSERT_NE(end, nullptr);
    EXPECT_TRUE(end->settled);
    EXPECT_EQ(end->calibrations, 2);
    EXPECT_NEAR(end->sensorTemp, 26.65, 0.02);
}

TEST(Session, ChangesTheRangeThereAndBack) {
    const Ear ear;
    Wishes wishes = spotsOnBodies();
    wishes.tools.push_back(spotAt(8, 80, 60));
    Looker looker(smallCamera(8), wishes);
    Simulation simulation;
    simulation.target = SimulatedTarget{{80, 60}, 5, 5, 300.0};
    looker.session().simulate(simulation);
    std::string expected = "82:78000000 30:00 31";
    for (const int range : {0, 1, 0, 1}) {
        wishes.range = range;
        looker.session().wish(wishes);
        const auto s = looker.until(
            [&](const Snapshot& now) { return now.range == range && Looker::atRest(now); });
        ASSERT_NE(s, nullptr) << range;
        EXPECT_TRUE(s->troubles.empty());
        const Value& hot = s->readings.back().hottest;
        EXPECT_EQ(hot.status, range == 0 ? "H" : "OK");
        EXPECT_NEAR(hot.celsius, range == 0 ? 4001.0 : 300.0, 0.4); // beyond range 0's table
        for (std::size_t i = 0; i < bodies.size(); ++i) {
            if (range == 1 && bodies[i].celsius < 0.0)
                EXPECT_EQ(s->readings[i].hottest.status, "L");
            else
                EXPECT_NEAR(s->readings[i].hottest.celsius, bodies[i].celsius, 0.4) << range << i;
        }
        EXPECT_EQ(ear.words(), expected);
        expected += range == 0 ? " 82:D2000000 31" : " 82:78000000 31";
    }
}

TEST(Session, KnowsItsLenses) {
    Looker looker(smallCamera(8), spotsOnBodies());
    ASSERT_NE(looker.settle(), nullptr);
    Simulation simulation;
    const struct {
        int lens;
        bool usable;
    } cases[] = {{1, true}, {3, false}, {6, false}, {0, true}};
    int rounds = 1;
    for (const auto& c : cases) {
        simulation.lens = c.lens;
        looker.session().simulate(simulation);
        const auto s = looker.until([&](const Snapshot& now) {
            return now.calibrations == rounds + 1 && !now.calibrating;
        });
        ASSERT_NE(s, nullptr) << c.lens;
        rounds = s->calibrations;
        EXPECT_EQ(s->lens, c.lens);
        EXPECT_EQ(s->settled, c.usable) << c.lens;
        EXPECT_EQ(says(*s, joined("No usable calibration table for lens", c.lens, "in range 0")),
                  !c.usable);
        if (c.usable)
            expectBodies(*s, 0.3, joined("lens", c.lens));
    }
}

TEST(Session, AFrozenPictureStaysWhileTheSensorDrifts) {
    Wishes wishes = spotsOnBodies();
    Looker looker(smallCamera(8), wishes);
    ASSERT_NE(looker.settle(), nullptr);
    wishes.frozen = true;
    looker.session().wish(wishes);
    const auto frozen = looker.until([](const Snapshot& s) { return s.frozen; });
    ASSERT_NE(frozen, nullptr);
    EXPECT_EQ(frozen->calibrations, 2);
    looker.session().warmUp(27.0, 0.001);
    Simulation simulation;
    simulation.target = SimulatedTarget{{20, 30}, 10, 10, 120.0};
    looker.session().simulate(simulation);
    std::vector<std::uint16_t> counts;
    const auto later = looker.after(frozen->seconds + 5.0, [&](const Snapshot& s) {
        expectBodies(s, 0.2, "frozen");
        if (counts.empty())
            counts.assign(s.frame.counts.begin(), s.frame.counts.end());
        EXPECT_TRUE(std::equal(counts.begin(), counts.end(), s.frame.counts.begin()));
    });
    ASSERT_NE(later, nullptr);
    EXPECT_EQ(later->calibrations, 2); // none while it is frozen
    simulation.target.reset();
    looker.session().simulate(simulation);
    wishes.frozen = false;
    looker.session().wish(wishes);
    const auto released = looker.until([](const Snapshot& s) { return !s.frozen; });
    ASSERT_NE(released, nullptr);
    expectBodies(*released, 0.4, "released"); // 2.4 °C of drift
    EXPECT_NE(looker.until([](const Snapshot& s) { return s.calibrations == 3; }), nullptr);
}

TEST(Session, ReadsTheHeldFrameWhileTheShutterIsClosed) {
    Wishes wishes;
    wishes.tools = {spotAt(1, 100, 30)};
    Looker looker(smallCamera(4), wishes);
    const auto settled = looker.settle();
    ASSERT_NE(settled, nullptr);
    wishes.tools = {spotAt(1, 20, 90), spotAt(2, 60, 90), lineFrom(3, {98, 90}, {102, 90}),
                    areaOf(4, {142, 32}, {138, 28}), spotAt(5, 160, 0)};
    looker.session().wish(wishes);
    const auto held = looker.closed();
    ASSERT_TRUE(held->calibrating);
    ASSERT_EQ(held->readings.size(), 5U);
    const double truths[] = {80.0, 100.0, 140.0, 60.0};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(held->readings[i].id, static_cast<int>(i) + 1);
        for (const Value* value :
             {&held->readings[i].hottest, &held->readings[i].coldest, &held->readings[i].mean}) {
            EXPECT_EQ(value->status, "OK") << i;
            EXPECT_NEAR(value->celsius, truths[i], 0.2) << i;
        }
    }
    EXPECT_EQ(held->readings[4].hottest.status, "NULL");
    EXPECT_NEAR(held->hottest.celsius, 140.0, 0.2); // the frame's own extremes stay
    EXPECT_NEAR(held->coldest.celsius, -10.0, 0.2);
    // Without a fresh frame the one at hand is read, also when the shutter is open again.
    const auto open = looker.settle();
    ASSERT_NE(open, nullptr);
    wishes.tools = {spotAt(9, 140, 30)};
    looker.session().wish(wishes);
    const auto same = looker.look(false);
    EXPECT_EQ(same->taken, open->taken);
    EXPECT_NEAR(same->readings.at(0).hottest.celsius, 60.0, 0.2);
}

void expectRightOrNone(const Snapshot& s) {
    for (std::size_t i = 0; i < s.readings.size(); ++i) {
        const Value& value = s.readings[i].hottest;
        if (value.status != "NULL") {
            EXPECT_NEAR(value.celsius, bodies[i].celsius, 0.4) << s.seconds << " s, body " << i;
        }
    }
}

/// Nothing is amiss. The last fault strikes when its transfer comes, which may be later than its
/// time.
bool well(const Snapshot& s) {
    return Looker::atRest(s) && s.troubles.empty() &&
           std::none_of(s.readings.begin(), s.readings.end(),
                        [](const ToolReading& r) { return r.hottest.status == "NULL"; });
}

TEST(Session, TransfersThatFailGiveNoWrongReading) {
    // Every transfer of the camera's daily round in turn.
    Source source = smallCamera(4);
    for (int n = 1; n <= 80; ++n)
        source.plan.events.push_back(
            at(3.0 + 0.12 * n, What::transfer, {double(n), n % 2 == 0 ? EIO : 0.0, 0, 0}));
    Looker looker(source, spotsOnBodies());
    ASSERT_NE(looker.settle(), nullptr);
    ASSERT_NE(looker.after(13.0,
                           [](const Snapshot& s) {
                               if (s.settled)
                                   expectRightOrNone(s);
                           }),
              nullptr);
    const auto end = looker.until(well);
    ASSERT_NE(end, nullptr);
    expectBodies(*end, 0.2, "at the end");
}

TEST(Session, TransfersThatFailInARoundGiveNoWrongReading) {
    Source source = smallCamera(4);
    unsigned n = 0;
    for (double time = 3.0; time < 16.0; time += 0.06)
        source.plan.events.push_back(
            at(time, What::transfer, {double(1 + (n = (n + 7) % 48)), EIO, 0, 0}));
    Looker looker(source, spotsOnBodies());
    ASSERT_NE(looker.settle(), nullptr);
    ASSERT_NE(looker.after(16.0,
                           [&](const Snapshot& s) {
                               if (s.settled)
                                   expectRightOrNone(s);
                               if (Looker::atRest(s))
                                   looker.session().calibrate();
                           }),
              nullptr);
    const auto end = looker.until(well);
    ASSERT_NE(end, nullptr);
    expectBodies(*end, 0.2, "at the end");
}

TEST(Session, SaysThatAFrameDidNotComeWhole) {
    // The second part of eight of a large frame, and the end of a small one.
    for (const bool big : {true, false}) {
        Source source = smallCamera(hurry(4));
        if (big)
            source.plan.scene = {};
        source.plan.events = {at(8.0, What::transfer, {1, EIO, 0, 1}),
                              at(12.0, What::transfer, {0, 0, 0, 0})};
        Looker looker(source);
        const auto before = looker.settle();
        ASSERT_NE(before, nullptr);
        const auto lost = looker.until([](const Snapshot& s) { return !s.present; });
        ASSERT_NE(lost, nullptr);
        EXPECT_EQ(lost->troubles.size(), 1U);
        EXPECT_EQ(lost->frame.counts.size(), big ? 110592U : 19200U);
        EXPECT_EQ(std::count(lost->frame.counts.begin(), lost->frame.counts.end(), 0), 0);
        const auto found = looker.settle();
        ASSERT_NE(found, nullptr);
        EXPECT_TRUE(found->troubles.empty());
    }
}

TEST(Session, EndsSettledWhateverHappensToTheCore) {
    const struct {
        const char* name;
        std::vector<irmsim::Event> events;
    } cases[] = {
        {"late", {at(0.0, What::coreLate, {2.0})}},
        {"late, then in time", {at(0.0, What::coreLate, {30.0}), at(4.0, What::coreNormal)}},
        {"garbled head", {at(0.0, What::coreGarbled, {0}), at(4.0, What::coreNormal)}},
        {"garbled length", {at(0.0, What::coreGarbled, {4}), at(4.0, What::coreNormal)}},
        {"silent", {at(0.0, What::coreSilent), at(4.0, What::coreNormal)}},
        {"off and on", {at(1.2, What::corePowerUp)}},
        {"port away", {at(2.0, What::port, {0}), at(6.0, What::port, {1})}},
        {"no port at first", {at(0.0, What::port, {0}), at(6.0, What::port, {1})}},
    };
    for (const auto& c : cases) {
        Source source = smallCamera(20);
        source.plan.events = c.events;
        Looker looker(source, spotsOnBodies());
        ASSERT_NE(looker.after(8.0), nullptr) << c.name;
        const auto s = looker.until([](const Snapshot& now) {
            return now.core == CoreState::answers && Looker::atRest(now) && now.troubles.empty();
        });
        ASSERT_NE(s, nullptr) << c.name;
        expectBodies(*s, 0.2, c.name);
    }
}

TEST(Session, ComesBackFromWhereverItWasUnplugged) {
    struct Place {
        const char* name;
        int looks; // after what was asked for
        bool settledBefore;
        int range;
    };
    const Place places[] = {{"start-up", 1, false, 0},
                            {"start-up, later", 60, false, 0},
                            {"round", 1, true, 0},
                            {"range change", 1, true, 1},
                            {"round after it", 60, true, 1}};
    for (const Place& place : places) {
        Wishes wishes = spotsOnBodies();
        Looker looker(smallCamera(4), wishes);
        if (place.settledBefore) {
            ASSERT_NE(looker.settle(), nullptr);
            looker.session().calibrate();
            wishes.range = place.range;
            looker.session().wish(wishes);
        }
        for (int i = 0; i < place.looks; ++i)
            looker.look();
        Simulation simulation;
        simulation.unplugged = true;
        looker.session().simulate(simulation);
        const auto lost = looker.look();
        EXPECT_FALSE(lost->present || lost->settled || lost->calibrating) << place.name;
        EXPECT_TRUE(says(*lost, "went away")) << place.name;
        simulation.unplugged = false;
        looker.session().simulate(simulation);
        const auto found = looker.until(
            [&](const Snapshot& s) { return Looker::atRest(s) && s.range == place.range; });
        ASSERT_NE(found, nullptr) << place.name;
        EXPECT_TRUE(found->troubles.empty()) << place.name;
        expectBodies(*found, 0.4, place.name);
    }
}

TEST(Session, SaysWhatIsWrongWithItsDirectory) {
    const WorkDir dir;
    const std::string good = std::filesystem::current_path() / "good";
    const std::string bad = std::filesystem::current_path() / "bad";
    std::string error;
    ASSERT_TRUE(irmsim::writeCameraDirectory(good, irmsim::Surroundings{}, error)) << error;
    ASSERT_TRUE(irmsim::writeCameraDirectory(bad, irmsim::Surroundings{}, error)) << error;
    for (const char* name : {"/etc/calc_len0_temp0.conf", "/etc/calc_len0_temp0_default.conf"})
        std::ofstream(bad + name) << "[ParaSet]\nMinTemp=nothing\n";
    const std::filesystem::path before = std::filesystem::current_path();
    {
        Source source = smallCamera(8);
        source.directory = good;
        Looker looker(source, spotsOnBodies());
        EXPECT_EQ(std::filesystem::current_path(), good);
        const auto s = looker.settle();
        ASSERT_NE(s, nullptr);
        expectBodies(*s, 0.2, "own directory");
    }
    EXPECT_EQ(std::filesystem::current_path(), before);
    {
        Source source = smallCamera(8);
        source.directory = bad;
        Looker looker(source, spotsOnBodies());
        const auto s = looker.until([](const Snapshot& now) { return now.calibrations == 1; });
        ASSERT_NE(s, nullptr);
        EXPECT_FALSE(s->settled);
        EXPECT_TRUE(says(*s, "No usable calibration table for lens 0 in range 0"));
        Simulation simulation;
        simulation.lens = 1;
        looker.session().simulate(simulation);
        const auto other = looker.settle();
        ASSERT_NE(other, nullptr);
        EXPECT_TRUE(other->troubles.empty());
        expectBodies(*other, 0.3, "lens 1");
    }
    Source source = smallCamera(8);
    source.directory = before / "none";
    Looker looker(source);
    const auto s = looker.look();
    EXPECT_FALSE(s->present);
    EXPECT_TRUE(says(*s, "none cannot be entered"));
    EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST(Session, OnlyOneSimulatedCameraAtATime) {
    irmsim::Camera other;
    ASSERT_TRUE(other.install());
    Looker looker(smallCamera(8));
    const auto s = looker.look();
    EXPECT_FALSE(s->present);
    EXPECT_TRUE(says(*s, "Another simulated camera is there."));
    looker.session().showScene(marked({}));
    looker.session().warmUp(40, 1);
    looker.session().calibrate();
    EXPECT_FALSE(looker.look()->present);
}

/// The machine's own camera is one that this test has.
TEST(Session, LooksAtTheMachinesOwnCamera) {
    const WorkDir dir;
    std::string error;
    ASSERT_TRUE(irmsim::writeCameraDirectory(".", irmsim::Surroundings{}, error)) << error;
    irmsim::Camera camera;
    camera.scene(irmsim::Scene::bench(160, 120)).tieToWallClock(1).devicePresent(false);
    ASSERT_TRUE(camera.install());
    Source source;
    source.kind = SourceKind::real;
    source.width = 160;
    {
        Looker looker(source, spotsOnBodies());
        const auto none = looker.look();
        EXPECT_TRUE(says(*none, "No camera: /dev/DM365-FPGA cannot be opened (No such file"));
        EXPECT_FALSE(none->hasVisible);
        EXPECT_TRUE(none->frame.counts.empty());
        camera.devicePresent(true);
        const auto s = looker.settle();
        ASSERT_NE(s, nullptr);
        EXPECT_TRUE(s->troubles.empty());
        expectBodies(*s, 0.2, "real");
        EXPECT_EQ(s->sourceName, "camera");
        camera.clearReceived();
        // No glass that is known, then the first again: a round each.
        for (const unsigned code : {7U, 3U}) {
            camera.lensCode(code);
            const auto lens = looker.until([&](const Snapshot& now) {
                return !now.calibrating && now.calibrations == (code == 7U ? 2 : 3);
            });
            ASSERT_NE(lens, nullptr);
            EXPECT_EQ(lens->lens, code == 7U ? -1 : 0);
            EXPECT_EQ(says(*lens, "No lens that is known"), code == 7U);
            EXPECT_EQ(lens->settled, code != 7U);
        }
        // Simulations are for the simulated one.
        Simulation simulation;
        simulation.unplugged = true;
        looker.session().simulate(simulation);
        looker.session().showScene(marked({}, 90.0));
        const auto still = looker.look();
        EXPECT_TRUE(still->present);
        expectBodies(*still, 0.2, "not to be changed");
    }
    const auto received = camera.received();
    ASSERT_FALSE(received.empty());
    EXPECT_EQ(received.back().code, 0x30);
    EXPECT_EQ(received.back().payload, std::vector<std::uint8_t>{1});
    EXPECT_EQ(std::count_if(received.begin(), received.end(),
                            [](const irmsim::CoreFrame& f) { return f.code == 0x31; }),
              2);
}

} // namespace
