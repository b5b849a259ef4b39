// Calibration table files.
#include "support/host.h"

#include <limits>

namespace {

using namespace irmtest;

/// A file's entries from `first` to `last`, without one of them.
std::string keys(int first, int last, int without = 7) {
    std::string all = "[Temp2AD]\n";
    for (int t = first; t <= last; t += 10)
        if (t != without)
            all += std::to_string(t) + "=0x1001\n";
    return all;
}

std::string entries(const TempInfoTab& tab, int count) {
    std::string all = std::to_string(tab.tempNum);
    for (int i = 0; i < count; ++i)
        all += ' ' + joined(tab.temp[i], tab.ad[i]);
    return all;
}

struct TableFiles : Host {
    TempInfoTab read(const std::string& text) {
        write("table.conf", text);
        TempInfoTab tab{};
        EXPECT_EQ(host->readTable("table.conf", &tab), 1);
        std::filesystem::remove("table.conf");
        return tab;
    }
};

TEST_F(TableFiles, entriesLieWithinTheFilesBounds) {
    // TempNum as read, entries found, temperatures of the first and of the last of them.
    const std::tuple<const char*, std::string, const char*> cases[] = {
        {"MinTemp=-20\nMaxTemp=400\nTempNum=43\n", keys(-20, 400), "43 43 -20 400"},
        {"MinTemp=-20\nMaxTemp=400\nTempNum=43\n", keys(-20, 400, 100), "43 42 -20 400"},
        {"MinTemp=-20\nMaxTemp=400\nTempNum=5\n", keys(-20, 400), "5 5 -20 20"},
        {"MinTemp=-20\nMaxTemp=20\nTempNum=43\n", keys(-20, 400), "43 5 -20 20"},
        {"MinTemp=30\nMaxTemp=20\nTempNum=43\n", keys(-20, 400), "43 0 0 0"},
        {"MinTemp=-20\nMaxTemp=400\nTempNum=0\n", keys(-20, 400), "0 0 0 0"},
        {"MinTemp=-20\nMaxTemp=400\nTempNum=-1\n", keys(-20, 400), "0 0 0 0"},
        {"MinTemp=-300\nMaxTemp=400\nTempNum=70\n", keys(-300, 400), "60 60 -300 290"},
        {"TempNum=9\n", keys(0, 50), "9 1 0 0"},
        {"MinTemp=-2147483648\nMaxTemp=2147483647\nTempNum=60\n",
         keys(-32768, -32768) + keys(32762, 32782), "60 2 -32768 32762"},
        {"MinTemp=2147483640\nMaxTemp=2147483647\nTempNum=60\n", keys(0, 50), "60 0 0 0"}};
    for (const auto& [scalars, list, expected] : cases) {
        const TempInfoTab tab = read(std::string("[ParaSet]\n") + scalars + list);
        int found = 0;
        while (found < 60 && tab.ad[found] == 0x1001)
            ++found;
        const auto last = tab.temp[std::max(found, 1) - 1];
        EXPECT_EQ(joined(tab.tempNum, found, tab.temp[0], last), expected) << scalars;
        EXPECT_TRUE(found == 60 || (tab.ad[found] == 0 && tab.temp[found] == 0));
    }
}

TEST_F(TableFiles, valuesThatAreNoNumbersAreZero) {
    const std::pair<const char*, const char*> scalars[] = {
        {"", "65535 0 30"},
        {"MaxAD=B000\nMinAD=10\nBaseTemp=-5\n", "45056 16 -5"},
        {"MaxAD=0xb000\nMinAD=0X1F\nBaseTemp=0\n", "45056 31 0"},
        {"MaxAD=1,2\nMinAD=none\nBaseTemp=25.5\n", "0 0 0"},
        {"MaxAD=1B000\nMinAD=FFFFFFFFFF\n", "45056 0 30"}};
    for (const auto& [lines, expected] : scalars) {
        const TempInfoTab tab = read(std::string("[ParaSet]\n") + lines);
        EXPECT_EQ(joined(tab.maxAD, tab.minAD, tab.baseTemp), expected) << lines;
    }
    const TempInfoTab tab = read("[ParaSet]\nMinTemp=10\nMaxTemp=60\nTempNum=9\n[Temp2AD]\n10=\n"
                                 "20=1,2\n30=xyz\n50=7F\n60=1234\n");
    EXPECT_EQ(entries(tab, 6), "9 10 0 20 0 30 0 50 127 60 4660 0 0");
    TempInfoTab kept{};
    EXPECT_EQ(host->readTable(nullptr, &kept) + host->readTable("table.conf", nullptr), 2);
    EXPECT_EQ(kept.maxAD, 0);
}

TEST_F(TableFiles, theFallbackStandsInForAMissingOrEmptyTable) {
    const std::string at = "measure/fpga_tablefiles.cpp, ] ";
    const std::string missing =
        "[" + at + "etc/calc_len_temp.conf is no exist\n[" + at + "Set all AD table failured\n";
    const auto reading = [&](const std::string& name) {
        return "[==================" + at + "etc/calc_len_temp" + name + ".conf\n[" + at +
               "Set all AD table successed\n";
    };
    const std::string modify = "update modify filename:Parameter/Modify len:\n" // first of all
                               "minTemp:. modify:.  maxTemp:. modify:. \n";
    const auto load = [&](const std::string& expected) {
        output = printed([&] { EXPECT_EQ(host->setSystemAdToTempTab(3, 0), 0); });
        EXPECT_EQ(withoutDigits(output), modify + expected);
        return entries(host->getTempInfoTab(), 2);
    };
    EXPECT_EQ(load(missing + reading("_default")), "0 0 0 0 0");
    const TempInfoTab none = host->getTempInfoTab();
    EXPECT_EQ(joined(none.maxAD, none.minAD, none.baseTemp), "65535 0 30");
    const std::string table = "[ParaSet]\nMaxTemp=10\nTempNum=2\n[Temp2AD]\n0=7000\n";
    write("etc/calc_len3_temp0_default.conf", table + "10=7100\n");
    EXPECT_EQ(load(missing + reading("_default")), "2 0 28672 10 28928");
    write("etc/calc_len3_temp0.conf", table); // one key is no table
    EXPECT_EQ(load(reading("_default")), "2 0 28672 10 28928");
    write("etc/calc_len3_temp0.conf", table + "10=7200\n");
    EXPECT_EQ(load(reading("")), "2 0 28672 10 29184");
    EXPECT_EQ(joined(host->getTempInfoTab().shutterTemp, host->m_tempInfoTab.shutterTemp),
              "29.999998 0");
    EXPECT_EQ(camera.calls().total(), 0U);
}

TEST_F(TableFiles, limitsAreThoseOfTheRange) {
    const auto after = [&](auto load) {
        output = printed([&] { EXPECT_EQ(load(), 0); });
        return joined(m_levelSpanMinAD, m_levelSpanMaxAD, host->m_tempRange);
    };
    EXPECT_EQ(after([&] { return host->setSystemAdToTempTab(0, 1); }), "31527 45056 0");
    EXPECT_EQ(after([&] { return host->setSystemAdToTempTab(0, 0); }), "28672 37599 0");
    write("Parameter/Setting", "[BiaoDing]\nTempRange=1\n");
    EXPECT_EQ(after([&] { return host->setSystemAdToTempTab(); }), "31527 45056 1");
    write("Parameter/Setting", "[BiaoDing]\n");
    EXPECT_EQ(after([&] { return host->setSystemAdToTempTab(); }), "28672 37599 0");
    constexpr int lowest = std::numeric_limits<int>::min(); // its path does not fit
    EXPECT_EQ(after([&] { return host->setSystemAdToTempTab(lowest, lowest); }), "0 0 0");
    EXPECT_NE(output.find("] etc/calc_len-2147483648_temp-2147483648_default.c\n"), output.npos);
}

} // namespace
