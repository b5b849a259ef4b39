// Every register operation: its transfers, typed out from the FPGA's register map, and its result.
#include "device/registers.h"
#include "support/host.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace {

using namespace irmtest;
using F = FPGABottom;
using Bytes = std::vector<std::uint8_t>;

/// An operation on a register that holds `old`. `refused` is its result when no transfer succeeds.
struct Operation {
    const char* name;
    std::string (*run)(F&);
    unsigned at;
    Bytes old;
    const char* transfers;
    const char* result;
    const char* refused = "255";
};

template <auto Op, auto... Arguments>
std::string call(F& f) {
    return joined(int{(f.*Op)(Arguments...)});
}

/// An operation that delivers a value through a pointer: its result, then the value's bytes.
template <auto Op, typename Value, auto... Slot>
std::string got(F& f) {
    Value v;
    std::memset(&v, 9, sizeof v);
    std::string all = joined(int{(f.*Op)(Slot..., &v)}) + ' ';
    for (std::size_t i = 0; i < sizeof v; ++i)
        all += hex(reinterpret_cast<const unsigned char*>(&v)[i]);
    return all;
}

template <auto Op>
std::string frame(F& f) {
    std::vector<unsigned short> words(110592);
    return joined(int{(f.*Op)(words.data())});
}

/// Frame statistics from 0x40 on: maximum and minimum, and from 0x50 on their positions.
const Bytes statistics{0x11, 0x22, 0x33, 0x44, 0, 0, 0, 0, 0, 0, 0, 0,
                       0,    0,    0,    0,    1, 0, 2, 0, 3, 0, 4, 0};

