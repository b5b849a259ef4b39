// Frames, sensors and statistics; refusals, failed and short transfers; the lines that are printed.
#include "support/host.h"

#include <cerrno>
#include <deque>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/time.h>

namespace {

using namespace irmtest;

using irmsim::Fault;

/// Times that `gettimeofday` is to tell before it tells the real one again.
std::deque<timeval> s_times;

} // namespace

extern "C" [[gnu::visibility("default")]] int gettimeofday(timeval* now, void*) noexcept {
    timespec real{};
    clock_gettime(CLOCK_REALTIME, &real);
    *now = s_times.empty() ? timeval{real.tv_sec, real.tv_nsec / 1000} : s_times.front();
    if (!s_times.empty())
        s_times.pop_front();
    return 0;
}

namespace {

TEST_F(Board, framesLieInTheBufferPartByPart) {
    camera.scene(irmsim::Scene::bench(384, 288));
    const std::vector<std::uint16_t> expected = camera.board().frame().ad;
    std::vector<std::uint16_t> frame(110592);
    printed([&] { EXPECT_EQ(board.fpga_read_IRAD_384(frame.data()), 0); });
    EXPECT_EQ(frame, expected);
    camera.poke(0x4000, {0, 0, 0x34, 0x12}); // a first word of 0 is replaced by the second
    printed([&] { board.fpga_read_IRAD_384(frame.data()); });
    for (std::size_t part = 0; part < 8; ++part)
        EXPECT_EQ(frame[part * 13824], 0x1234);
    frame.assign(19201, 7);
    board.fpga_read_IRAD(frame.data());
    EXPECT_TRUE(frame[0] == 0x1234 && frame[19199] != 7 && frame[19200] == 7);
}

TEST_F(Board, frameReadsPrintTheirTime) {
    std::vector<std::uint16_t> frame(110592);
    const auto lines = [&](timeval start, timeval end, std::uint16_t* buffer) {
        s_times = {start, end};
        const unsigned result = buffer == nullptr ? 255 : 0;
        return printed([&] { EXPECT_EQ(board.fpga_read_IRAD_384(buffer), result); });
    };
    const std::string first = "fpga read irad 384\n";
    EXPECT_EQ(lines({10, 1000}, {12, 3999}, frame.data()), first + "time2:2002 ms\n");
    EXPECT_EQ(lines({10, 5}, {10, 5}, frame.data()), first + "time2:0 ms\n");
    EXPECT_EQ(lines({10, 998501}, {11, 1500}, frame.data()), first + "time1:2 ms\n");
    EXPECT_EQ(lines({10, 999500}, {11, 1500}, frame.data()), first + "time1:2 ms\n");
    EXPECT_EQ(lines({}, {}, nullptr), first + "add is null\n");
    EXPECT_EQ(printed([&] { EXPECT_EQ(board.fpga_read_IRAD(nullptr), 255); }), "add is null\n");
}

TEST_F(Board, averagesAreSumsOverCountsCutTo16Bits) {
    const std::tuple<std::vector<std::uint8_t>, std::vector<std::uint8_t>, unsigned> cases[] = {
        {{0x0A, 0, 0, 0, 0, 0}, {3, 0, 0, 0}, 3},
        {{0xFF, 0xAF, 0xAD, 7, 1, 0}, {0, 0xB0, 1, 0}, 40000},     // 4423790591 / 110592
        {{255, 255, 255, 255, 255, 255}, {255, 255, 255, 255}, 0}, // 65536
        {{255, 255, 255, 255, 255, 255}, {0, 0, 0, 0}, 0}};
    for (const auto& [sum, count, average] : cases) {
        camera.poke(0x44, sum).poke(0x6C, count).clearLog();
        EXPECT_EQ(board.fpga_get_auto_averg(), average);
        EXPECT_EQ(transfers(camera), "R44:6 R6C:4");
    }
    const std::pair<unsigned, unsigned> spans[] = {
        {1, 0}, {3, 21845}, {64, 0}, {65, 64527}, {4194, 1000}, {65535, 64}, {16448, 255}};
    for (const auto& [gain, span] : spans) {
        camera.poke(0x64, word(gain)).poke(0x72, word(gain));
        EXPECT_EQ(joined(board.fpga_get_span(), board.fpga_get_fpga_span()), joined(span, span));
    }
}

TEST_F(Board, sensorsAreConverted) {
    const std::tuple<unsigned, unsigned, const char*> words[] = {{0x8000, 0x7FFF, "-128 127.99609"},
                                                                 {0x0100, 0xFFFF, "1 -0.00390625"}};
    float shutter = 9, sensor = 9, temp = 1, humid = 2;
    for (const auto& [shutterWord, sensorWord, expected] : words) {
        camera.poke(0x1C, word(shutterWord)).poke(0x1E, word(sensorWord)).clearLog();
        EXPECT_EQ(board.fpga_read_shutterTemp(&shutter) + board.fpga_read_sensorTemp(&sensor), 0);
        EXPECT_EQ(joined(shutter, sensor, transfers(camera)),
                  expected + std::string(" R1C:2 R1E:2"));
    }
    const std::tuple<unsigned, unsigned, const char*> climates[] = {
        {0xFFFF, 1500, "-1 1 2 R8C:2"},
        {6400, 0xFFFF, "-1 24.34 2 R8C:2 R8E:2"},
        {6400, 1500, "0 24.34 50.3642 R8C:2 R8E:2"}};
    for (const auto& [rawTemp, rawHumid, expected] : climates) {
        camera.poke(0x8C, word(rawTemp)).poke(0x8E, word(rawHumid)).clearLog();
        const int result = board.fpga_get_sht11_temp_humid(&temp, &humid);
        EXPECT_EQ(joined(result, temp, humid, transfers(camera)), expected);
    }
}

TEST_F(Board, lensCodesAreMappedToLensIndices) {
    std::string all;
    for (unsigned code = 0; code < 8; ++code)
        for (const bool variant : {false, true}) {
            camera.lensCode(code).lensVariant(variant).clearLog();
            all += std::to_string(board.fpga_read_lenIndex()) + ' ';
            EXPECT_EQ(transfers(camera), code == 7 ? "R0F:1 R00:1" : "R0F:1");
        }
    EXPECT_EQ(all, "6 6 2 2 4 4 0 0 5 5 1 1 3 3 255 0 ");
}

TEST_F(Board, theLensVariantIsTheTopBit) {
    camera.lensCode(7);
    for (const auto& [control, lens] : {std::pair(0x7F, 255), {0x80, 0}, {0xFF, 0}, {0x00, 255}}) {
        camera.poke(0x00, {static_cast<std::uint8_t>(control)});
        EXPECT_EQ(board.fpga_read_lenIndex(), lens) << control;
    }
}

TEST(Device, mayHaveTheFirstDescriptor) {
    irmsim::Camera camera;
    camera.install();
    camera.poke(0x70, {0xFE, 0xCA});
    const int kept = dup(STDIN_FILENO);
    close(STDIN_FILENO); // as in a daemon
    {
        FPGABottom board;
        EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), 0) << "the device is where standard input was";
        EXPECT_EQ(board.fpga_get_fpga_level(), 0xCAFE);
    }
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1) << "and is closed";
    dup2(kept, STDIN_FILENO);
    close(kept);
}

