#include "sim/camera.h"
#include "sim/observer.h"
#include "sim/plan.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <unistd.h>

using namespace irmsim;

namespace {

Event event(double seconds, What what, std::array<double, 6> values = {}) {
    return {timeOf(seconds), what, values, {}};
}

/// What the device answers at an address, as a word; the negative errno on failure.
int word(off_t address) {
    const int fd = open("/dev/DM365-FPGA", O_RDWR);
    std::array<unsigned char, 2> bytes{};
    const bool read =
        fd >= 0 && lseek(fd, address, SEEK_SET) == address && ::read(fd, bytes.data(), 2) == 2;
    const int error = errno;
    close(fd);
    return read ? bytes[0] + 256 * bytes[1] : -error;
}

int adAt(Camera& camera, int x, int y) { return camera.board().ad(x, y); }

} // namespace

TEST(Scenario, everyEventIsSeenFromItsTimeOn) {
    struct Case {
        Event event;
        std::function<double(Camera&)> look;
        double before;
        double after;
    };
    const auto shutter = [](Camera&) { return word(0x1C) / 256.0; };
    const auto sensor = [](Camera&) { return word(0x1E) / 256.0; };
    const auto middle = [](Camera& camera) { return camera.truthAt(80, 60); };
    const auto hottest = [](Camera&) { return word(0x40); };
    const std::array<unsigned char, 6> askVsk{0xFF, 0xA5, 0x77, 0x00, 0x77, 0x5A};
    const auto answered = [&](Camera&) { // bytes that the core answers a question with
        const int fd = open("/dev/ttyS1", O_RDWR);
        std::array<char, 64> bytes{};
        const ssize_t sent = write(fd, askVsk.data(), askVsk.size());
        const ssize_t n = sent < 0 ? sent : read(fd, bytes.data(), bytes.size());
        close(fd);
        return static_cast<double>(n);
    };
    const std::vector<Case> cases{
        {event(1, What::scene, {0}), middle, 37, 50},
        {event(1, What::targetAt, {0, 80, 60, 3, 3, 90}), middle, 37, 90},
        {event(1, What::inside, {30}), shutter, 26.5, 30},
        {event(1, What::inside, {30}), sensor, 26.5, 30},
        {event(1, What::sensor, {28}), sensor, 26.5, 28},
        {event(1, What::sensor, {28}), shutter, 26.5, 26.5},
        {event(1, What::shutter, {25}), shutter, 26.5, 25},
        {event(1, What::warmUp, {45, 0}), sensor, 26.5, 45},
        // The climate sensor's word is (T + 39.66) / 0.01.
        {event(1, What::ambient, {10}), [](Camera&) { return word(0x8C); }, 6466, 4966},
        {event(1, What::lens, {1}), [](Camera&) { return word(0x0F) & 7; }, 3, 5},
        {event(1, What::range, {1}), [](Camera& c) { return c.detector().range(); }, 0, 1},
        {event(1, What::range, {1}), [](Camera& c) { return c.coreIntTime(); }, 120, 210},
        {event(1, What::freeze, {1}), [](Camera&) { return word(0x14) & 1; }, 0, 1},
        {event(1, What::coreSilent), answered, 9, 0},
        {event(1, What::coreLate, {0.5}), answered, 9, 0},
        {event(1, What::transfer, {1, EAGAIN, 0, 1}), hottest, 33826, -EAGAIN},
        {event(1, What::device, {0}), hottest, 33826, -ENODEV},
        {event(1, What::port, {0}), answered, 9, -1},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        Camera camera;
        camera.scene(Scene::uniform(160, 120, 37.0));
        ScenePlan fifty;
        fifty.kind = ScenePlan::Kind::uniform;
        fifty.from = 50.0;
        camera.scenario(Scenario({cases[i].event}, {fifty})).install();
        camera.advance(0.99);
        EXPECT_NEAR(cases[i].look(camera), cases[i].before, 0.01) << "case " << i;
        Camera other; // the look may have taken time
        camera.uninstall();
        other.scene(Scene::uniform(160, 120, 37.0));
        other.scenario(Scenario({cases[i].event}, {fifty})).install();
        other.advance(1.0);
        EXPECT_NEAR(cases[i].look(other), cases[i].after, 0.01) << "case " << i;
    }
}

TEST(Scenario, targetsMoveOverTheSceneAndLeaveItAsItWas) {
    Camera camera;
    camera.scene(Scene::uniform(160, 120, 20.0));
    camera.scenario(
        Scenario({event(1, What::targetAt, {0, 10, 10, 3, 3, 37}),
                  event(2, What::targetMove, {0, 110, 60, 10}),
                  event(7, What::targetAt, {1, 60, 35, 1, 1, 50}), event(20, What::targetOff, {0})},
                 {}));
    const auto seen = [&](double advance, int x, int y) {
        camera.advance(advance);
        return camera.truthAt(x, y);
    };
    EXPECT_EQ(seen(1, 10, 10), 37);
    EXPECT_EQ(adAt(camera, 11, 11), 33826);
    EXPECT_EQ(adAt(camera, 12, 11), 32152);
    EXPECT_EQ(seen(5, 50, 30), 37); // at 6 s: four tenths of the way
    EXPECT_EQ(seen(0, 10, 10), 20);
    EXPECT_EQ(seen(1, 60, 35), 50); // the second before the first
    EXPECT_EQ(seen(0, 61, 35), 37);
    EXPECT_EQ(seen(12, 110, 60), 37);
    camera.scene(Scene::uniform(160, 120, 15.0));
    EXPECT_EQ(seen(0, 110, 60), 37); // before a new scene too
    EXPECT_EQ(seen(1, 110, 60), 15);
    EXPECT_EQ(seen(0, 60, 35), 50);
}