// clang-format off
const Operation operations[] = {
    {"version", [](F& f) { char text[16]{}; const int n = f.fpga_get_version(text); return joined(n, text); },
     0xF0, {'F', 'P', 'G', 'A', ' ', 'o', 'f', ' ', 't', 'h', 'e', ' ', 'c', 'a', 'm'}, "RF0:15", "15 FPGA of the cam", "255 "},
    {"read colours", [](F& f) { Bytes t(1044); const int n = f.fpga_colorTable_get(t.data(), 1044); return joined(n, int{t[1043]}); },
     0x1713, {0x77}, "R1300:1044", "20 119", "255 0"},
    {"image", got<&F::fpga_get_image, unsigned char>, 0x00, {0xA5}, "R00:1", "1 A5", "255 00"},
    {"histogram", [](F& f) { unsigned short max = 9, min = 9; const int n = f.fpga_get_zft_maxMin(&max, &min); return joined(n, max, min); },
     0xA0, {0x21, 0x43, 0x65, 0x87}, "RA0:2 RA2:2", "2 17185 34661", "255 0 0"},
    {"peak", got<&F::fpga_get_zft_most, unsigned short>, 0xA4, {0xFE, 0xCA}, "RA4:2", "2 FECA", "255 0000"},
    {"hottest", got<&F::fpga_point_max_get, _point_max>, 0x40, statistics, "R40:2 R50:2 R52:2", "0 112201000200", "255 000000000000"},
    {"coldest", got<&F::fpga_point_min_get, _point_min>, 0x40, statistics, "R42:2 R54:2 R56:2", "0 334403000400", "255 000000000000"},
    {"spot 16", got<&F::fpga_point_ad_get, unsigned short, 16>, 0x1104, {0x34, 0x92}, "R1104:2", "2 3492", "255 0000"},
    {"area 16", got<&F::fpga_area_val_get, _area_val, 16>, 0x14D0, {1, 2, 3, 4, 5, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7, 8, 9, 10, 11, 12, 13, 14},
     "R14D0:2 R14D2:2 R14D4:2 R14E0:2 R14E2:2 R14E4:2 R14E6:2", "0 0102030405060708090A0B0C0D0E", "255 0000000000000000000000000000"},
    {"place area 16", [](F& f) { _area a{{1, 2, 3, 0x1234}}; return joined(int{f.fpga_area_set(16, &a)}); }, 0, {},
     "W14C0:2=0100 W14C2:2=0200 W14C4:2=0300 W14C6:2=3412", "0"},
    {"power on", call<&F::fpga_get_IR_power>, 0x0F, {0x80}, "R0F:1", "1", "0"},
    {"lamp is on", call<&F::getLampStatus>, 0x15, {0x04}, "R15:1", "1", "0"},
    {"laser is off", call<&F::getLaserStatus>, 0x15, {0xFD}, "R15:1", "0", "0"},
    {"frozen", call<&F::fpga_get_freeze_status>, 0x14, {0x01}, "R14:1", "1", "0"},
    {"zoom", call<&F::get_mix_zoom>, 0x26, {0x34, 0x92}, "R26:2", "37428", "0"},
    {"dx", call<&F::get_mix_dx>, 0x28, {0x9C}, "R28:1", "156", "0"},
    {"dy", call<&F::get_mix_dy>, 0x29, {0x9D}, "R29:1", "157", "0"},
    {"maximum", call<&F::fpga_get_auto_max>, 0x40, statistics, "R40:2", "8721", "0"},
    {"minimum", call<&F::fpga_get_auto_min>, 0x40, statistics, "R42:2", "17459", "0"},
    {"own level", call<&F::fpga_get_fpga_level>, 0x70, {0xFE, 0xCA}, "R70:2", "51966", "0"},
    {"own span", call<&F::fpga_get_fpga_span>, 0x72, {0x62, 0x10}, "R72:2", "1000", "255"},
    {"level", call<&F::fpga_get_level>, 0x62, {0xFE, 0xCA}, "R62:2", "51966", "0"},
    {"span", call<&F::fpga_get_span>, 0x64, {0x62, 0x10, 9, 9}, "R64:2", "1000", "16448"},
    {"frame of 160", frame<&F::fpga_read_IRAD>, 0x3000, {}, "R4000:38400", "0", "0"},
    {"frame of 384", frame<&F::fpga_read_IRAD_384>, 0x3000, {}, "R4000:27648 R4000:27648 R4000:27648 R4000:27648 R4000:27648 R4000:27648 R4000:27648 R4000:27648", "0", "0"},
    {"mode 6", call<&F::fpga_set_image, IMAGE_FUSION>, 0x00, {0xA9}, "R00:1 W00:1=AE", "1"},
    {"mode 13", call<&F::fpga_set_image, static_cast<Image_Mode_t>(13)>, 0x00, {0xF8}, "R00:1 W00:1=FD", "1"},
    {"ccd inset", call<&F::fpga_set_ccd_pipe_ir_position, 2>, 0x01, {0xDA}, "R01:1 W01:1=EA", "1"},
    {"ir inset", call<&F::fpga_set_ir_pipe_ccd_position, 1>, 0x01, {0xBE}, "R01:1 W01:1=BD", "1"},
    {"inset beyond", call<&F::fpga_set_ccd_pipe_ir_position, -1>, 0x01, {0x00}, "R01:1 W01:1=F0", "1"},
    {"line 1 on", call<&F::fpga_display_line, 1, true>, 0x10, {0xC2}, "R10:1 W10:1=C3", "1"},
    {"line 1 off", call<&F::fpga_display_line, 1, false>, 0x10, {0xC3}, "R10:1 W10:1=C2", "1"},
    {"line 2 on", call<&F::fpga_display_line, 2, true>, 0x10, {0xC1}, "R10:1 W10:1=C3", "1"},
    {"line 2 off", call<&F::fpga_display_line, 2, false>, 0x10, {0xC3}, "R10:1 W10:1=C1", "1"},
    {"line 3", call<&F::fpga_display_line, 3, true>, 0x10, {0xC1}, "R10:1", "-1", "-1"},
    {"row", call<&F::fpga_set_line_position, 1, 0x1122, 0x3344>, 0, {}, "W1200:2=4433", "2"},
    {"column", call<&F::fpga_set_line_position, 2, 0x1122, 0x3344>, 0, {}, "W1202:2=2211", "2"},
    {"no line", call<&F::fpga_set_line_position, 0, 1, 2>, 0, {}, "", "-1", "-1"},
    {"saturation on", call<&F::fpga_open_saturation, true>, 0x10, {0x81}, "R10:1 W10:1=C1", "1"},
    {"saturation off", call<&F::fpga_open_saturation, false>, 0x10, {0xFF}, "R10:1 W10:1=BF", "1"},
    {"colour bar on", call<&F::fpga_switch_colorBar, true>, 0x10, {0x41}, "R10:1 W10:1=C1", "1"},
    {"colour bar off", call<&F::fpga_switch_colorBar, false>, 0x10, {0xFF}, "R10:1 W10:1=7F", "1"},
    {"freeze", call<&F::fpga_freeze_image, true>, 0x14, {0xF0}, "R14:1 W14:1=F1", "1"},
    {"unfreeze", call<&F::fpga_freeze_image, false>, 0x14, {0xFF}, "R14:1 W14:1=FE", "1"},
    {"alarm on", call<&F::fpga_open_alarm, true>, 0x15, {0x16}, "R15:1 W15:1=17", "1"},
    {"alarm off", call<&F::fpga_open_alarm, false>, 0x15, {0xFF}, "R15:1 W15:1=FE", "1"},
    {"laser on", call<&F::openLaser, true>, 0x15, {0x15}, "R15:1 W15:1=17", "1"},
    {"laser off", call<&F::openLaser, false>, 0x15, {0xFF}, "R15:1 W15:1=FD", "1"},
    {"lamp on", call<&F::openLamp, true>, 0x15, {0x13}, "R15:1 W15:1=17", "1"},
    {"lamp off", call<&F::openLamp, false>, 0x15, {0xFF}, "R15:1 W15:1=FB", "1"},
    {"ccd on", call<&F::fpga_open_CCD, true>, 0x15, {0x07}, "R15:1 W15:1=17", "1"},
    {"ccd off", call<&F::fpga_open_CCD, false>, 0x15, {0xFF}, "R15:1 W15:1=EF", "1"},
    {"ccd size on", call<&F::fpga_set_CCD_Mix_IR_Size, -7>, 0x25, {0xAE}, "R25:1 W25:1=A1", "1"},
    {"ccd size off", call<&F::fpga_set_CCD_Mix_IR_Size, 0>, 0x25, {0xAF}, "R25:1 W25:1=AE", "1"},
    {"ir size on", call<&F::fpga_set_IR_Mix_CCD_Size, 7>, 0x25, {0x75}, "R25:1 W25:1=85", "1"},
    {"ir size off", call<&F::fpga_set_IR_Mix_CCD_Size, 0>, 0x25, {0xF5}, "R25:1 W25:1=75", "1"},
    {"ccd full", [](F& f) -> std::string { return joined(int{f.set_CCD_mix_IR_percent(1.0F)}); }, 0, {}, "W2F:1=80", "1"},
    {"ccd negative", [](F& f) -> std::string { return joined(int{f.set_CCD_mix_IR_percent(-0.029F)}); }, 0, {}, "W2F:1=FD", "1"},
    {"ir above byte", [](F& f) -> std::string { return joined(int{f.set_IR_mix_CCD_percent(2.0078125F)}); }, 0, {}, "W2A:1=01", "1"},
    {"ir not a number", [](F& f) -> std::string { return joined(int{f.set_IR_mix_CCD_percent(NAN)}); }, 0, {}, "W2A:1=00", "1"},
    {"set dx", call<&F::set_mix_dx, '\x9C'>, 0, {}, "W28:1=9C", "1"},
    {"set dy", call<&F::set_mix_dy, '\x9D'>, 0, {}, "W29:1=9D", "1"},
    {"set zoom", call<&F::set_mix_zoom, -2>, 0, {}, "W26:2=FEFF", "2"},
    {"output", call<&F::fpga_set_output_mode, 0x1A7>, 0, {}, "W34:1=A7", "1"},
    {"lcd", call<&F::fpga_start_arm_lcd, 254>, 0, {}, "W30:1=FE", "1"},
    {"lcd 255", call<&F::fpga_start_arm_lcd, 255>, 0, {}, "W30:1=01", "1"},
    {"jingDu", call<&F::fpga_set_arm_lcd_jingDu, 255>, 0, {}, "W31:1=FF", "1"},
    {"take window", call<&F::fpga_start_level_span_control, true>, 0, {}, "W60:1=00", "1"},
    {"give window", call<&F::fpga_start_level_span_control, false>, 0, {}, "W60:1=FF", "1"},
    {"window", call<&F::fpga_set_levelSpan, 0x1234, 0x89ABCDEF>, 0, {}, "W62:2=3412 W64:4=EFCDAB89", "4"},
    {"isotherm on", call<&F::fpga_set_iso_enable, true>, 0, {}, "W200:1=01", "1"},
    {"isotherm off", call<&F::fpga_set_iso_enable, false>, 0, {}, "W200:1=00", "1"},
    {"isotherm type", call<&F::fpga_set_iso_type, 0xC3>, 0, {}, "W201:1=C3", "1"},
    {"isotherm min", call<&F::fpga_set_iso_min, 0x1234>, 0, {}, "W202:2=3412", "2"},
    {"isotherm max", call<&F::fpga_set_iso_max, 0x1234>, 0, {}, "W204:2=3412", "2"},
    {"place spot 16", [](F& f) { _fpga_point p{0x1122, 0x3344}; return joined(int{f.fpga_point_position_set(16, &p)}); }, 0, {}, "W1100:4=22114433", "0"},
    {"colours", [](F& f) { Bytes t(1044, 5); t[0] = 1; t[1043] = 4; return joined(int{f.fpga_colorTable_set(t.data())}); }, 0, {}, "W1300:1044=0105..0504", "20"},
};
// clang-format on

