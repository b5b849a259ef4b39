// Palettes and isotherms: what is uploaded to the FPGA.
#include "support/host.h"

#include <array>
#include <cstring>

namespace {

using namespace irmtest;

std::string yuv(const _yuv_item& entry) { return joined(+entry.y, +entry.u, +entry.v); }

/// The built-in tables by the names a host knows them by.
const _yuv_item* const byName[] = {Iron_TAB, Rainbow_TAB,  Grey_TAB,     Grey_Inverted_TAB,
                                   Spia_TAB, Blue_Red_TAB, Hot_Cold_TAB, Feather_TAB};

TEST(Palettes, haveTheIndicesThatHostsWereBuiltWith) {
    EXPECT_EQ(joined(COLOR_IRON, COLOR_RAINBOW, COLOR_GREY, COLOR_GREY_INVERTED, COLOR_SPIA,
                     COLOR_BLUE_RED, COLOR_HOT_COLD, COLOR_FEATHER, COLOR_CUSTOM, color_size,
                     LEVELSPAN_AUTO, LEVELSPAN_ZFT, LEVELSPAN_HAND),
              "0 1 2 3 4 5 6 7 8 9 0 1 2");
}

TEST(Palettes, holdTheirAnchors) {
    constexpr int at[] = {0, 32, 64, 96, 128, 160, 192, 224, 255};
    const char* const anchors[9][9] = {
        {"16 128 128", "36 180 132", "59 180 165", "78 165 196", "103 122 201", "128 64 196",
         "161 43 179", "196 37 156", "233 123 129"},
        {"67 187 173", "74 216 93", "153 172 27", "159 123 23", "185 30 104", "204 19 148",
         "141 55 195", "81 90 239", "57 103 199"},
        {"16 128 128", "43 128 128", "70 128 128", "98 128 128", "125 128 128", "153 128 128",
         "180 128 128", "208 128 128", "235 128 128"},
        {"235 128 128", "207 128 128", "180 128 128", "152 128 128", "125 128 128", "97 128 128",
         "70 128 128", "42 128 128", "16 128 128"},
        {"33 118 149", "57 106 152", "94 93 156", "109 94 152", "126 95 148", "145 80 148",
         "153 73 149", "166 91 143", "182 114 136"},
        {"24 163 122", "79 181 82", "110 173 62", "164 156 89", "224 133 120", "198 65 154",
         "177 34 170", "145 53 193", "90 84 213"},
        {"40 239 109", "91 210 72", "126 190 47", "155 173 26", "155 104 25", "182 32 98",
         "188 28 161", "151 49 188", "83 89 238"},
        {"16 128 128", "57 178 97", "93 195 71", "120 94 84", "175 36 136", "162 56 179",
         "101 115 221", "158 119 182", "230 106 131"},
        {"0 128 128", "87 196 217", "24 208 123", "142 180 28", "84 105 68", "182 29 127",
         "125 57 197", "129 106 189", "255 128 128"}};
    EXPECT_EQ(color_size, 9);
    for (std::size_t table = 0; table < 9; ++table) {
        const _yuv_item* entries = color_tables_yuv[table];
        EXPECT_TRUE(table == 8 || entries == byName[table]) << table;
        for (std::size_t i = 0; i < 9; ++i)
            EXPECT_EQ(yuv(entries[at[i]]), anchors[table][i]) << table << " at " << at[i];
        EXPECT_EQ(yuv(entries[256]) + ", " + yuv(entries[257]), "143 153 124, 150 58 40") << table;
        for (int i = 0; i < 258; ++i)
            EXPECT_EQ(+entries[i].reserved, 0);
        // Between two anchors no value leaves them, and no step stands out.
        for (std::size_t k = 0; k < 8; ++k)
            for (const auto channel : {&_yuv_item::y, &_yuv_item::u, &_yuv_item::v})
                for (int i = at[k]; i < at[k + 1]; ++i) {
                    const int from = entries[at[k]].*channel;
                    const int to = entries[at[k + 1]].*channel;
                    const int step = entries[i + 1].*channel - entries[i].*channel;
                    EXPECT_GE(step * (to > from ? 1 : -1), 0) << table << " at " << i;
                    EXPECT_LE(std::abs(step), std::abs(to - from) * 2 / 31 + 1) << table << i;
                }
    }
    // The ramp of grey is not the straight one from 16 to 235.
    for (const auto& [i, luma] :
         {std::pair(78, 83), {156, 150}, {163, 156}, {234, 217}, {248, 229}})
        EXPECT_EQ(+Grey_TAB[i].y + +Grey_Inverted_TAB[255 - i].y, 2 * luma) << i;
    // Cubics with harmonic means as slopes, by hand. Y of iron rises by 20, 23, 19: slopes 21.395
    // and 20.810 about the second piece, half way 47.5 + (21.395 - 20.810) / 8.
    EXPECT_EQ(+Iron_TAB[48].y, 48);
    // V by 4, 33, 31: slopes 7.135 and 31.969, half way 148.5 + (7.135 - 31.969) / 8 = 145.4.
    EXPECT_EQ(+Iron_TAB[48].v, 145);
}

/// A host that shows a plain ramp: entry i is (i, 255 - i, 7, 9).
struct Picture : Host {
    Picture() {
        for (int i = 0; i < 256; ++i)
            ramp[i] = {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(255 - i), 7, 9};
        host->setCustomPalette(ramp);
        host->m_level = 4000;
        host->m_span = 1000;
    }
    _yuv_item shown(int entry) {
        std::array<_yuv_item, 261> table{};
        host->readData(0x1300, table.data(), sizeof table);
        return table[static_cast<std::size_t>(entry)];
    }
    bool coloured(int entry) { return std::memcmp(&ramp[entry], &(now = shown(entry)), 4) != 0; }
    /// First and last coloured entry.
    std::string band() {
        std::string found = "none";
        int last = -1;
        for (int i = 0; i < 256; ++i)
            if (coloured(i)) {
                found = last < 0 ? std::to_string(i) : found;
                EXPECT_TRUE(last < 0 || last == i - 1) << "a hole before " << i;
                last = i;
            }
        return last < 0 ? found : joined(found, last);
    }
    /// The limits that the FPGA has.
    std::string limits() {
        unsigned short low = 0, high = 0;
        host->readData(0x202, &low, 2);
        host->readData(0x204, &high, 2);
        return joined(low, high);
    }
    _yuv_item ramp[256]{};
    _yuv_item now{};
};

TEST_F(Picture, isUploadedWhole) {
    EXPECT_EQ(transfersOf([&] { EXPECT_EQ(host->setStandardPaletteIndex(COLOR_GREY), 20); }),
              "W1300:1044=1080..0000");
    EXPECT_EQ(host->getPaletteIndex(), COLOR_GREY);
    _yuv_item* table = host->getCurrentPalette();
    EXPECT_EQ(yuv(table[0]) + yuv(table[128]) + yuv(table[255]),
              "16 128 128125 128 128235 128 128");
    EXPECT_EQ(yuv(table[256]), "0 0 0"); // only the palette is taken
    for (int i = 256; i < 261; ++i)
        table[i] = {1, 2, 3, static_cast<std::uint8_t>(i - 252)};
    EXPECT_EQ(transfersOf([&] { EXPECT_EQ(host->palette_cal(ramp), 20); }),
              "W1300:1044=1080..0308");
    host->setCustomPalette(ramp);
    EXPECT_EQ(host->getPaletteIndex(), COLOR_CUSTOM);
    EXPECT_EQ(yuv(table[255]), "255 0 7");
    EXPECT_EQ(host->getColorTable(8), color_tables_yuv[8]);
    host->setStandardPaletteIndex(COLOR_CUSTOM);
    EXPECT_EQ(joined(host->getPaletteIndex(), yuv(table[32])), "8 87 196 217");
    // No palette: nothing changes and nothing is sent.
    EXPECT_EQ(transfersOf([&] {
                  EXPECT_EQ(host->setStandardPaletteIndex(static_cast<COLOR_TABLE>(9)), 255);
                  EXPECT_EQ(host->setStandardPaletteIndex(static_cast<COLOR_TABLE>(-1)), 255);
                  EXPECT_EQ(host->setCustomPalette(nullptr), 255);
              }),
              "");
    EXPECT_EQ(host->getColorTable(9), nullptr);
    EXPECT_EQ(host->getColorTable(-1), nullptr);
    camera.failTransfer(1, irmsim::Fault::refused(EIO));
    EXPECT_EQ(host->setStandardPaletteIndex(COLOR_IRON), 255); // not shown, but taken
    EXPECT_EQ(joined(host->getPaletteIndex(), yuv(table[0])), "0 16 128 128");
}

TEST_F(Picture, hasNoPaletteAndNoIsothermAtFirst) {
    start();
    EXPECT_EQ(joined(host->getPaletteIndex(), host->getIsoSwitch(), host->getSaturation()),
              "0 0 0");
    for (int i = 0; i < 261; ++i)
        EXPECT_EQ(yuv(host->getCurrentPalette()[i]), "0 0 0");
    const Isotherm iso = host->getIsoPara();
    EXPECT_EQ(joined(iso.type, iso.width, iso.center, iso.minTemp, iso.maxTemp, iso.lowRatio,
                     iso.highRatio, iso.reference, iso.useMinMax, iso.color, sizeof iso.color),
              "1 6 20 20 30 0 1 0 0 Trans 10");
}

/// The table of the tests: 30 °C at 32767, 100 °C at 35600, -20 °C at 30736 or so.
struct Limits {
    int type, reference, useMinMax;
    float low, high;
    unsigned short level, span;
    const char* band;
    const char* limits; ///< as the FPGA has them afterwards
};

TEST_F(Picture, marksTheBandInTheWindow) {
    host->getCurrentPalette()[256] = {1, 2, 3, 0};
    const Limits cases[] = {
        // 30 and 100 °C are 32767 and 35600: (AD - level) · 255 / span, cut.
        {1, 0, 1, 30, 100, 32000, 5000, "39 183", "32767 35600"},
        {0, 0, 1, 30, 100, 32000, 5000, "0 39", "32767 35600"},
        {2, 0, 1, 30, 100, 32000, 5000, "183 255", "32767 35600"},
        {1, 0, 1, 30, 100, 32767, 2833, "0 255", "32767 35600"}, // both just inside
        {0, 0, 1, 30, 100, 32767, 2833, "0 0", "32767 35600"},
        {2, 0, 1, 30, 100, 32767, 2833, "255 255", "32767 35600"},
        {2, 0, 1, 30, 100, 32767, 2832, "none", "32767 35600"}, // the upper just over
        {1, 0, 1, 30, 100, 32768, 2800, "0 255", "32767 35600"},
        {0, 0, 1, 30, 100, 32768, 2800, "none", "32767 35600"}, // the lower just under
        {0, 0, 1, 30, 100, 30000, 1000, "0 255", "32767 35600"},
        {2, 0, 1, 30, 100, 40000, 1000, "0 255", "32767 35600"},
        {0, 0, 1, 30, 100, 10000, 1000, "0 255", "32767 35600"}, // the lower over it
        {1, 0, 1, 30, 100, 40000, 1000, "none", "32767 35600"},
        {1, 0, 1, 30, 100, 10000, 1000, "none", "32767 35600"},
        {1, 0, 1, -90, 4000, 32000, 5000, "0 255", nullptr}, // neither can be converted
        {2, 0, 1, -90, 4000, 32000, 5000, "none", nullptr},
        {0, 0, 1, -21, 100, 30000, 5000, "none", nullptr}, // "LE" is under, whatever its count
        {2, 0, 1, 30, 151, 32000, 5000, "none", nullptr},  // "HE" over
        {1, 0, 0, 30, 70, 32000, 5000, "39 183", "32767 35600"}, // width 70 about 65
        // A window without width: its one count is inside.
        {1, 0, 1, 30, 100, 32767, 0, "0 255", "32767 35600"},
        {0, 0, 1, 30, 100, 32767, 0, "0 0", "32767 35600"},
        {2, 0, 1, 30, 100, 32767, 0, "none", "32767 35600"},
        {1, 0, 1, 30, 30, 32767, 0, "0 0", "32767 32767"},
        // Fractions of the palette and of the window; the FPGA's limits stay.
        {1, 1, 0, 0.25F, 1.0F, 4000, 1000, "63 255", "9 9"},
        {1, 2, 0, 0.25F, 0.5F, 4000, 1000, "63 127", "9 9"},
        {0, 1, 0, 0.25F, 0.5F, 4000, 1000, "0 63", "9 9"},
        {2, 2, 0, 0.25F, 0.5F, 4000, 1000, "127 255", "9 9"},
        {1, 1, 0, -0.5F, 2.0F, 4000, 1000, "0 255", "9 9"},
        {2, 1, 0, -0.5F, 2.0F, 4000, 1000, "255 255", "9 9"},
        {1, 1, 0, NAN, 2.0F, 4000, 1000, "0 255", "9 9"},
        {1, 1, 0, 0.75F, 0.25F, 4000, 1000, "none", "9 9"},
        {1, 2, 0, -1e30F, 1e30F, 4000, 1000, "0 255", "9 9"},
    };
    for (const Limits& c : cases) {
        Isotherm iso;
        iso.type = c.type;
        iso.reference = c.reference;
        iso.useMinMax = c.useMinMax;
        iso.minTemp = iso.lowRatio = c.low;
        iso.maxTemp = iso.highRatio = c.high;
        iso.center = 65;
        iso.width = 70;
        host->setIsoPara(iso);
        host->m_level = c.level;
        host->m_span = c.span;
        host->fpga_set_iso_min(9), host->fpga_set_iso_max(9);
        EXPECT_EQ(host->setIsoSwitch(true), 20);
        const std::string where = joined(c.type, c.reference, c.low, c.high, c.level, c.span);
        EXPECT_EQ(band(), c.band) << where;
        EXPECT_EQ(yuv(shown(256)) + ", " + yuv(shown(258)), "1 2 3, 81 90 239") << where;
        EXPECT_TRUE(c.limits == nullptr || limits() == c.limits) << where << ": " << limits();
    }
    EXPECT_EQ(host->setIsoSwitch(false), 20);
    EXPECT_EQ(band(), "none");
}

TEST_F(Picture, takesTheLimitsFromWhereTheyAreSaidToBe) {
    host->m_level = 32000;
    host->m_span = 5000;
    const auto converted = [&] {
        return joined(host->m_isoMinStru.status, host->m_isoMinStru.ad, host->m_isoMaxStru.status,
                      host->m_isoMaxStru.ad);
    };
    Isotherm iso;
    iso.reference = 7; // the limits last converted, which are these temperatures
    iso.useMinMax = 1;
    iso.minTemp = 30;
    iso.maxTemp = 100;
    host->setIsoPara(iso);
    host->setIsoSwitch(true);
    EXPECT_EQ(joined(band(), limits()), "39 183 32767 35600");
    host->getIsoTempStru(-90, 4000);
    const std::string bad = converted();
    iso.reference = 2;
    iso.useMinMax = 0;
    host->setLevelSpanMode(LEVELSPAN_HAND); // temperatures, whatever useMinMax says
    host->setIsoPara(iso);
    host->palette_cal(nullptr);
    EXPECT_EQ(joined(band(), limits()), "39 183 32767 35600");
    for (const Mode_t mode : {LEVELSPAN_AUTO, LEVELSPAN_ZFT}) {
        host->getIsoTempStru(-90, 4000);
        iso.lowRatio = 0.1503F; // 751.5 of 5000: cut
        iso.highRatio = -7;     // not a count: 0
        host->setIsoPara(iso);
        host->getIsoTempStru(-90, 4000);
        host->setLevelSpanMode(mode);
        host->palette_cal(nullptr);
        EXPECT_EQ(joined(band(), limits(), converted()), "none 32767 35600 OK 32751 OK 0");
    }
    host->getIsoTempStru(-90, 4000);
    const std::string untouched = converted();
    EXPECT_EQ(untouched, bad);
    iso.reference = 1; // converts nothing
    host->m_isoHandler.setIsoInfo(iso);
    host->palette_cal(nullptr);
    EXPECT_EQ(converted(), untouched);
    // With an offset of 20 °C, 50 °C are as 30 were.
    host->m_sysTempSetup.offset = 20;
    host->getIsoTempStru(50, 120);
    EXPECT_EQ(converted(), "OK 32767 OK 35600");
    host->m_sysTempSetup.offset = 0;
    iso.reference = 3; // the dew point, 18.44 °C (AD 32292), for both
    iso.type = 0;
    host->setEnvTemp(30);
    host->setHumid(0.5F);
    host->setIsoPara(iso);
    EXPECT_EQ(transfersOf([&] { host->palette_cal(nullptr); }).substr(0, 23),
              "W202:2=247E W204:2=247E");
    iso.type = 9; // of no type: the band stays
    host->setIsoPara(iso);
    const std::string before = band();
    host->m_level = 31000;
    host->palette_cal(nullptr);
    EXPECT_EQ(band(), before);
}

TEST(IsothermHandler, tintsWhatIsNotBelowItsBand) {
    ISOHandler handler;
    std::array<unsigned char, 261 * 4> table{}; // black; a half of red is 40 45 119
    handler.setIsoPalette(table.data());
    EXPECT_EQ(joined(+table[0], +table[2], +table[4]), "40 119 0"); // entry 0 alone
    handler.setIsoPosition(200, 100);
    unsigned char entry[] = {125, 128, 128, 7};
    handler.calIsoColor(entry, 99);
    EXPECT_EQ(joined(+entry[0], +entry[1], +entry[2], +entry[3]), "125 128 128 7");
    handler.calIsoColor(entry, 100);
    EXPECT_EQ(joined(+entry[0], +entry[1], +entry[2], +entry[3]), "103 109 183 7");
    handler.calIsoColor(nullptr, 100);
    handler.setIsoPalette(nullptr);
}

TEST_F(Picture, colorsTheBandAndTheSpecialEntries) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"Green", "145 54 34", "145 54 34"},       {"Black", "16 128 128", "16 128 128"},
        {"White", "235 128 128", "235 128 128"},   {"Red", "81 90 239", "81 90 239"},
        {"Blue", "40 239 109", "40 239 109"},      {"Trans", "103 109 183", "81 90 239"},
        {"green", "103 109 183", "81 90 239"},     {"", "103 109 183", "81 90 239"},
        {"Green56789", "103 109 183", "81 90 239"}}; // ten letters, no end
    host->setStandardPaletteIndex(COLOR_GREY);
    for (const auto& [name, inside, special] : cases) {
        Isotherm iso;
        iso.reference = 1;
        std::memset(iso.color, 0, sizeof iso.color);
        std::memcpy(iso.color, name, std::strlen(name));
        host->setIsoPara(iso);
        host->setIsoSwitch(true);
        EXPECT_EQ(yuv(shown(128)), inside) << name; // was 125 128 128
        EXPECT_EQ(yuv(shown(258)), special) << name;
        EXPECT_EQ(yuv(shown(259)) + ", " + yuv(shown(260)), "16 128 128, 235 128 128") << name;
        EXPECT_EQ(yuv(host->getCurrentPalette()[128]), "125 128 128");
    }
    host->setCustomPalette(ramp); // fourth bytes stay
    EXPECT_EQ(joined(+shown(128).reserved, +shown(258).reserved, +shown(259).reserved), "9 0 0");
    EXPECT_EQ(yuv(shown(259)) + ", " + yuv(shown(260)), "0 255 7, 255 0 7");
}

