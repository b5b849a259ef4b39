// The measurement queries over a board whose counts are given.
#include "support/host.h"

#include <cerrno>

namespace {

using namespace irmtest;

using irmsim::Fault;

struct Queries : Host {
    Queries() {
        camera.poke(0x1014, word(32768)).poke(0x1044, word(33000)).poke(0x1054, word(36000));
        camera.poke(0x1004, word(36000)).poke(0x40, word(36000)).poke(0x42, word(32768));
        camera.poke(0x50, {7, 0, 8, 0, 9, 0, 10, 0});
    }
    int spot(int index, int type, ParaMode_t mode = PARA_SYSTEM, TempSetup setup = {}) {
        return host->getSpotTemp(index, type, mode, setup, at, out);
    }
    int line(int number) { return host->getLineTemp(number, PARA_SYSTEM, own, at, out); }
    _fpga_point at{3, 4};
    IrTempStru out{"old", 1, 2, 3, 4, 5};
    _area area{{1, 2, 3, 4}};
    _area_val val{9, 9, 9, {9, 9, 9, 9}};
    Area_Temp temps{out, out, out};
    const TempSetup own{0.8F, 100, 1.5F, 0};
};

TEST_F(Queries, spotsAndLinesAreMeasuredInTheirSlots) {
    const std::string slot1 = "W1010:4=03000400 R1014:2";
    EXPECT_EQ(transfersOf([&] { EXPECT_EQ(host->getSpotAD(257, at), 32768U); }), slot1);
    EXPECT_EQ(transfersOf([&] { EXPECT_EQ(spot(257, 0), 0); }), slot1 + " R14:1");
    EXPECT_EQ(joined(text(out), out.ad), "OK 30.012743 32768");
    EXPECT_EQ(transfersOf([&] { EXPECT_EQ(spot(9, 1), 0); }), "R40:2 R50:2 R52:2 R14:1");
    EXPECT_EQ(joined(text(out), at.x, at.y), "OK 109.9684 7 8");
    EXPECT_EQ(transfersOf([&] { EXPECT_EQ(spot(9, 2), 0); }), "R42:2 R54:2 R56:2 R14:1");
    EXPECT_EQ(joined(text(out), at.x, at.y), "OK 30.012743 9 10");
    at = {3, 4};
    const std::pair<int, const char*> lines[] = {{1, "W1040:4=03000400 R1044:2 R14:1"},
                                                 {2, "W1050:4=03000400 R1054:2 R14:1"},
                                                 {7, "W1000:4=03000400 R1004:2 R14:1"}};
    for (const auto& [number, expected] : lines)
        EXPECT_EQ(transfersOf([&, n = number] { EXPECT_EQ(line(n), 0); }), expected);
    EXPECT_EQ(text(out), "OK 109.9684");
}

TEST_F(Queries, useTheCamerasParametersOrTheirOwn) {
    const auto read = [&](int mode, const TempSetup& setup) {
        printed([&] { spot(1, 0, static_cast<ParaMode_t>(mode), setup); });
        return out.temp;
    };
    EXPECT_EQ(read(PARA_CUSTOM, own), 32.916195F);
    EXPECT_EQ(read(PARA_SYSTEM, own), 30.012743F);
    EXPECT_EQ(read(7, own), 30.012743F);
    EXPECT_EQ(read(PARA_CUSTOM, {1, 0, 0, 0}), 30.012743F);
    EXPECT_EQ(read(PARA_CUSTOM, own), 32.916195F);
    EXPECT_EQ(read(PARA_CUSTOM, {9, 0, 0, 0}), 32.916195F); // refused: the last ones stay
    EXPECT_EQ(host->getSystemTempSetup().emiss, 1);
}

TEST_F(Queries, badArgumentsTouchNothing) {
    EXPECT_EQ(spot(-1, 0) + spot(-1, 1) + spot(0, -1) + spot(0, 3), -4);
    EXPECT_EQ(joined(text(out), at.x, camera.calls().total()), "old 2 3 0");
}

TEST_F(Queries, whatTheBoardDoesNotDeliverIsNull) {
    const auto failed = [&](auto query) {
        out = {"old", 1, 2, 3, 4, 5};
        at = {3, 4};
        camera.failTransfer(1, Fault::cutTo(1));
        EXPECT_EQ(query(), -1);
        return joined(text(out), out.ad, out.biaoDingTemp, at.x, at.y);
    };
    EXPECT_EQ(failed([&] { return spot(1, 0); }), "NULL 2 1 5 3 4");
    EXPECT_EQ(failed([&] { return line(1); }), "NULL 2 1 5 3 4");
    EXPECT_EQ(failed([&] { return spot(20, 0); }), "NULL 2 1 5 3 4"); // no such slot
    EXPECT_EQ(failed([&] { return spot(1, 1); }), "NULL 2 1 5 0 0");
    EXPECT_EQ(failed([&] { return spot(1, 2); }), "NULL 2 1 5 0 0");
    camera.failTransfer(2, Fault::cutTo(0)); // a count whose read failed is 0, and is converted
    EXPECT_EQ(spot(1, 0), 0);
    EXPECT_EQ(joined(text(out), out.ad, out.correctAD), "H 4001 0 63401");
    camera.failTransfer(2, Fault::cutTo(0));
    EXPECT_EQ(host->getSpotAD(1, at) + host->getSpotAD(17, at), 0U);
}

TEST_F(Queries, areasReportThreeReadings) {
    const auto measure = [&](int index, ParaMode_t mode) {
        const int result = host->getAreaTemp(index, area, mode, own, val, temps);
        return joined(result, text(temps.tempMax), text(temps.tempMin), text(temps.tempAvg));
    };
    camera.failTransfer(3, Fault::cutTo(1));
    EXPECT_EQ(measure(1, PARA_CUSTOM), "-1 old 2 old 2 old 2");
    EXPECT_EQ(measure(17, PARA_CUSTOM), "-1 old 2 old 2 old 2");
    EXPECT_EQ(joined(val.maxAD, val.pos[3]), "9 9");
    camera.poke(0x1110, {0xA0, 0x8C, 0x00, 0x80, 0xE8, 0x80}).poke(0x1120, {1, 0, 2, 0, 3, 0, 4});
    EXPECT_EQ(transfersOf([&] {
                  EXPECT_EQ(measure(257, PARA_CUSTOM), "0 OK 127.90832 OK 32.916195 OK 40.075184");
              }),
              "W1100:2=0100 W1102:2=0200 W1104:2=0300 W1106:2=0400 "
              "R1110:2 R1112:2 R1114:2 R1120:2 R1122:2 R1124:2 R1126:2 R14:1 R14:1 R14:1");
    EXPECT_EQ(joined(val.pos[0], val.pos[1], val.pos[2], val.pos[3]), "1 2 3 4");
    camera.failTransfer(5, Fault::cutTo(0)); // the maximum's read
    EXPECT_EQ(measure(1, PARA_SYSTEM), "0 H 4001 OK 30.012743 OK 35.684586");
}

TEST_F(Queries, theWindowsEndsAreRead) {
    IrTempStru low{}, high{};
    const auto ends = [&](float offset, unsigned short span) {
        host->m_sysTempSetup.offset = offset; // is applied by each call
        host->m_level = 32768;
        host->m_span = span;
        output = printed([&] { host->getMinMaxTemp(&low, &high); });
        return joined(text(low), text(high), high.ad);
    };
    EXPECT_EQ(ends(0, 3232), "OK 30.012743 OK 109.9684 36000");
    EXPECT_EQ(transfers(camera), "R14:1 R14:1");
    EXPECT_EQ(ends(0, 40000), "OK 30.012743 H 4001 7232"); // the sum passes 65535
    EXPECT_EQ(ends(10, 3232), "OK 40.01274 OK 119.9684 36000");
    EXPECT_EQ(ends(999, 3232), "OK 40.01274 OK 119.9684 36000");
    EXPECT_NE(output.find("offset para error"), std::string::npos);
    EXPECT_EQ(transfersOf([&] { host->getMinMaxTemp(nullptr, nullptr); }), "");
    printed([&] { host->getAutoMinMaxTemp(&low, &high); });
    EXPECT_EQ(joined(low.ad, high.ad), "32768 36000");
}

} // namespace
