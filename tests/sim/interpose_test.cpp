#include "sim/camera.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace irmsim;

namespace {

constexpr const char* device = "/dev/DM365-FPGA";

std::uint16_t word(int fd, off_t address) {
    std::array<std::uint8_t, 2> bytes{};
    EXPECT_EQ(lseek(fd, address, SEEK_SET), address);
    EXPECT_EQ(read(fd, bytes.data(), 2), 2);
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

} // namespace

TEST(Interpose, deviceExistsWhileACameraIsInstalled) {
    EXPECT_EQ(open(device, O_RDWR), -1);
    EXPECT_EQ(errno, ENOENT);
    int fd = -1;
    {
        Camera camera;
        ASSERT_TRUE(camera.install());
        testing::internal::CaptureStderr();
        EXPECT_FALSE(Camera().install()); // nor does its end take the first away
        testing::internal::GetCapturedStderr();
        fd = open(device, O_RDWR);
        ASSERT_GE(fd, 0);
        EXPECT_EQ(word(fd, 0x1C), 6784U); // 26.5 °C
    }
    Camera next;
    next.install();
    char byte = 0;
    EXPECT_EQ(read(fd, &byte, 1), -1); // the camera it was opened on is gone
    EXPECT_EQ(errno, ENODEV);
    EXPECT_EQ(close(fd), 0);
    EXPECT_EQ(close(fd), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(next.calls().total(), 0U);
}

TEST(Interpose, otherFilesPassThrough) {
    Camera camera;
    camera.install();
    const std::string path = testing::TempDir() + "irmsim_plain";
    const int plain = open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600);
    ASSERT_GE(plain, 0);
    EXPECT_EQ(write(plain, "hello", 5), 5);
    EXPECT_EQ(lseek(plain, 1, SEEK_SET), 1);
    char text[4] = {};
    EXPECT_EQ(read(plain, text, 3), 3);
    EXPECT_STREQ(text, "ell");
    EXPECT_EQ(access(path.c_str(), X_OK), -1); // the mode arrived
    EXPECT_EQ(close(plain), 0);
    unlink(path.c_str());
    EXPECT_EQ(camera.calls().total(), 0U);
}

TEST(Interpose, positionsAreRegisterAddresses) {
    Camera camera;
    camera.install();
    const int one = open(device, O_RDWR);
    const int two = open(device, O_RDWR);
    ASSERT_NE(one, two);
    lseek(one, 0x62, SEEK_SET);
    EXPECT_EQ(write(one, "\x34\x12", 2), 2);
    EXPECT_EQ(lseek(one, 0, SEEK_CUR), 0x64); // a transfer moves the position on
    EXPECT_EQ(word(two, 0x62), 0x1234U);
    EXPECT_EQ(lseek(one, -1, SEEK_SET), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(lseek(one, 0, SEEK_END), -1);
    EXPECT_EQ(write(one, "", 0), 0);
    close(one);
    close(two);

    const Calls calls = camera.calls();
    EXPECT_EQ(calls.openFlags, O_RDWR);
    EXPECT_EQ(calls.open, 2U);
    EXPECT_EQ(calls.lseek, 5U);
    EXPECT_EQ(calls.read, 1U);
    EXPECT_EQ(calls.write, 2U);
    EXPECT_EQ(calls.close, 2U);
    const auto log = camera.log();
    ASSERT_EQ(log.size(), 3U);
    EXPECT_TRUE(log[0].write);
    EXPECT_EQ(log[0].address, 0x62U);
    EXPECT_EQ(log[0].bytes, (std::vector<std::uint8_t>{0x34, 0x12}));
    EXPECT_FALSE(log[1].write);
    EXPECT_EQ(log[1].result, 2);
}

TEST(Interpose, faultsStrikeTheTransferTheyCount) {
    Camera camera;
    Scene scene = Scene::uniform(384, 288, 20.0);
    scene.set(0, 0, 37.0);
    camera.scene(scene).install();
    const int fd = open(device, O_RDWR);
    std::array<std::uint8_t, 4> bytes{};
    camera.failTransfer(2, Fault::refused(EIO));
    EXPECT_EQ(read(fd, bytes.data(), 4), 4);
    EXPECT_EQ(read(fd, bytes.data(), 4), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(read(fd, bytes.data(), 4), 4);
    camera.failTransfer(1, Fault::cutTo(1), Lasting::fromThenOn);
    lseek(fd, 0x62, SEEK_SET);
    EXPECT_EQ(write(fd, "\x34\x12", 2), 1);
    EXPECT_EQ(write(fd, "\x56\x12", 2), 1); // at 0x63 now
    camera.failTransfer(0, Fault::cutTo(0));
    EXPECT_EQ(word(fd, 0x62), 0x5634U);
    EXPECT_EQ(camera.faults(), 3U);

    // A frame read in parts begins anew after a failed part.
    std::vector<std::uint8_t> part(27648);
    const auto firstWord = [&] {
        lseek(fd, 0x4000, SEEK_SET);
        return read(fd, part.data(), part.size()) == 27648 ? part[0] + 256 * part[1] : -1;
    };
    EXPECT_EQ(firstWord(), 33826);
    EXPECT_EQ(firstWord(), 32152);
    camera.failTransfer(1, Fault::refused(EIO));
    EXPECT_EQ(firstWord(), -1);
    EXPECT_EQ(firstWord(), 33826);
    lseek(fd, 0x64, SEEK_SET);

    camera.failSeek(1, EIO);
    EXPECT_EQ(lseek(fd, 0, SEEK_SET), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(lseek(fd, 0, SEEK_CUR), 0x64);

    camera.unplug();
    EXPECT_EQ(read(fd, bytes.data(), 4), -1);
    EXPECT_EQ(errno, ENODEV);
    EXPECT_EQ(open(device, O_RDWR), -1);
    EXPECT_EQ(errno, ENODEV);
    camera.plugIn();
    EXPECT_EQ(read(fd, bytes.data(), 4), 4);
    camera.devicePresent(false);
    EXPECT_EQ(open(device, O_RDWR), -1);
    EXPECT_EQ(errno, ENOENT);
    close(fd);
}

TEST(Interpose, threadsMayReadWhileTheSceneChangesAndTheCameraGoes) {
    std::atomic<bool> done{false};
    std::atomic<int> seen{0};
    Camera camera;
    camera.logging(false).install();
    std::thread reader([&] {
        while (!done) {
            const int fd = open(device, O_RDWR);
            if (fd < 0)
                continue;
            std::array<std::uint8_t, 2> bytes{};
            lseek(fd, 0x40, SEEK_SET);
            if (read(fd, bytes.data(), 2) == 2)
                ++seen;
            close(fd);
        }
    });
    while (seen < 20)
        camera.scene(Scene::uniform(16, 12, seen)).nextFrame();
    for (int i = 0; i < 50; ++i) {
        camera.uninstall();
        camera.install();
    }
    done = true;
    reader.join();
    EXPECT_EQ(camera.calls().read, static_cast<unsigned long>(seen));
}