struct Registers : Board {};

TEST_F(Registers, holdTheModesThatHostsWereBuiltWith) {
    EXPECT_EQ(joined(IMAGE_IR, IMAGE_CCD, IMAGE_CCD_PIPE_IR, IMAGE_IR_PIPE_CCD, IMAGE_CCD_MIX_IR,
                     IMAGE_IR_MIX_CCD, IMAGE_FUSION, IMAGE_BLANK, POSITION_TOP_LEFT,
                     POSITION_TOP_RIGHT, POSITION_BOTTOM_LEFT, POSITION_BOTTOM_RIGHT),
              "0 1 2 3 4 5 6 7 0 1 2 3");
}

TEST_F(Registers, areListedWithTheirWidths) {
    std::string all;
    for (const auto& [address, stride, count, words, read, written, name, unit] : irmcore::reg::map)
        for (const char* wanted : {"sensorTemp", "adSum", "gain", "version", "pointPosition",
                                   "areaBounds", "areaPos", "colorTable", "frame"})
            if (std::strcmp(name, wanted) == 0)
                all += joined(hex(address), stride, +count, +words, read, written) + unit[0] + ' ';
    EXPECT_EQ(all,
              "1E 0 1 1 2 01 44 0 1 1 6 0A 64 0 1 1 2 44 F0 0 1 1 15 0t 1000 16 17 1 0 4x "
              "10C0 64 17 4 0 2x 10E0 64 17 4 2 0x 1300 0 1 1 1044 10442 4000 0 1 1 38400 0A ");
}

