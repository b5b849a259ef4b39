// A calibration table file with any content, and the conversions on what it gives.
#include "files.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

using namespace irmfuzz;

constexpr char file[] = "etc/calc_len0_temp0.conf";

/// Whether entries rise, at temperatures that objects have.
bool usable(const TempInfoTab& tab) {
    for (int i = 0; i + 1 < tab.tempNum; ++i)
        if (tab.ad[i + 1] <= tab.ad[i] || tab.temp[i + 1] <= tab.temp[i])
            return false;
    return tab.tempNum >= 2 && tab.temp[0] >= -100 && tab.temp[tab.tempNum - 1] <= 2000;
}

int steepest(const TempInfoTab& tab) { // counts a degree
    int most = 0;
    for (int i = 0; i + 1 < tab.tempNum; ++i)
        most = std::max(most, (tab.ad[i + 1] - tab.ad[i]) / (tab.temp[i + 1] - tab.temp[i]) + 1);
    return most;
}

void requireLoaded(const TempInfoTab& tab) {
    require(tab.tempNum <= irmcore::tableCapacity, "a table has 60 entries at most");
    for (int i = tab.tempNum; i < irmcore::tableCapacity; ++i)
        require(tab.ad[i] == 0 && tab.temp[i] == 0, "entries beyond the count stay empty");
    require(tab.lenTemp == 0 && tab.sensorTemp == 0 && tab.shutterTemp == 0 && tab.reserved == 0,
            "a file holds no temperatures of the camera");
}

/// Any table converts to marked, finite readings; a usable one rises, and leads there and back.
void convert(const TempInfoTab& tab, Digest& out) {
    IRPara table;
    table.setADToTempTab(tab);
    const bool rises = usable(tab);
    // A reading's last digit is 0.0003 °C at 2000 °C.
    const double apart = rises ? 2.0 + 0.0006 * steepest(tab) : 0.0;
    float last = -5000.0F;
    for (unsigned ad = 0; ad <= 0x10400; ad += 0x3F5) {
        const IrTempStru reading = table.calTemp(ad);
        requireReading(reading);
        require(reading.ad == (ad & 0xFFFF), "a reading tells its count");
        out.add(reading);
        require(irmcore::isOk(reading) || std::fabs(reading.temp) == 4001.0F,
                "a count outside the table has a sentinel");
        if (!rises || !irmcore::isOk(reading))
            continue;
        require(reading.temp >= last, "more counts are more degrees");
        last = reading.temp;
        const IrTempStru back = table.calAD(reading.temp);
        const bool atAnEnd = ad <= tab.ad[0] + 1U || ad + 1 >= tab.ad[tab.tempNum - 1];
        require(irmcore::isOk(back) || atAnEnd, "a reading of the table lies in it");
        require(std::fabs(static_cast<double>(back.ad) - ad) <= apart,
                "a reading leads back to its count");
    }
    for (const float celsius : {-500.0F, -60.0F, -20.0F, 0.0F, 30.0F, 149.9F, 400.0F, 3999.0F,
                                1e30F, -1e30F, std::nanf("")}) {
        const IrTempStru count = table.calAD(celsius);
        requireCount(count);
        require(std::isfinite(count.temp) || std::fabs(celsius) > 1e9F,
                "a table temperature is finite");
        const float relative = table.calDeltaAD(celsius);
        require(std::isfinite(relative) || !(std::fabs(celsius) < 1e9F),
                "a count relative to mid-scale is finite");
        out.add(count.ad);
        out.add(relative);
    }
}

} // namespace

std::uint64_t irmfuzz::execute(const std::uint8_t* data, std::size_t size) {
    Fixture& fixture = Fixture::get();
    Host& host = fixture.host;
    Digest out;
    fixture.reset();
    writeFile(file, data, size);

    TempInfoTab tab{};
    require(host.readTable(file, &tab) == 1, "a table is read");
    requireLoaded(tab);
    convert(tab, out);

    // What every loading does besides takes its time: one of two ways to do it.
    if (size % 2 == 0) {
        require(host.setSystemAdToTempTab(0, 0) == 0, "a table is loaded");
        const TempInfoTab& loaded = host.m_tempInfoTab;
        const bool fallback = loaded.tempNum == 0 && loaded.maxAD == 0xFFFF && loaded.minAD == 0;
        // Which of two groups of one name QSettings finds, with a slash of either kind in one of
        // them, depends on what has been asked for before.
        const bool settled =
            std::none_of(data, data + size, [](std::uint8_t c) { return c == '\\' || c == '/'; });
        require(fallback || !settled || std::memcmp(&loaded, &tab, sizeof tab) == 0,
                "the table is that of the file, or of its fallback");
    } else {
        host.updateShutterTemp(true); // corrects every entry
        require(host.checkBiaoDingTab() <= 0, "a table is found good or not");
    }
    requireDerived();
    sweep(*host.m_sysTempHandler, out);
    out.add(host.m_irPara.readShutterDeltaAD());
    return out.value();
}
