#include "tablelookup.h"

#include "../core/truncate.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace irmcore {

namespace {

constexpr double backgroundKelvin = 298.15;
constexpr double surfaceEmissivity = 0.95;
constexpr double backgroundShare = 0.05;

/// Entries in use, never more than there are.
int entries(const TempInfoTab& table) { return std::min<int>(table.tempNum, tableCapacity); }

/// Fourth root of `radicand`, rounded to single first, as °C. 0 K where there is no root.
float fromFourthPower(double radicand) {
    const auto rounded = static_cast<float>(radicand);
    if (!(rounded > 0.0F))
        return static_cast<float>(-kelvin);
    return static_cast<float>(std::pow(static_cast<double>(rounded), 0.25) - kelvin);
}

/// The first segment whose temperatures enclose `t`, ends included.
std::optional<int> segmentOfTemp(const TempInfoTab& table, float t) {
    for (int i = 0; i + 1 < entries(table); ++i)
        if (static_cast<float>(table.temp[i]) <= t && t <= static_cast<float>(table.temp[i + 1]))
            return i;
    return std::nullopt;
}

/// The count at `t` in segment `i`, in single precision.
float interpolateAd(const TempInfoTab& table, int i, float t) {
    const auto rise = static_cast<float>(table.ad[i + 1] - table.ad[i]);
    const auto run = static_cast<float>(table.temp[i + 1] - table.temp[i]);
    const auto low = static_cast<float>(table.ad[i]);
    if (run == 0.0F)
        return low;
    return rise * (t - static_cast<float>(table.temp[i])) / run + low;
}

} // namespace

float fromTable(float celsius) {
    const double body = std::pow(static_cast<double>(celsius) + kelvin, 4.0);
    return fromFourthPower(surfaceEmissivity * body +
                           backgroundShare * std::pow(backgroundKelvin, 4.0));
}

float toTable(float celsius) {
    const double surface = std::pow(static_cast<double>(celsius) + kelvin, 4.0);
    return fromFourthPower((surface - backgroundShare * std::pow(backgroundKelvin, 4.0)) /
                           surfaceEmissivity);
}

IrTempStru adToTableTemp(const TempInfoTab& table, unsigned int ad) {
    IrTempStru result{};
    result.ad = low16(ad);
    const auto outside = [&result](bool below) {
        if (below)
            setStatus(result, "L");
        else
            setStatus(result, "H");
        result.temp = below ? belowTable : aboveTable;
        return result;
    };
    if (ad < table.minAD)
        return outside(true);
    if (ad > table.maxAD)
        return outside(false);

    const int last = entries(table) - 1;
    for (int i = 0; i < last; ++i) {
        if (ad < table.ad[i] || ad > table.ad[i + 1])
            continue;
        // 64 bits: a hostile table's product does not fit 32.
        const std::int64_t product =
            (std::int64_t{ad} - table.ad[i]) * (std::int64_t{table.temp[i + 1]} - table.temp[i]);
        const int run = table.ad[i + 1] - table.ad[i];
        const float above = run == 0 ? 0.0F : static_cast<float>(product) / static_cast<float>(run);
        setStatus(result, "OK");
        result.temp = fromTable(above + static_cast<float>(table.temp[i]));
        return result;
    }
    return outside(last < 1 || ad < table.ad[0]);
}

IrTempStru tempToTableAd(const TempInfoTab& table, float temp) {
    const float t = toTable(temp);
    const int last = entries(table) - 1;
    IrTempStru result{};
    result.temp = t;
    if (last >= 0 && !std::isnan(temp) && t >= static_cast<float>(table.temp[0])) {
        if (t > static_cast<float>(table.temp[last])) {
            setStatus(result, "H");
            result.ad = table.ad[last];
            return result;
        }
        if (const auto i = segmentOfTemp(table, t)) {
            setStatus(result, "OK");
            result.ad = low16(truncateToUnsigned(static_cast<double>(interpolateAd(table, *i, t))));
            return result;
        }
    }
    setStatus(result, "L");
    result.ad = table.ad[0];
    return result;
}

float tableDeltaAd(const TempInfoTab& table, float temp) {
    constexpr int lineTemp = 30; // where every table has mid-scale
    const float t = toTable(temp);
    const int last = entries(table) - 1;
    if (last >= 0 && t >= static_cast<float>(table.temp[0]) &&
        t <= static_cast<float>(table.temp[last]))
        if (const auto i = segmentOfTemp(table, t))
            return interpolateAd(table, *i, t) - midScale;
    if (table.temp[0] == lineTemp)
        return 0.0F;
    return static_cast<float>(table.ad[0] - 32768) * (t - static_cast<float>(lineTemp)) /
           static_cast<float>(table.temp[0] - lineTemp);
}

} // namespace irmcore
