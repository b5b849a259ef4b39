// The parameter file.
#include "support/host.h"

#include <fcntl.h>
#include <QtGlobal>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using namespace irmtest;

constexpr char file[] = "Parameter/Setting";

struct Settings : Host {
    std::string load(const std::string& lines) {
        write(file, lines);
        output = printed([&] { host->setSystemTempPara(); });
        return text(host->getSystemTempSetup());
    }
    static std::string text(const TempSetup& s) {
        return joined(s.emiss, s.dist, s.offset, s.reserved);
    }
};

TEST_F(Settings, missingKeysHaveTheirDefaults) {
    std::filesystem::remove(file);
    host->setSystemTempPara();
    EXPECT_EQ(text(host->getSystemTempSetup()), "0.95 5 0 0");
    EXPECT_EQ(host->m_sysTempHandler->getTrans(), 0.9984651F); // 25 °C, 0.6, 5 m
    EXPECT_EQ(host->m_queryTempHandler->getDewpoint(), 16.695337F);
    EXPECT_EQ(host->m_sysTempHandler->irAD2Temp(32768).temp, 30.277662F);
    EXPECT_EQ(load("[GlobalPara]\nOffset=1.5\n"), "0.95 5 1.5 0");
    EXPECT_EQ(load("Offset=9\n[Other]\nEmiss=0.5\n"), "0.95 5 0 0");
}

TEST_F(Settings, allSixParametersReachBothModels) {
    const std::string most = "[GlobalPara]\nEmiss=0.8\nDistan=100\nOffset=1.5\nEnv=10\nHumid=1\n";
    float temps[2] = {};
    for (const int warm : {0, 1}) {
        EXPECT_EQ(load(most + "Reflec=" + (warm != 0 ? "60\n" : "0\n")), "0.8 100 1.5 0");
        host->m_queryTempHandler->setTempSetup({0.8F, 100, 1.5F, 0});
        for (TempHandler* model : {host->m_sysTempHandler, host->m_queryTempHandler}) {
            EXPECT_NEAR(model->getDewpoint(), 10, 1e-4);
            temps[warm] = model->irAD2Temp(36000).temp;
        }
        EXPECT_EQ(host->m_sysTempHandler->irAD2Temp(36000).temp, temps[warm]);
    }
    EXPECT_LT(temps[1], temps[0] - 5); // what is not mirrored is the object's own
}

TEST_F(Settings, rejectedParametersAreKeptButNotApplied) {
    const std::pair<const char*, const char*> values[] = {
        {"Emiss=0", "emiss:0.000000"},     {"Emiss=none", "emiss:0.000000"},
        {"Emiss=0,95", "emiss:0.000000"},  {"Emiss=", "emiss:0.000000"},
        {"Emiss=nan", "emiss:0.000000"},   {"Emiss=inf", "emiss:inf"},
        {"Distan=inf", "dist para error"}, {"Offset=inf", "offset para error"}};
    for (const auto& [line, complaint] : values) {
        EXPECT_EQ(load(std::string("[GlobalPara]\n") + line + "\n"), "1 0 0 0"); // as constructed
        EXPECT_NE(output.find(complaint), std::string::npos) << line << output;
        EXPECT_NE(text(host->m_sysTempSetup), "1 0 0 0");
    }
}

TEST_F(Settings, noTextMakesAReadingThatIsNoNumber) {
    for (const char* key : {"Offset", "Env", "Humid", "Reflec"})
        for (const char* value : {"nan", "inf", "1e999", "-1e30", "0,95", ""}) {
            load(std::string("[GlobalPara]\n") + key + "=" + value + "\n");
            for (unsigned ad = 0; ad < 65536; ad += 499) {
                const float temp = host->m_sysTempHandler->irAD2Temp(ad).temp;
                ASSERT_EQ(temp, temp) << key << value << ad;
            }
        }
}

TEST_F(Settings, theRangeIsAWholeNumber) {
    const std::pair<const char*, int> values[] = {{"1", 1},   {"-7", -7}, {"100.7", 0}, {"1,2", 0},
                                                  {"two", 0}, {"", 0},    {"1e999", 0}};
    for (const auto& [value, range] : values) {
        write(file, std::string("[BiaoDing]\nTempRange=") + value + "\n");
        start();
        EXPECT_EQ(host->m_tempRange, range) << value;
    }
}