TEST_F(Registers, operationsMakeTheirTransfersAndNoOthers) {
    EXPECT_EQ(camera.calls().open, 1U);
    EXPECT_EQ(camera.calls().openFlags, O_RDWR);
    for (const Operation& op : operations) {
        camera.poke(op.at, op.old).clearLog();
        printed([&] { EXPECT_EQ(op.run(board), op.result) << op.name; });
        EXPECT_EQ(transfers(camera), op.transfers) << op.name;
        camera.unpoke(op.at);
    }
}

TEST_F(Registers, withoutADeviceAreRefused) {
    camera.devicePresent(false);
    std::optional<FPGABottom> missing;
    EXPECT_EQ(printed([&] { missing.emplace(); }, STDERR_FILENO),
              "open fpga device failed: No such file or directory\n");
    camera.clearCalls();
    for (const Operation& op : operations)
        printed([&] { EXPECT_EQ(op.run(*missing), op.refused) << op.name; });
    EXPECT_EQ(missing->fpga_read_lenIndex(), 6); // that of code 0
    missing.reset();
    EXPECT_EQ(camera.calls().total(), 0U);
}

TEST_F(Registers, reportEachFailedTransferAndGoOn) {
    camera.failTransfer(1, irmsim::Fault::refused(EIO), irmsim::Lasting::fromThenOn);
    for (const Operation& op : operations) {
        camera.clearLog();
        std::string errors, expected;
        printed([&] {
            errors =
                printed([&] { EXPECT_EQ(op.run(board), op.refused) << op.name; }, STDERR_FILENO);
        });
        for (const irmsim::Transfer& t : camera.log())
            expected += t.write ? "write fpga failed: Input/output error\n"
                                : "read data failed: Input/output error\n";
        errors.erase(0, errors.find("open lamp") == 0 ? errors.find('\n') + 1 : 0);
        EXPECT_EQ(errors, expected) << op.name;
        EXPECT_EQ(static_cast<long>(camera.log().size()),
                  std::count(op.transfers, std::strchr(op.transfers, 0), ':'));
    }
}

} // namespace
