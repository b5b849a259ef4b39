#include "sim/cameradir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

using namespace irmsim;
namespace fs = std::filesystem;

namespace {

std::string contents(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

class CameraDirectoryTest : public testing::Test {
protected:
    CameraDirectoryTest() { fs::remove_all(top); }
    ~CameraDirectoryTest() override { fs::remove_all(top); }
    // Tests run side by side, each in a process of its own.
    const fs::path top =
        fs::path(testing::TempDir()) / ("irmcore-camera-" + std::to_string(::getpid()));
    std::string error;
};

} // namespace

TEST_F(CameraDirectoryTest, tablesHoldTheCurveMeasured) {
    ASSERT_TRUE(writeCameraDirectory(top / "deep", Surroundings{}, error)) << error;
    const struct {
        const char* file;
        std::vector<const char*> lines;
    } cases[] = {
        {"calc_len0_temp0",
         {"MinTemp=-40\nMaxTemp=180\nTempNum=23\n", "MaxAD=0xFFFF\nMinAD=0\n", "\n-40=0x6D1E\n",
          "\n0=0x75E3\n", "\n30=0x8000\n", "\n100=0xA42E\n", "\n180=0xE1DC\n"}},
        {"calc_len0_temp1",
         {"MinTemp=-20\nMaxTemp=420\nTempNum=45\n", "\n-20=0x7B76\n", "\n400=0xE8D6\n",
          "\n420=0xF0F7\n"}},
        {"calc_len1_temp0", {"\n30=0x8000\n", "\n100=0xA090\n"}},
        {"calc_len1_temp1", {"TempNum=45\n"}},
    };
    for (const auto& c : cases)
        for (const char* suffix : {".conf", "_default.conf"}) {
            const auto text = contents(top / "deep/etc" / (std::string(c.file) + suffix));
            for (const char* line : c.lines)
                EXPECT_NE(text.find(line), std::string::npos) << c.file << suffix << line;
        }
}

TEST_F(CameraDirectoryTest, settingHoldsWhatTheHostIsToBelieve) {
    const Surroundings believed{0.8, 60, 0.7, -12.5, 35};
    ASSERT_TRUE(writeCameraDirectory(top, CameraDirectory{believed, 1}, error)) << error;
    EXPECT_EQ(contents(top / "Parameter/Setting"),
              "VSKTemp=40\nVSKValue_Range0=1875\nVSKValue_Range1=1980\n\n"
              "[BiaoDing]\nTempRange=1\nIntTime0=120\nIntTime1=210\nVSKTemp=40\n\n"
              "[GlobalPara]\nEmiss=0.8\nDistan=60\nOffset=0\nEnv=-12.5\nHumid=0.7\nReflec=35\n");
}

TEST_F(CameraDirectoryTest, nothingIsOverwritten) {
    fs::create_directories(top / "etc");
    std::ofstream(top / "etc/calc_len1_temp0.conf") << "mine";
    EXPECT_FALSE(writeCameraDirectory(top, Surroundings{}, error));
    EXPECT_EQ(error, (top / "etc/calc_len1_temp0.conf").string() + ": exists already");
    EXPECT_EQ(contents(top / "etc/calc_len1_temp0.conf"), "mine");
    EXPECT_FALSE(fs::exists(top / "Parameter"));

    std::ofstream(top / "file") << "";
    EXPECT_FALSE(writeCameraDirectory(top / "file", Surroundings{}, error));
    EXPECT_NE(error.find("cannot be made"), std::string::npos) << error;
}
