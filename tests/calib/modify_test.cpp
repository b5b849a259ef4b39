// Modify files: the factors for the inside temperature.
#include "calib/modify.h"
#include "support/host.h"

namespace {

using namespace irmtest;

/// The table as a host finds it when it has just begun.
const std::string s_table = joined(s_modify[0], s_modify[199], m_minModifyTemp, m_maxModifyTemp);

struct Modify : Host {
    Modify() { std::filesystem::remove("Parameter/Modify"); }
    /// Reads "Parameter/Modify" with these lines; the factors as runs, each from an entry on.
    std::string read(const std::string& lines) {
        write("Parameter/Modify", lines);
        output = printed([&] { host->updateModify(0, 0); });
        std::string runs;
        for (int k = 0; k < 200; ++k)
            if (k == 0 || s_modify[k] != s_modify[k - 1])
                runs += (k == 0 ? "" : " ") + std::to_string(k) + ':' + joined(s_modify[k]);
        return runs;
    }
    static std::string trace(const char* file, int lens, const char* values) {
        return std::string("update modify filename:Parameter/") + file +
               " len:" + std::to_string(lens) + '\n' + values;
    }
};

constexpr char none[] = "minTemp:79.000000 modify:1.000000  maxTemp:-20.000000 modify:1.000000 \n";

TEST_F(Modify, factorsHoldFromTheirTemperatureToTheNext) {
    const struct {
        const char* lines;
        const char* factors;
        const char* trace;
        // clang-format off
    } cases[] = {
        {"", "0:1", none},
        {"Averg_10=1.0\nAverg_30=2.0\n", "0:1 100:2", "minTemp:10.000000 modify:1.000000  maxTemp:30.000000 modify:2.000000 \n"},
        {"Averg_-20=0.5\nAverg_-0.5=0.6\nAverg_0=0.7\nAverg_0.5=0.8\nAverg_79.5=9\n", "0:0.5 39:0.6 40:0.7 41:0.8 199:9", "minTemp:-20.000000 modify:0.500000  maxTemp:79.500000 modify:9.000000 \n"},
        {"Averg_25.5=1.25\n", "0:1.25", "minTemp:25.500000 modify:1.250000  maxTemp:25.500000 modify:1.250000 \n"},
        {"Averg_25.0=2\nAverg_-0=2\nAverg_80=2\nAverg_-20.5=2\n[Other]\nAverg_10=2\n", "0:1", none},
        {"Averg_10=1.5\nAverg_20=0\nAverg_30=2.5\nAverg_40=-1\n", "0:1.5 100:2.5 120:-1", "minTemp:10.000000 modify:1.500000  maxTemp:40.000000 modify:-1.000000 \n"},
        {"Averg_9=nan\nAverg_10=1.5\nAverg_11=none\nAverg_12=\nAverg_13=1,7\nAverg_14=1e-60\n", "0:1.5", "minTemp:10.000000 modify:1.500000  maxTemp:10.000000 modify:1.500000 \n"},
        // The lowest found begins at 79: what is only above it is the highest alone.
        {"Averg_79.5=3\n", "0:1 199:3", "minTemp:79.000000 modify:1.000000  maxTemp:79.500000 modify:3.000000 \n"},
        {"Averg_79=0\n", "0:0 198:1", "minTemp:79.000000 modify:0.000000  maxTemp:-20.000000 modify:1.000000 \n"},
        {"Averg_79=nan\nAverg_79.5=3\n", "0:0 199:3", "minTemp:79.000000 modify:0.000000  maxTemp:79.500000 modify:3.000000 \n"},
    };
    // clang-format on
    for (const auto& c : cases) {
        EXPECT_EQ(read(c.lines), c.factors) << c.lines;
        EXPECT_EQ(output, trace("Modify", 0, c.trace)) << c.lines;
    }
    read("Averg_-19.5=0.5\nAverg_78.5=2\n");
    EXPECT_EQ(joined(m_minModifyTemp, m_maxModifyTemp), "-19.5 78.5");
}

TEST_F(Modify, filesAreChosenByLensAndRange) {
    const auto read = [&](auto... indices) {
        return printed([&] { host->updateModify(indices...); });
    };
    EXPECT_EQ(read(0, 0), trace("Modify", 0, none)); // there is none at all
    const auto factor = [](int n) {
        const std::string value = std::to_string(n) + ".000000";
        return "minTemp:5.000000 modify:" + value + "  maxTemp:5.000000 modify:" + value + " \n";
    };
    const char* const names[] = {"Modify_2_Temp_1", "Modify_Temp_1", "Modify_3_Temp_0", "Modify"};
    for (int i = 0; i < 4; ++i)
        write(std::string("Parameter/") + names[i], "Averg_5=" + std::to_string(i + 2) + "\n");
    EXPECT_EQ(read(2, 1), trace(names[0], 2, factor(2).c_str()));
    EXPECT_EQ(read(0, 1), trace(names[1], 0, factor(3).c_str()));
    EXPECT_EQ(read(3), trace(names[2], 3, factor(4).c_str()));
    for (const auto& [lens, range] : {std::pair{0, 0}, {2, 0}, {0, 2}, {1, 1}, {-1, 0}})
        EXPECT_EQ(read(lens, range), trace("Modify", lens, factor(5).c_str()));
    write("Parameter/Modify_2_Temp_1", ""); // there, but empty
    EXPECT_EQ(read(2, 1), trace(names[0], 2, none));
}

TEST_F(Modify, halfDegreesHaveAnEntryEach) {
    const std::pair<float, int> entries[] = {
        {-25, 0},         {-20, 0},     {-19.6F, 0},     {-19.5F, 1},  {0, 40},
        {10.3F, 60},      {24.75F, 89}, {79.49F, 198},   {79.9F, 199}, {79.99F, 199},
        {79.99999F, 199}, {80, 199},    {INFINITY, 199}, {-1e30F, 0}};
    for (const auto& [celsius, entry] : entries)
        EXPECT_EQ(irmcore::modifyEntry(celsius), entry) << celsius;
    EXPECT_EQ(s_table, "0 0 79 -20");
    float table[201]{};
    irmcore::fillGaps({table, 0, 2, 10, 3});
    EXPECT_EQ(joined(table[39], table[40], table[60], table[61], table[199], table[200]),
              "2 2 2 3 3 0");
}

} // namespace
