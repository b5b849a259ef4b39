#include "sim/camera.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

using namespace irmsim;
using namespace std::chrono_literals;

namespace {

/// An installed camera with both its devices open.
class TimeTest : public testing::Test {
protected:
    TimeTest() { camera.scene(Scene::uniform(160, 120, 37.0)); }
    ~TimeTest() override {
        close(device);
        close(port);
    }
    unsigned word(off_t address) {
        std::array<std::uint8_t, 2> raw{};
        lseek(device, address, SEEK_SET);
        EXPECT_EQ(read(device, raw.data(), 2), 2);
        return raw[0] + 256U * raw[1];
    }
    void readFrame() {
        std::array<char, 38400> frame{};
        lseek(device, 0x4000, SEEK_SET);
        EXPECT_EQ(read(device, frame.data(), frame.size()), 38400);
    }
    template <std::size_t n>
    void command(const char (&frame)[n]) {
        EXPECT_EQ(write(port, frame, n - 1), static_cast<ssize_t>(n - 1));
    }
    /// AD of the coldest and the hottest pixel, which are the same here.
    unsigned ad() { return word(0x42) == word(0x40) ? word(0x40) : 0; }

    Camera camera;
    int device = (camera.install(), open("/dev/DM365-FPGA", O_RDWR));
    int port = open("/dev/ttyS1", O_RDWR | O_NOCTTY);
};

constexpr char insideShutter[] = "\xFF\xA5\x31\x00\x31\x5A";
constexpr char noAutoShutter[] = "\xFF\xA5\x30\x01\x00\x31\x5A";
constexpr char highRange[] = "\xFF\xA5\x82\x04\xD2\x00\x00\x00\x54\x5A";

} // namespace

TEST_F(TimeTest, framesAndSleepsAreTime) {
    readFrame();
    EXPECT_DOUBLE_EQ(camera.seconds(), 0.04);
    lseek(device, 0x14, SEEK_SET);
    EXPECT_EQ(write(device, "\1", 1), 1); // frozen: the frame stays, time goes on
    readFrame();
    EXPECT_DOUBLE_EQ(camera.seconds(), 0.08);
    EXPECT_EQ(camera.board().frameNumber(), 1U);
    EXPECT_EQ(usleep(500000), 0);
    EXPECT_DOUBLE_EQ(camera.seconds(), 0.58);
    camera.advance(3600).frameRate(50).nextFrame();
    EXPECT_DOUBLE_EQ(camera.seconds(), 3600.6);
    camera.advance(-1).advance(std::nan(""));
    EXPECT_DOUBLE_EQ(camera.seconds(), 3600.6);
}

TEST_F(TimeTest, tiedToTheWallSleepsTakeTheirTime) {
    camera.tieToWallClock(50);
    const auto before = std::chrono::steady_clock::now();
    usleep(500000);
    char byte = 0;
    EXPECT_EQ(read(port, &byte, 1), 0); // 0.1 s of silence
    EXPECT_GE(std::chrono::steady_clock::now() - before, 12ms);
    EXPECT_GE(camera.seconds(), 0.6);
}

TEST_F(TimeTest, warmUpIsOfFirstOrder) {
    camera.warmUp({26.5, 45.0, 20.0, 50.0});
    const struct {
        double after, shutter, sensor;
        unsigned shutterWord, sensorWord;
    } cases[] = {{0, 26.5, 20.0, 6784, 5120},
                 {600, 38.19423033832832, 38.96361676485673, 9778, 9975},
                 {1800, 44.07893923519452, 48.50638794896408, 11284, 12418}};
    for (const auto& c : cases) {
        camera.advance(c.after - camera.seconds());
        EXPECT_EQ(word(0x1C), c.shutterWord);
        EXPECT_EQ(word(0x1E), c.sensorWord);
        EXPECT_NEAR(camera.detector().shutterTemp(), c.shutter, 1e-10); // not rounded
        EXPECT_NEAR(camera.detector().sensorTemp(), c.sensor, 1e-10);
    }
    camera.insideTemp(30).advance(600);
    EXPECT_EQ(word(0x1C), 7680U); // no longer warming
    camera.warmUp(WarmUp::inside(10, 20, 0)).nextFrame();
    EXPECT_EQ(word(0x1E), 5120U);
}

