#include "cameradir.h"

#include "detectorcore.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <locale>
#include <sstream>
#include <system_error>
#include <vector>

namespace irmsim {

namespace {

namespace fs = std::filesystem;

struct File {
    fs::path path;
    std::string text;
};

constexpr int lenses = 2;
constexpr int ranges = 2;
constexpr int step = 10; // °C from entry to entry

std::string tableText(int lens, int range) {
    // The lowest bound is corrected twice for the inside temperature and the highest never, so
    // the entries reach beyond the range at both ends.
    const int lowest = range == 0 ? -40 : -20;
    const int highest = range == 0 ? 180 : 420;
    Detector detector;
    detector.setRange(range);
    detector.setLens(lens);

    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << "[ParaSet]\nMaxAD=0xFFFF\nMinAD=0\nBaseTemp=30\nMinTemp=" << lowest
        << "\nMaxTemp=" << highest << "\nTempNum=" << (highest - lowest) / step + 1
        << "\n\n[Temp2AD]\n";
    for (int t = lowest; t <= highest; t += step)
        out << std::dec << t << "=0x" << std::hex << std::uppercase
            << std::lround(detector.curve(t)) << '\n';
    return out.str();
}

std::string settingText(const CameraDirectory& content) {
    const Surroundings& believed = content.believed;
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out.precision(9);
    // Keys before the first group are top-level ones; VSKTemp stands in both places.
    out << "VSKTemp=40\nVSKValue_Range0=1875\nVSKValue_Range1=1980\n\n"
        << "[BiaoDing]\nTempRange=" << content.tempRange << "\nIntTime0=" << rangeIntTimes[0]
        << "\nIntTime1=" << rangeIntTimes[1] << "\nVSKTemp=40\n\n"
        << "[GlobalPara]\nEmiss=" << believed.emissivity << "\nDistan=" << believed.distance
        << "\nOffset=0\nEnv=" << believed.envTemp << "\nHumid=" << believed.humidity
        << "\nReflec=" << believed.reflectedTemp << '\n';
    return out.str();
}

/// The detector's modify factor for each half degree of inside temperature from -20 °C on, that of
/// its middle.
std::string modifyText() {
    constexpr int halfDegrees = 200;
    Detector detector;
    detector.setModifySlope(true);
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out.precision(9);
    for (int k = 0; k < halfDegrees; ++k) {
        const double celsius = -20 + 0.5 * k;
        out << "Averg_" << celsius << '=' << detector.modifyFactor(celsius + 0.25) << '\n';
    }
    return out.str();
}

bool writeFile(const File& file, std::string& error) {
    std::error_code failure;
    fs::create_directories(file.path.parent_path(), failure);
    if (failure) {
        error = file.path.parent_path().string() + ": cannot be made: " + failure.message();
        return false;
    }
    std::FILE* out = std::fopen(file.path.c_str(), "wx"); // x: never onto an existing file
    if (out == nullptr) {
        error = file.path.string() + ": cannot be written: " + std::strerror(errno);
        return false;
    }
    const bool written =
        std::fwrite(file.text.data(), 1, file.text.size(), out) == file.text.size();
    if (std::fclose(out) != 0 || !written) {
        error = file.path.string() + ": cannot be written: " + std::strerror(errno);
        return false;
    }
    return true;
}

} // namespace

bool writeCameraDirectory(const std::string& directory, const CameraDirectory& content,
                          std::string& error) {
    const fs::path top(directory.empty() ? "." : directory);
    std::vector<File> files{{top / "Parameter" / "Setting", settingText(content)}};
    for (int lens = 0; lens < lenses; ++lens) {
        for (int range = 0; range < ranges; ++range) {
            const std::string name =
                "calc_len" + std::to_string(lens) + "_temp" + std::to_string(range);
            const std::string table = tableText(lens, range);
            files.push_back({top / "etc" / (name + ".conf"), table});
            files.push_back({top / "etc" / (name + "_default.conf"), table});
        }
    }
    if (content.modifyFiles)
        for (const char* name : {"Modify", "Modify_Temp_1", "Modify_1_Temp_0", "Modify_1_Temp_1"})
            files.push_back({top / "Parameter" / name, modifyText()});
    for (const File& file : files) {
        std::error_code ignored;
        if (fs::symlink_status(file.path, ignored).type() != fs::file_type::not_found &&
            fs::symlink_status(file.path, ignored).type() != fs::file_type::none) {
            error = file.path.string() + ": exists already";
            return false;
        }
    }
    for (const File& file : files)
        if (!writeFile(file, error))
            return false;
    return true;
}

bool writeCameraDirectory(const std::string& directory, const Surroundings& believed,
                          std::string& error) {
    return writeCameraDirectory(directory, CameraDirectory{believed}, error);
}

} // namespace irmsim