TEST_F(Board, imageMode5SelectsTheExtremesOfThePartShown) {
    struct Shown : FPGABottom {
        using FPGABottom::m_imageMode;
    };
    EXPECT_EQ(Shown().m_imageMode, -1);
    _point_max max{};
    _point_min min{};
    for (const Image_Mode_t mode : {IMAGE_IR, IMAGE_IR_MIX_CCD, IMAGE_CCD_MIX_IR}) {
        board.fpga_set_image(mode);
        camera.clearLog();
        EXPECT_EQ(board.fpga_point_max_get(&max) + board.fpga_point_min_get(&min), 0);
        EXPECT_EQ(transfers(camera), mode == IMAGE_IR_MIX_CCD
                                         ? "R4A:2 R58:2 R5A:2 R4C:2 R5C:2 R5E:2"
                                         : "R40:2 R50:2 R52:2 R42:2 R54:2 R56:2");
    }
}

TEST_F(Board, badArgumentsAreRefusedBeforeAnyTransfer) {
    std::uint8_t byte = 0;
    _fpga_point point{};
    _area area{};
    _area_val values{};
    unsigned short ad = 0;
    camera.clearCalls();
    for (const unsigned result :
         {board.readData(0x10, nullptr, 1), board.readData(0x10, &byte, 0),
          board.readData(0x10, &byte, -1), board.writeData(0x10, nullptr, 1),
          board.fpga_point_position_set(17, &point), board.fpga_point_ad_get(17, &ad),
          board.fpga_point_ad_get(0, nullptr), board.fpga_area_set(17, &area),
          board.fpga_area_set(0, nullptr), board.fpga_area_val_get(17, &values),
          board.fpga_area_val_get(0, nullptr), board.fpga_point_max_get(nullptr),
          board.fpga_point_min_get(nullptr), board.fpga_colorTable_set(nullptr)})
        EXPECT_EQ(result, 255U);
    EXPECT_EQ(board.fpga_get_sht11_temp_humid(nullptr, nullptr), -1);
    EXPECT_EQ(joined(board.fpga_read_shutterTemp(nullptr), board.fpga_read_sensorTemp(nullptr)),
              "-1 -1");
    EXPECT_EQ(camera.calls().total(), 0U);
    EXPECT_EQ(board.writeData(0x10, &byte, 0), 0);
    EXPECT_EQ(joined(camera.calls().lseek, transfers(camera)), "1 W10:0");
}

