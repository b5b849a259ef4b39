#include "apps/courierreader.h"
#include "apps/decode.h"
#include "sim/courier.h"
#include "sim/observer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

using namespace irmcore::app;
using Bytes = std::vector<std::uint8_t>;

std::string text(const Decoded& decoded) {
    return (decoded.name + QStringLiteral(": ") + textOf(decoded)).toStdString();
}

TEST(Decode, registersHaveTheirNamesUnitsAndFields) {
    struct Case {
        bool write;
        std::uint32_t address;
        Bytes bytes;
        const char* expected;
    };
    const Case cases[] = {
        {false, 0x1C, {0x80, 0x1A}, "shutterTemp: 26.5 °C"},
        {false, 0x1E, {0x40, 0xFF}, "sensorTemp: -0.75 °C"},
        {false,
         0x1C,
         {0x00, 0x01, 0x00, 0x80},
         "shutterTemp..sensorTemp: shutterTemp 1 °C, sensorTemp -128 °C"},
        {true, 0x15, {0x15}, "switches: 0x15, alarm 1, laser 0, lamp 1, ccdCamera 1"},
        {false, 0x0F, {0x83}, "detectorState: 0x83, lensCode 3, detectorPower 1"},
        {false, 0x44, {1, 0, 0, 0, 0, 1}, "adSum: 1099511627777 AD"},
        {true, 0x64, {0, 0x10, 0, 0}, "gain: 4096, span 1024 AD"},
        {false, 0x64, {0, 0x10}, "gain: 4096, span 1024 AD"},
        {true, 0x60, {0xFF}, "windowControl: FPGA"},
        {true, 0x2A, {0x40}, "irMixCcdBlend: 0.5"},
        {true, 0x1030, {80, 0, 60, 1}, "pointPosition[3]: x 80, y 316"},
        {false, 0x1034, {0x10, 0x27}, "pointAd[3]: 10000 AD"},
        {true, 0x1102, {7, 0}, "areaBounds[1]: y0 7"},
        {false,
         0x1110,
         {1, 0, 2, 0, 3, 0},
         "areaMax[1]..areaAvg[1]: areaMax[1] 1 AD, areaMin[1] 2 AD, areaAvg[1] 3 AD"},
        {false, 0x11E0, {1, 0, 2, 0, 3, 0, 4, 0}, "areaPos[4]: maxX 1, maxY 2, minX 3, minY 4"},
        {true, 0x1200, {5, 0}, "line1Row: 5 row"},
        // The same address is what was written there last: at first an area, then a point.
        {false, 0x10D4, {9, 0}, "areaAvg[0]: 9 AD"},
        {true, 0x10D0, {1, 0, 2, 0}, "pointPosition[13]: x 1, y 2"},
        {false, 0x10D4, {9, 0}, "pointAd[13]: 9 AD"},
        {true, 0x10C0, {1, 0}, "areaBounds[0]: x0 1"},
        {false, 0x10D4, {9, 0}, "areaAvg[0]: 9 AD"},
        {false, 0x1C, {0x80}, "shutterTemp: 80"},
        {false, 0x900, {1, 2}, "unknown: 01 02"},
        {false, 0xF0, {'v', '1', 0}, "version: \"v1.\""},
        {true,
         0x1300,
         {1, 2, 3, 0, 5, 6, 7, 0, 9, 8, 7, 0},
         "colorTable: entries 3, first 01 02 03 00, last 09 08 07 00"},
    };
    RegisterDecoder decoder;
    for (const Case& c : cases)
        EXPECT_EQ(text(decoder.decode(c.write, c.address, c.bytes.size(), c.bytes.data(),
                                      c.bytes.size())),
                  c.expected);
    EXPECT_EQ(text(decoder.decode(false, 0x1C, 4, nullptr, 0)), "shutterTemp..sensorTemp: ");
    Bytes part(27648, 0x80); // all pixels 0x8080 but one
    part[1] = 0x90;
    decoder.decode(false, 0x4000, part.size(), part.data(), part.size());
    EXPECT_EQ(text(decoder.decode(false, 0x4000, part.size(), part.data(), part.size())),
              "frame: part 2, pixels 13824, min 32896 AD, max 36992 AD, mean 32896.3 AD");
}

TEST(Decode, serialFramesAreTakenApartHoweverTheyCome) {
    PortDecoder decoder;
    const auto sent = [&](const Bytes& b) { return text(decoder.wrote(b.data(), b.size())); };
    const auto got = [&](const Bytes& b, bool real = false) {
        return text(decoder.read(b.data(), b.size(), real));
    };
    EXPECT_EQ(sent({0xFF, 0xA5, 0x78, 2, 0x53, 7, 0x2E, 0x5A}), "setVsk: vsk 1875, checksum right");
    EXPECT_EQ(got({0x7F, 0xA5, 0, 0x78, 0, 0x78, 0x5A}), "setVsk: acknowledged, checksum right");
    EXPECT_EQ(sent({0xFF, 0xA5, 0x82, 4, 100, 0, 0, 0, 0xE3, 0x5A}),
              "changeTempRange: intTime 100, vsk 0, checksum wrong");
    EXPECT_EQ(sent({0xFF, 0xA5, 0x77}), "part: bytes FF A5 77");
    EXPECT_EQ(sent({0, 0x77, 0x5A}), "readVsk: checksum right");
    EXPECT_EQ(got({0x7F, 0xA5, 0, 0x77, 2}), "part: bytes 7F A5 00 77 02");
    EXPECT_EQ(got({0x53, 7, 0x20, 0x5A}), "readVsk: vsk 1875, checksum wrong");
    EXPECT_EQ(got({0x7F, 0xA5, 9, 0x79, 9, 1, 2, 3, 4}, true), "readSum: sum 513");
    EXPECT_EQ(sent({0xFF, 0xA5, 0x11, 0, 0x11, 0x5A}),
              "command 11: bytes FF A5 11 00 11 5A, checksum right");
}

TEST(Courier, aRealDevicesCallsComeWholeAndItsReaderMayVanish) {
    std::string path = ::testing::TempDir() + "fpga-XXXXXX";
    ::close(::mkstemp(path.data()));
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    irmsim::startCourier(ends[1], path.c_str());
    const int fd = ::open(path.c_str(), O_RDWR);
    const Bytes frame(40001, 7);
    ::lseek(fd, 0x4000, SEEK_SET);
    EXPECT_EQ(::write(fd, frame.data(), frame.size()), 40001);
    EXPECT_EQ(::lseek(fd, -1, SEEK_SET), -1);
    EXPECT_EQ(errno, EINVAL);
    std::string heard;
    CourierReader reader([&](const Heard& h) {
        const bool same = Bytes(h.bytes, h.bytes + h.count()) == frame;
        heard += std::to_string(h.header.call) + ' ' + std::to_string(h.header.address) + ' ' +
                 std::to_string(h.count()) + (same ? " same" : "") + ' ' +
                 std::to_string(h.header.result > 0 ? 1 : h.header.result) + '\n';
    });
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    while (reader.readFrom(ends[0]) == CourierReader::State::more) {
    }
    EXPECT_EQ(heard, "0 0 0 1\n1 16384 0 0\n3 16384 40001 same 1\n1 56385 0 -22\n");
    ::close(ends[0]);
    EXPECT_EQ(::lseek(fd, 5, SEEK_SET), 5); // SIGPIPE would end this program
    EXPECT_EQ(::fcntl(ends[1], F_GETFD), -1);
    ::close(fd);
    irmsim::setObserver(nullptr);
    ::unlink(path.c_str());
}

} // namespace
