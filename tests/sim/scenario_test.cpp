#include "sim/camera.h"
#include "sim/observer.h"
#include "sim/plan.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

using namespace irmsim;

namespace {

Event event(double seconds, What what, std::array<double, 6> values = {}) {
    return {timeOf(seconds), what, values, {}};
}

} // namespace

TEST(Scenario, targetsMoveOverTheSceneAndLeaveItAsItWas) {
    Camera camera;
    camera.scene(Scene::uniform(160, 120, 20.0));
    camera.scenario(
        Scenario({event(1, What::targetAt, {0, 10, 10, 3, 3, 37}),
                  event(2, What::targetMove, {0, 110, 60, 10}),
                  event(7, What::targetAt, {1, 60, 35, 1, 1, 50}), event(20, What::targetOff, {0})},
                 {}));
    struct Look {
        double at;
        int x;
        int y;
        double celsius;
    };
    // At 6 s it is four tenths of the way; at 7 s the second is before it.
    const std::vector<Look> looks{{1, 11, 11, 37},   {1, 12, 11, 20},   {6, 50, 30, 37},
                                  {6, 10, 10, 20},   {7, 60, 35, 50},   {7, 61, 35, 37},
                                  {19, 110, 60, 37}, {20, 110, 60, 15}, {20, 60, 35, 50}};
    for (const Look& look : looks) {
        camera.advance(look.at - camera.seconds());
        EXPECT_EQ(camera.truthAt(look.x, look.y), look.celsius) << look.at << " s, " << look.x;
        if (look.at == 19.0)
            camera.scene(Scene::uniform(160, 120, 15.0)); // the target is before it too
    }
}

TEST(Scenario, oneLongSleepIsAsManyShortOnes) {
    // The core calibrates by itself at 60.3 s, between two events.
    const auto adAfter = [](const std::vector<double>& steps) {
        Camera camera;
        camera.scenario(Scenario({event(50, What::sensor, {28.0}), event(61, What::inside, {29.0}),
                                  event(62, What::warmUp, {40.0, 100.0})},
                                 {}));
        for (const double step : steps)
            camera.advance(step);
        return camera.board().ad(5, 5);
    };
    EXPECT_EQ(adAfter({100}), adAfter({49, 2, 9.2, 0.2, 0.5, 0.5, 1.6, 37}));
    EXPECT_NE(adAfter({100}), adAfter({59}));
}

TEST(Plan, comesBackAsItWasAndNothingElseIsTaken) {
    Plan plan;
    plan.scene.kind = ScenePlan::Kind::gradient;
    plan.inside = 30.25;
    plan.warmUp = WarmUp::inside(1.0 / 3, 45);
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
         {"2\n", "1\nend\n", "1\nrange 2\n", "1\nscene bench 1 1 0 nan\n", "1\nevent 1 sceen 0\n"})
        EXPECT_FALSE(parsePlan(std::string("irmsim-plan ") + wrong, error)) << wrong;
}

TEST(Observer, isToldOfCallsOnSimulatedAndRealDevicesWithTheirResult) {
    std::string told;
    const auto tell = [](void* to, const Observation& o) {
        const long result = o.call == Observation::Call::open ? 0 : o.result;
        const auto* bytes = reinterpret_cast<const char*>(o.bytes);
        *static_cast<std::string*>(to) +=
            "OSRWCgsf"[static_cast<int>(o.call)] + std::string(o.real ? "r" : "") +
            (o.port ? "p" : "") + std::to_string(o.address) + "," + std::to_string(o.length) + "=" +
            std::to_string(result) + (bytes == nullptr ? "" : std::string(bytes, o.length)) + " ";
    };
    const std::string file = testing::TempDir() + "irmsim_device";
    Observer observer{tell, &told};
    observer.device = file.c_str();
    setObserver(&observer);
    const auto toldOf = [&](const char* path) {
        told.clear();
        const int fd = open(path, O_RDWR | O_CREAT | O_TRUNC, 0600);
        std::array<char, 4> bytes{};
        lseek(fd, 0x62, SEEK_SET);
        EXPECT_EQ(write(fd, "ab", 2), 2);
        EXPECT_EQ(lseek(fd, -1, SEEK_SET), -1);
        EXPECT_EQ(errno, EINVAL);
        lseek(fd, 0x62, SEEK_SET);
        EXPECT_EQ(read(fd, bytes.data(), 2), 2);
        close(fd);
        return told;
    };
    EXPECT_EQ(toldOf(file.c_str()), "Or0,0=0 Sr98,0=0 Wr98,2=2ab Sr100,0=-22 Sr98,0=0 Rr98,2=2ab "
                                    "Cr100,0=0 ");
    Camera camera;
    camera.install();
    EXPECT_EQ(toldOf("/dev/DM365-FPGA"),
              "O0,0=0 S98,0=0 W98,2=2ab S100,0=-22 S98,0=0 R98,2=2ab C100,0=0 ");
    camera.devicePresent(false).uninstall();
    setObserver(nullptr);
    EXPECT_EQ(toldOf(file.c_str()), "");
    unlink(file.c_str());
}