TEST(Scenario, oneLongSleepIsAsManyShortOnes) {
    // The core calibrates by itself at 60.3 s, between two events.
    const auto adAfter = [](std::vector<double> steps) {
        Camera camera;
        camera.scenario(Scenario({event(50, What::sensor, {28.0}), event(61, What::inside, {29.0}),
                                  event(62, What::warmUp, {40.0, 100.0})},
                                 {}));
        for (const double step : steps)
            camera.advance(step);
        return adAt(camera, 5, 5);
    };
    const int once = adAfter({100});
    EXPECT_EQ(once, adAfter({49, 2, 9.2, 0.2, 0.5, 0.5, 1.6, 37}));
    EXPECT_NE(once, adAfter({59}));
}

TEST(Plan, comesBackAsItWasAndNothingElseIsTaken) {
    Plan plan;
    plan.scene.kind = ScenePlan::Kind::gradient;
    plan.scene.from = 0.1;
    plan.inside = 30.25;
    plan.warmUp = WarmUp::inside(1.0 / 3, 45);
    plan.noise = 2.5;
    plan.seed = 18446744073709551615U;
    plan.scenes.resize(2);
    plan.scenes[0].kind = ScenePlan::Kind::pgm;
    plan.scenes[0].pgm = std::string("P5\nend\n\0\xFF", 9);
    plan.events = {event(1.5, What::scene, {0}), event(2, What::targetAt, {0, 1, 2, 3, 4, 0.1})};
    plan.events[1].text = "after 0.5 target cup at 1 2";
    std::string error;
    const std::string text = writePlan(plan);
    const auto back = parsePlan(text, error);
    ASSERT_TRUE(back) << error;
    EXPECT_EQ(writePlan(*back), text);
    EXPECT_EQ(back->seed, plan.seed);
    EXPECT_EQ(back->warmUp->shutterStart, 1.0 / 3);
    EXPECT_EQ(back->scenes[0].pgm, plan.scenes[0].pgm);
    EXPECT_EQ(back->events[1].at, Time(2000000000));
    EXPECT_EQ(back->events[1].text, plan.events[1].text);
    for (std::size_t length = 0; length < text.size(); ++length)
        EXPECT_FALSE(parsePlan(text.substr(0, length), error)) << length;
    for (const char* wrong :
         {"irmsim-plan 2\n", "irmsim-plan 1\nend\n", "irmsim-plan 1\nrange 2\n",
          "irmsim-plan 1\nscene bench 1 1 0 nan\n", "irmsim-plan 1\nevent 1 sceen 0\n"})
        EXPECT_FALSE(parsePlan(wrong, error)) << wrong;
}

TEST(Observer, isToldOfCallsOnSimulatedAndRealDevicesWithTheirResult) {
    struct Told {
        std::vector<std::string> calls;
        static void tell(void* to, const Observation& o) {
            static constexpr std::array names{"open",  "seek", "read", "write",
                                              "close", "get",  "set",  "flush"};
            std::string text = names[static_cast<std::size_t>(o.call)];
            text += std::string(o.real ? " real" : "") + (o.port ? " port" : "") + " at " +
                    std::to_string(o.address) + " of " + std::to_string(o.length);
            if (o.call != Observation::Call::open || o.result < 0)
                text += ": " + std::to_string(o.result);
            if (o.bytes != nullptr)
                text += " '" +
                        std::string(reinterpret_cast<const char*>(o.bytes),
                                    static_cast<std::size_t>(o.result)) +
                        "'";
            static_cast<Told*>(to)->calls.push_back(text);
        }
    } told;
    const std::string file = testing::TempDir() + "irmsim_device";
    Observer observer{Told::tell, &told};
    observer.device = file.c_str();
    setObserver(&observer);
    const auto toldOf = [&](const char* path) {
        told.calls.clear();
        const int fd = open(path, O_RDWR | O_CREAT | O_TRUNC, 0600);
        std::array<char, 4> bytes{};
        lseek(fd, 0x62, SEEK_SET);
        EXPECT_EQ(write(fd, "ab", 2), 2);
        EXPECT_EQ(lseek(fd, -1, SEEK_SET), -1);
        EXPECT_EQ(errno, EINVAL);
        lseek(fd, 0x62, SEEK_SET);
        EXPECT_EQ(read(fd, bytes.data(), 2), 2);
        close(fd);
        return told.calls;
    };
    const auto expected = [](const std::string& real) {
        return std::vector<std::string>{
            "open" + real + " at 0 of 0",           "seek" + real + " at 98 of 0: 0",
            "write" + real + " at 98 of 2: 2 'ab'", "seek" + real + " at 100 of 0: -22",
            "seek" + real + " at 98 of 0: 0",       "read" + real + " at 98 of 2: 2 'ab'",
            "close" + real + " at 100 of 0: 0"};
    };
    EXPECT_EQ(toldOf(file.c_str()), expected(" real"));
    Camera camera;
    camera.install();
    EXPECT_EQ(toldOf("/dev/DM365-FPGA"), expected(""));
    camera.devicePresent(false).uninstall();
    setObserver(nullptr);
    EXPECT_EQ(toldOf(file.c_str()), std::vector<std::string>());
    unlink(file.c_str());
}
