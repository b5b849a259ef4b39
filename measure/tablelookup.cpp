#include "tablelookup.h"

#include "../core/truncate.h"
#include "guard.h"
#include "literal.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace irmcore {

namespace {

/// Entries in use, never more than there are.
int entries(const TempInfoTab& table) { return std::min<int>(table.tempNum, tableCapacity); }

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
    const auto quick = fromTableIfSure(celsius);
    return quick ? *quick : literal::fromTable(celsius);
}

float toTable(float celsius) {
    constexpr double background = backgroundShare * squaredSquare(backgroundKelvin);
    const double surface = squaredSquare(static_cast<double>(celsius) + kelvin);
    // Near the background the difference loses places.
    if (surface > 2.0 * background)
        if (const auto quick = celsiusIfSure((surface - background) * (1.0 / surfaceEmissivity)))
            return *quick;
    return literal::toTable(celsius);
}

int findSegment(const TempInfoTab& table, unsigned int ad) {
    const int used = entries(table);
    if (ad < table.minAD)
        return belowSegments;
    if (ad > table.maxAD)
        return aboveSegments;
    if (used < 2)
        return belowSegments;
    const auto count = low16(ad); // no more than `maxAD`
    const std::uint16_t* const end = table.ad + used;
    if (table.ad[0] <= count) {
        // The first upper end that is not below the count closes its segment, whatever the table:
        // all ends before it are below.
        const auto* const upper = std::find_if(
            table.ad + 1, end, [count](std::uint16_t value) { return value >= count; });
        return upper == end ? aboveSegments : static_cast<int>(upper - table.ad) - 1;
    }
    // Only a table that falls somewhere holds it.
    const auto* const lower =
        std::adjacent_find(table.ad, end, [count](std::uint16_t low, std::uint16_t high) {
            return low <= count && count <= high;
        });
    return lower == end ? belowSegments : static_cast<int>(lower - table.ad);
}

TableCursor::TableCursor(const TempInfoTab& table)
    : m_table(table), m_rises(std::is_sorted(table.ad, table.ad + entries(table))) {}

IrTempStru adToTableTemp(const TempInfoTab& table, unsigned int ad) {
    const TableTemp found = findTemp(table, ad);
    IrTempStru result = readingOf(found);
    result.ad = low16(ad);
    if (found.place == Place::inside)
        result.temp = fromTable(found.celsius);
    return result;
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
