#include "sim/camera.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <termios.h>
#include <thread>
#include <unistd.h>

using namespace irmsim;
using namespace std::chrono_literals;

namespace {

constexpr char askSum[] = "\xFF\xA5\x79\x00\x79\x5A";
constexpr char askVsk[] = "\xFF\xA5\x77\x00\x77\x5A";
const std::string sum("\x7F\xA5\x00\x79\x02\x30\x75\x3E\x5A", 9);
const std::string vsk("\x7F\xA5\x00\x77\x02\x53\x07\x21\x5A", 9);

/// The port in both its forms: virtual (false) and a pty (true).
class PortTest : public testing::TestWithParam<bool> {
protected:
    PortTest() {
        EXPECT_TRUE(camera.serialOnPty(GetParam()).install());
        port = openPort();
    }
    ~PortTest() override { close(port); }

    /// An open port, raw, whose reads end after 0.1 s of silence.
    static int openPort() {
        const int fd = open("/dev/ttyS1", O_RDWR | O_NOCTTY);
        EXPECT_GE(fd, 0);
        termios raw{};
        EXPECT_EQ(tcgetattr(fd, &raw), 0);
        cfmakeraw(&raw);
        raw.c_cc[VMIN] = 0;
        raw.c_cc[VTIME] = 1;
        EXPECT_EQ(tcsetattr(fd, TCSANOW, &raw), 0);
        return fd;
    }
    void send(const char* frame) { EXPECT_EQ(write(port, frame, 6), 6); }
    /// What comes within so many reads, until it is as long as a reply to a query of 2 bytes.
    std::string receive(int reads = 50) {
        std::string all;
        std::array<char, 9> part{};
        for (; reads > 0 && all.size() < part.size(); --reads)
            if (const ssize_t n = read(port, part.data(), part.size() - all.size()); n > 0)
                all.append(part.data(), static_cast<std::size_t>(n));
        return all;
    }

    Camera camera;
    int port = -1;
};

INSTANTIATE_TEST_SUITE_P(Forms, PortTest, testing::Bool(), [](const auto& form) {
    return std::string(form.param ? "pty" : "virtual");
});

} // namespace

TEST_P(PortTest, queriesAreAnswered) {
    EXPECT_EQ(receive(1), "");
    send(askSum);
    EXPECT_EQ(receive(), sum);
    send(askVsk);
    send(askSum);
    EXPECT_EQ(receive(), vsk);
    EXPECT_EQ(receive(), sum);
    const PortCalls calls = camera.portCalls();
    EXPECT_EQ(calls.open, 1U);
    EXPECT_EQ(calls.openFlags, O_RDWR | O_NOCTTY);
    EXPECT_EQ(calls.write, 3U);
    EXPECT_EQ(calls.attributes, 2U);
    EXPECT_GE(calls.emptyReads, 1U);
    const auto frames = camera.received();
    ASSERT_EQ(frames.size(), 3U);
    EXPECT_EQ(frames[1].code, 0x77);
    EXPECT_TRUE(frames[1].good);
}