TEST_F(Board, transfersThatFallShortAreCounted) {
    _fpga_point point{1, 2};
    _area area{{1, 2, 3, 4}};
    _area_val v{9, 9, 9, {9, 9, 9, 9}};
    _point_max p{9, 9, 9};
    char text[16]{};
    camera.poke(0x40, {1, 1, 1, 1}).poke(0x50, {2, 0, 3, 0}).poke(0x1110, {1, 1, 2, 2, 3, 3});
    for (unsigned long nth = 1; nth <= 4; ++nth) {
        camera.failTransfer(nth, Fault::cutTo(1));
        EXPECT_EQ(board.fpga_area_set(1, &area), 255) << nth;
    }
    EXPECT_EQ(board.fpga_area_set(1, &area), 0);
    camera.failTransfer(1, Fault::cutTo(3));
    EXPECT_EQ(board.fpga_point_position_set(1, &point), 255);
    camera.failTransfer(1, Fault::cutTo(7));
    EXPECT_EQ(board.fpga_get_version(text), 7);
    camera.failTransfer(1, Fault::cutTo(1)); // composite reads keep what they got
    EXPECT_EQ(board.fpga_point_max_get(&p), 255);
    EXPECT_EQ(joined(p.ad, p.x, p.y), "1 2 3");
    camera.failTransfer(3, Fault::refused(EIO));
    printed([&] { EXPECT_EQ(board.fpga_area_val_get(1, &v), 255); }, STDERR_FILENO);
    EXPECT_EQ(joined(v.maxAD, v.minAD, v.avgAD, v.pos[0]), "257 514 0 1");
}

TEST_F(Board, failedReadsAndSeeksDoNotStopAnOperation) {
    camera.poke(0x15, {0xFF}).failTransfer(1, Fault::refused(EIO));
    printed([&] { EXPECT_EQ(board.openLaser(true), 1); }, STDERR_FILENO);
    EXPECT_EQ(transfers(camera), "R15:1 W15:1=02"); // the other bits are lost
    camera.failSeek(1, EIO);
    EXPECT_EQ(board.fpga_set_iso_type(1), 1);
    EXPECT_EQ(camera.faults(), 2U);
    camera.clearCalls();
    { const FPGABottom another; }
    EXPECT_EQ(joined(camera.calls().open, camera.calls().close, camera.calls().total()), "1 1 2");
}

std::string s_warnings;

TEST_F(Board, switchesPrintTheirLines) {
    EXPECT_EQ(printed([&] { board.fpga_open_CCD(true), board.fpga_open_CCD(false); }),
              "==============fpga open ccd:1\n==============fpga open ccd:0\n");
    EXPECT_EQ(printed([&] { board.fpga_start_arm_lcd(255), board.fpga_start_arm_lcd(254); }),
              "fpga write 0x30 mode:1\nfpga write 0x30 mode:254\n");
    const auto before =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
            s_warnings += (type == QtWarningMsg ? "warning " : "") + text.toStdString() + '\n';
        });
    board.openLamp(true), board.openLamp(false);
    qInstallMessageHandler(before);
    EXPECT_EQ(s_warnings, "warning open lamp:1\nwarning open lamp:0\n");
}

TEST(SelfTest, opensTheDeviceWhenGivenAnArgument) {
    irmsim::Camera camera;
    camera.install();
    Dl_info where{};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(&readSpotTemp), &where), 0);
    void* library = dlopen(where.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr) << dlerror();
    auto* run = reinterpret_cast<int (*)(int, char**)>(dlsym(library, "main"));
    ASSERT_NE(run, nullptr);
    char program[] = "irmcore", argument[] = "not hexadecimal";
    char* arguments[] = {program, argument, nullptr};
    EXPECT_EQ(run(1, arguments), 0);
    EXPECT_EQ(camera.calls().total(), 0U);
    EXPECT_EQ(run(2, arguments), 0);
    readSpotTemp(0);
    serialTest(nullptr);
    EXPECT_EQ(joined(camera.calls().open, camera.calls().total()), "1 1"); // it stays open
    arguments[1] = nullptr;
    EXPECT_EQ(run(2, arguments) + run(2, nullptr), 0);
    EXPECT_EQ(camera.calls().open, 3U);
    EXPECT_EQ(camera.calls().openFlags, O_RDWR);
    dlclose(library);
}

} // namespace