TEST_F(Settings, aSetupThatIsOnlyReadIsNotApplied) {
    write(file, "[GlobalPara]\nEmiss=0.7\nDistan=3\nOffset=2\nEnv=99\n");
    host->m_sysTempSetup.reserved = 42;
    EXPECT_EQ(transfersOf([&] { host->readTempSetup(); }), "");
    EXPECT_EQ(text(host->m_sysTempSetup), "0.7 3 2 42");
    EXPECT_EQ(text(host->m_fileTempSetup), "0.7 3 2 42");
    EXPECT_EQ(text(host->getSystemTempSetup()), "1 0 0 0");
    EXPECT_EQ(host->m_sysTempHandler->irAD2Temp(32768).temp, 30.012743F);
    EXPECT_EQ(text(m_tempsetup), "0 0 0 0");
}

TEST_F(Settings, aFileThatCannotBeTakenCountsAsMissing) {
    const auto upTo = [](std::size_t bytes, const std::string& text) {
        return text + std::string(bytes - text.size(), ';');
    };
    const std::string plain = "[GlobalPara]\nEmiss=0.5\nDistan=1\n";
    const auto listOf = [](std::size_t depth) { // of one list of one list of ...
        std::string text = "[GlobalPara]\nEmiss=@Variant(";
        for (std::size_t i = 0; i < depth; ++i)
            text.append("\0\0\0\x9\0\0\0\x1", 8);
        return text + ")\n";
    };
    std::string groups;
    while (groups.size() < 32768)
        groups += "[\n";
    const struct {
        const char* what;
        std::string content;
        const char *errors, *setup;
    } cases[] = {
        {"as large as one may be", upTo(32768, plain), "", "0.5 1 0 0"},
        {"a byte larger", upTo(32769, plain), "Parameter/Setting: File too large\n", "0.95 5 0 0"},
        {"as deep as one may be", listOf(4090), "", "0 5 0 0"},
        {"deeper", listOf(1000000), "Parameter/Setting: File too large\n", "0.95 5 0 0"},
        {"groups only", groups, "", "0.95 5 0 0"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(printed([&] { load(c.content); }, STDERR_FILENO), c.errors) << c.what;
        EXPECT_EQ(text(host->m_sysTempSetup), c.setup) << c.what;
    }
    const auto readAgain = [&] {
        const std::string errors = printed([&] { host->setSystemTempPara(); }, STDERR_FILENO);
        return text(host->m_sysTempSetup) + errors;
    };
    write(file, plain);
    const auto now = std::filesystem::file_time_type::clock::now();
    // The clock was wrong, or the board's date lies beyond what a time in nanoseconds can tell.
    std::filesystem::last_write_time(file, now + std::chrono::hours(1));
    EXPECT_EQ(readAgain(), "0.5 1 0 0");
    const auto far = std::min<std::int64_t>(9300000000, std::numeric_limits<time_t>::max());
    const timespec stamp{static_cast<time_t>(far), 0}, both[2] = {stamp, stamp};
    utimensat(AT_FDCWD, file, both, 0); // not all file systems have such dates
    EXPECT_EQ(readAgain(), "0.5 1 0 0");
    std::filesystem::remove(file);
    std::filesystem::create_symlink("Setting", file);
    EXPECT_EQ(readAgain(), "0.95 5 0 0Parameter/Setting: Too many levels of symbolic links\n");
    std::filesystem::remove_all("Parameter");
    write("Parameter", plain);
    EXPECT_EQ(readAgain(), "0.95 5 0 0");
}

TEST_F(Settings, aListLongerThanMemoryIsNoNumber) {
#ifdef SANITIZED
    GTEST_SKIP() << "sanitizers end the program instead";
#endif
    write(file, "[GlobalPara]\nDistan=@Variant(\\0\\0\\0\\x9\\x7f\\xff\\xff\\xff)\nOffset=2\n");
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    const rlimit small{rlim_t{1} << 31U, limit.rlim_max};
    setrlimit(RLIMIT_AS, &small);
    const std::string errors = printed([&] { host->setSystemTempPara(); }, STDERR_FILENO);
    setrlimit(RLIMIT_AS, &limit);
    // Qt 5 throws at the whole group.
    constexpr bool throws = QT_VERSION_MAJOR == 5;
    EXPECT_EQ(text(host->m_sysTempSetup), throws ? "0.95 5 0 0" : "0.95 0 2 0");
    EXPECT_NE(errors.find("Cannot allocate memory") == std::string::npos, throws) << errors;
}

TEST_F(Settings, aRewriteOfTheSameSizeIsSeenAtOnce) {
    for (int i = 0; i < 60; ++i) {
        const std::string digit = std::to_string(i % 10);
        ASSERT_EQ(load("[GlobalPara]\nOffset=" + digit + "\n"), "0.95 5 " + digit + " 0") << i;
    }
}

} // namespace