TEST_F(TimeTest, commandsCloseTheShutterAndCalibrate) {
    camera.temperatures(26.5, 27.0); // drifted
    EXPECT_EQ(ad(), 34085U);
    command(insideShutter);
    EXPECT_EQ(ad(), 32768U);
    camera.advance(0.299);
    EXPECT_EQ(ad(), 32768U);
    camera.advance(0.001);
    EXPECT_EQ(ad(), 33801U);
    EXPECT_EQ(camera.calibrations(), 1U);
    command(highRange); // at once, so frames until then are closed ones
    EXPECT_EQ(camera.detector().range(), 1);
    for (int i = 0; i < 7; ++i)
        readFrame();
    EXPECT_EQ(ad(), 32768U);
    readFrame();
    EXPECT_NE(ad(), 32768U);
    camera.shutterClosed(true);
    EXPECT_EQ(ad(), 32768U);
    camera.shutterClosed(false).range(0);
    EXPECT_EQ(ad(), 33826U);
    EXPECT_EQ(camera.coreIntTime(), 120U);
}

TEST_F(TimeTest, automaticShutterCalibratesUnseen) {
    camera.temperatures(26.5, 27.0).advance(59.99);
    EXPECT_EQ(ad(), 34085U);
    camera.advance(0.01);
    EXPECT_EQ(ad(), 32768U);
    camera.advance(0.3);
    EXPECT_EQ(ad(), 33801U);
    command(noAutoShutter);
    camera.temperatures(26.5, 27.5).advance(1000);
    EXPECT_EQ(camera.calibrations(), 1U);
    camera.corePowerUp().autoShutterPeriod(10).advance(35);
    EXPECT_EQ(camera.calibrations(), 5U); // power-up, 10, 20 and 30 s
}

// Expected counts are of an independent calculation of the law.
TEST_F(TimeTest, countsFollowWarmUpCalibrationsAndDrift) {
    const struct {
        const char* what;
        double celsius, calibrated, seen;
        bool high, modify, offset;
        Surroundings truth;
        double counts;
    } cases[] = {
        {"just calibrated", 37, 100.3, 100.3, false, false, false, {}, 33778.693528},
        {"drifted", 37, 100.3, 130.3, false, false, false, {}, 34437.476961},
        {"modify slope", 100, 100.3, 130.3, false, true, false, {}, 43369.479384},
        {"offset law", 37, 600.3, 640.3, false, false, true, {}, 32622.681858},
        {"high range", 300, 100.3, 130.3, true, true, false, {}, 49634.642627},
        {"far away", 37, 100.3, 130.3, false, false, false, {.8, 60, .7, 25, 35}, 34432.934229},
    };
    command(noAutoShutter);
    for (const auto& c : cases) {
        camera.driftLaw(c.offset ? DriftLaw::offset : DriftLaw::tableSpace).modifySlope(c.modify);
        camera.range(0).surroundings(c.truth).warmUp({26.5, 45.0, 20.0, 50.0});
        const double start = camera.seconds();
        camera.advance(c.calibrated - 0.3);
        c.high ? command(highRange) : command(insideShutter);
        camera.advance(start + c.seen - camera.seconds());
        EXPECT_NEAR(camera.detector().counts(c.celsius), c.counts, 1e-5) << c.what;
    }
}

TEST_F(TimeTest, sleepLetsAThreadFinishWhatItWasGiven) {
    for (int i = 0; i < 20; ++i) {
        camera.clearReceived();
        std::thread worker([this] {
            volatile unsigned busy = 0;
            while (busy < 300000)
                busy = busy + 1;
            command(insideShutter);
        });
        usleep(900000);
        EXPECT_EQ(camera.received().size(), 1U);
        worker.join();
    }
}
