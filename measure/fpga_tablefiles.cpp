#include "../core/fpga.h"
#include "../core/settings.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <unistd.h>

namespace settings = irmcore::settings;

namespace {

using Path = std::array<char, settings::tableFileBytes>;

/// A table file's path; cut off where it does not fit, which names no file of the camera.
Path tablePath(const char* format, int lens, int range) {
    Path path{};
    std::snprintf(path.data(), path.size(), format, lens, range);
    return path;
}

/// Whether the file has entries enough to be a table.
bool hasTable(settings::File& file) {
    file.beginGroup(settings::entryGroup);
    const auto entries = file.keys().size();
    file.endGroup();
    return entries >= 2;
}

/// The first key at or above the lowest temperature that an entry can hold, in steps from
/// `minTemp`.
std::int64_t firstKey(std::int64_t minTemp) {
    constexpr std::int64_t lowest = std::numeric_limits<std::int16_t>::min();
    if (minTemp >= lowest)
        return minTemp;
    const std::int64_t steps = (lowest - minTemp + settings::entryStep - 1) / settings::entryStep;
    return minTemp + steps * settings::entryStep;
}

/// Reads what a table file holds.
void readFile(settings::File& file, TempInfoTab& tab) {
    file.beginGroup(settings::scalarGroup);
    tab.maxAD = file.hexadecimal(QLatin1String(settings::maxAd), settings::defaultMaxAd);
    tab.minAD = file.hexadecimal(QLatin1String(settings::minAd), settings::defaultMinAd);
    tab.baseTemp = static_cast<std::int16_t>(
        file.integer(QLatin1String(settings::baseTemp), settings::defaultBaseTemp));
    const int minTemp = file.integer(QLatin1String(settings::minTemp), settings::defaultMinTemp);
    const int maxTemp = file.integer(QLatin1String(settings::maxTemp), settings::defaultMaxTemp);
    const int count =
        std::clamp(file.integer(QLatin1String(settings::tempNum), settings::defaultTempNum), 0,
                   irmcore::tableCapacity);
    tab.tempNum = static_cast<std::uint16_t>(count);
    file.endGroup();

    // Temperatures that an entry cannot hold are passed over, so that the scan stays short.
    file.beginGroup(settings::entryGroup);
    const std::int64_t last =
        std::min<std::int64_t>(maxTemp, std::numeric_limits<std::int16_t>::max());
    int n = 0;
    for (std::int64_t t = firstKey(minTemp); t <= last && n < count; t += settings::entryStep) {
        if (const auto ad = file.hexadecimal(QString::number(t))) {
            tab.temp[n] = static_cast<std::int16_t>(t);
            tab.ad[n] = *ad;
            ++n;
        }
    }
    file.endGroup();
}

} // namespace

TempInfoTab FPGA::getTempInfoTab() { return m_irPara.getADToTempTab(); }

int FPGA::readTable(const char* fileName, TempInfoTab* tab) {
    if (fileName == nullptr || tab == nullptr)
        return 1;
    settings::File file(fileName);
    readFile(file, *tab);
    return 1;
}

int FPGA::setSystemAdToTempTab(int lens, int range) {
    updateModify(lens, range);
    m_tempInfoTab = TempInfoTab{};
    Path path = tablePath(settings::tableFile, lens, range);
    std::optional<settings::File> file;
    if (::access(path.data(), F_OK) != 0) {
        std::printf("[%s, %d] %s is no exist\n", __FILE__, __LINE__, path.data());
        std::printf("[%s, %d] Set all AD table failured\n", __FILE__, __LINE__);
        path = tablePath(settings::tableFallbackFile, lens, range);
    } else if (!hasTable(file.emplace(path.data()))) {
        file.reset();
        path = tablePath(settings::tableFallbackFile, lens, range);
    }
    std::printf("[==================%s, %d] %s\n", __FILE__, __LINE__, path.data());
    readFile(file ? *file : file.emplace(path.data()), m_tempInfoTab);
    file.reset();
    m_irPara.setADToTempTab(m_tempInfoTab);
    std::printf("[%s, %d] Set all AD table successed\n", __FILE__, __LINE__);
    updateLevelSpanLimits(range);
    return 0;
}

int FPGA::setSystemAdToTempTab() {
    m_tempRange = settings::storedTempRange();
    return setSystemAdToTempTab(m_lenIndex, m_tempRange);
}