TEST_F(Picture, followsTheWindowWhileTheIsothermIsOn) {
    Isotherm iso;
    iso.type = 259; // only the low byte reaches the FPGA
    EXPECT_EQ(transfersOf([&] { host->setIsoPara(iso); }), "W201:1=03");
    iso.type = 1;
    host->setIsoPara(iso);
    const std::function<void()> moves[] = {
        [&] { host->calcLevelSpan(LEVELSPAN_AUTO, false); },
        [&] { host->calcLevelSpan(LEVELSPAN_ZFT, true); },
        [&] { host->handLevelSpan(30, 100); },
        [&] { host->getAutoMinMaxTemp(nullptr, nullptr); },
    };
    host->calcLevelSpan(LEVELSPAN_HAND, false); // the first call of a process is another's
    for (const bool on : {true, false}) {
        EXPECT_EQ(transfersOf([&, on] { host->setIsoSwitch(on); }).substr(0, 9),
                  on ? "W200:1=01" : "W200:1=00");
        EXPECT_EQ(host->getIsoSwitch(), on);
        for (const auto& move : moves) {
            const std::string moved = transfersOf(move);
            const std::size_t window = moved.find("W64:4");
            ASSERT_NE(window, std::string::npos) << moved;
            EXPECT_EQ(moved.find("W202:2", window) != std::string::npos, on) << moved;
            EXPECT_EQ(moved.find("W1300:1044", window) != std::string::npos, on) << moved;
        }
    }
    EXPECT_EQ(transfersOf([&] { host->handLevelSpan(-61, 30); }), ""); // did not move
}

TEST_F(Picture, isComposedByForwarding) {
    const std::tuple<std::function<int()>, const char*> cases[] = {
        {[&] { return host->setImageMode(IMAGE_FUSION); }, "R00:1 W00:1=06"},
        {[&] { return host->set_CCD_Pipe_IR_Position(POSITION_BOTTOM_LEFT); }, "R01:1 W01:1=20"},
        {[&] { return host->set_IR_Pipe_CCD_Position(POSITION_BOTTOM_RIGHT); }, "R01:1 W01:1=23"},
        {[&] { return host->setADV7179Mode(0x102); }, "W34:1=02"}};
    for (const auto& [act, moved] : cases)
        EXPECT_EQ(transfersOf([&, run = act] { EXPECT_EQ(run(), 1); }), moved);
    EXPECT_EQ(transfersOf([&] { host->setSaturation(true), host->saturation(); }), "");
    const bool& saturation = host->getSaturation();
    EXPECT_TRUE(saturation);
    host->setSaturation(false);
    EXPECT_FALSE(saturation);
}

} // namespace