TEST_P(PortTest, flushThrowsAwayWhatHasArrived) {
    send(askVsk);
    pollfd arrived{port, POLLIN, 0};
    EXPECT_EQ(poll(&arrived, 1, 10000), 1);
    std::this_thread::sleep_for(20ms); // the last byte too
    EXPECT_EQ(tcflush(port, TCIFLUSH), 0);
    send(askSum);
    EXPECT_EQ(receive(), sum);
    EXPECT_EQ(tcflush(port, 77), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST_P(PortTest, coreIsSilentLateOrGarbledOnDemand) {
    camera.coreSilent(true);
    send(askSum);
    EXPECT_EQ(receive(3), "");
    camera.coreSilent(false).coreGarbled(3);
    send(askVsk);
    EXPECT_EQ(receive()[3], '\x88');
    camera.coreGarbled(-1).coreLate(0.8);
    const double before = camera.seconds();
    const auto wall = std::chrono::steady_clock::now();
    send(askSum);
    EXPECT_EQ(receive(2), "");
    EXPECT_EQ(receive(), sum);
    const auto took = std::chrono::steady_clock::now() - wall;
    if (GetParam())
        EXPECT_GE(took, 800ms);
    else
        EXPECT_NEAR(camera.seconds() - before, 0.8, 1e-9);
}

TEST_P(PortTest, callsFailOnDemand) {
    char byte = 0;
    camera.failPortTransfer(2, Fault::refused(EAGAIN));
    send(askSum);
    EXPECT_EQ(read(port, &byte, 1), -1);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(receive(), sum);
    camera.failPortTransfer(1, Fault::cutTo(3));
    EXPECT_EQ(write(port, askSum, 6), 3);
    EXPECT_EQ(write(port, askSum + 3, 3), 3);
    EXPECT_EQ(receive(), sum);

    termios attributes{};
    camera.failPortSetup(2, ENXIO);
    EXPECT_EQ(tcgetattr(port, &attributes), 0);
    EXPECT_EQ(tcsetattr(port, TCSANOW, &attributes), -1);
    EXPECT_EQ(errno, ENXIO);
    EXPECT_EQ(tcsetattr(port, 99, &attributes), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(camera.faults(), 3U);

    camera.unplugPort();
    EXPECT_EQ(read(port, &byte, 1), -1);
    EXPECT_EQ(errno, EIO);
    errno = 0;
    EXPECT_EQ(write(port, &byte, 1), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(tcgetattr(port, &attributes), -1);
    EXPECT_EQ(tcflush(port, TCIFLUSH), -1);
    EXPECT_EQ(open("/dev/ttyS1", O_RDWR), -1);
    EXPECT_EQ(errno, EIO);
    camera.plugInPort().portPresent(false);
    send(askSum);
    EXPECT_EQ(receive(), sum);
    EXPECT_EQ(open("/dev/ttyS1", O_RDWR), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST_P(PortTest, descriptorsOutliveTheCameraAndTheHostMayComeAgain) {
    for (int i = 0; i < 3; ++i) {
        close(port);
        port = openPort();
        send(askSum);
        EXPECT_EQ(receive(), sum);
    }
    camera.uninstall();
    char byte = 0;
    EXPECT_EQ(read(port, &byte, 1), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(write(port, &byte, 1), -1);
    termios attributes{};
    EXPECT_EQ(tcgetattr(port, &attributes), -1);
    camera.install();
    EXPECT_EQ(read(port, &byte, 1), -1);
    close(port);
    port = openPort();
    send(askVsk);
    EXPECT_EQ(receive(), vsk);
}

TEST_P(PortTest, hostThatNeverReadsBlocksNobody) {
    std::string frames;
    for (int i = 0; i < 100; ++i)
        frames += std::string(askSum, 6);
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(write(port, frames.data(), frames.size()), 600);
    for (int i = 0; i < 1000 && camera.coreCounts().good[0x79] < 20000; ++i)
        std::this_thread::sleep_for(10ms);
    EXPECT_EQ(camera.coreCounts().good[0x79], 20000U);
    EXPECT_EQ(camera.coreCounts().bad, 0U);
    EXPECT_EQ(camera.received().size(), 20000U);
    EXPECT_EQ(tcflush(port, TCIFLUSH), 0);
}

TEST_P(PortTest, threadsMayTalkWhileTheCameraChanges) {
    camera.logging(false);
    std::atomic<bool> done{false};
    std::thread host([this, &done] {
        while (!done) {
            send(askSum);
            receive(2);
        }
    });
    for (int i = 0; i < 50 || camera.coreCounts().good[0x79] < 5; ++i)
        camera.warmUp(WarmUp::inside(20, 40)).coreSilent(i % 2 != 0).advance(0.01);
    done = true;
    host.join();
    EXPECT_EQ(camera.coreCounts().bad, 0U);
}

TEST(Port, keepsAllItsAttributes) {
    Camera camera;
    camera.install();
    const int port = open("/dev/ttyS1", O_RDWR);
    termios set{};
    ASSERT_EQ(tcgetattr(port, &set), 0);
    EXPECT_EQ(cfgetospeed(&set), static_cast<speed_t>(B9600));
    EXPECT_NE(set.c_lflag & ICANON, 0U);
    set.c_cflag = CS7 | PARENB | PARODD | CSTOPB | CLOCAL; // which a pty drops in part
    set.c_iflag = INPCK;
    set.c_cc[VTIME] = 3;
    cfsetispeed(&set, B300);
    cfsetospeed(&set, B115200);
    ASSERT_EQ(tcsetattr(port, TCSAFLUSH, &set), 0);
    termios got{};
    ASSERT_EQ(tcgetattr(port, &got), 0);
    for (const termios& t : {got, camera.portAttributes()}) {
        EXPECT_EQ(t.c_cflag & (CSIZE | PARENB | PARODD | CSTOPB),
                  static_cast<tcflag_t>(CS7 | PARENB | PARODD | CSTOPB));
        EXPECT_EQ(t.c_iflag, static_cast<tcflag_t>(INPCK));
        EXPECT_EQ(cfgetospeed(&t), static_cast<speed_t>(B115200));
        EXPECT_EQ(t.c_cc[VTIME], 3);
    }
    close(port);
}
