#pragma once

#include "reading.h"
#include "tempinfotab.h"

/// Conversions between counts and table temperatures. Pure: values in, values out.
///
/// Table temperatures are those of a black body. A reading is reported as a surface of emissivity
/// 0.95 before a background of 25 °C, and the inverse is used on the way back. With kelvin:
///
///     fromTable(t) = ((0.95 (t + 273.15)^4 + 0.05 298.15^4)^(1/4)) - 273.15
///     toTable(T)   = (((T + 273.15)^4 - 0.05 298.15^4) / 0.95)^(1/4) - 273.15
///
/// in double precision, the radicand and the result rounded to single.
namespace irmcore {

/// The background of those formulas, K, and the shares.
inline constexpr double backgroundKelvin = 298.15;
inline constexpr double surfaceEmissivity = 0.95;
inline constexpr double backgroundShare = 0.05;

/// 0 °C in kelvin.
inline constexpr double kelvin = 273.15;

/// Sentinel temperatures of a count outside the table, far from any that can be measured.
inline constexpr float belowTable = -4001.0F;
inline constexpr float aboveTable = 4001.0F;

/// Table temperature to reported temperature, °C.
float fromTable(float celsius);

/// Reported temperature to table temperature, °C. A temperature too cold to come from any table
/// (below some -132 °C) and NaN give -273.15.
float toTable(float celsius);

/// Where a count lies.
enum class Place { below, inside, above };

/// A count's table temperature.
struct TableTemp {
    Place place;
    float celsius; ///< outside the table its sentinel
};

/// Instead of a segment, for counts that no segment holds.
inline constexpr int belowSegments = -1;
inline constexpr int aboveSegments = -2;

/// The segment of a count: that from this entry to the next, or one of the above. The cases are
/// those of `adToTableTemp`.
int findSegment(const TempInfoTab& table, unsigned int ad);

/// The table temperature of a count in its segment.
inline TableTemp tempIn(const TempInfoTab& table, int segment, unsigned int ad) {
    if (segment < 0)
        return segment == belowSegments ? TableTemp{Place::below, belowTable}
                                        : TableTemp{Place::above, aboveTable};
    const int low = table.ad[segment];
    const int run = table.ad[segment + 1] - low;
    const int rise = table.temp[segment + 1] - table.temp[segment];
    // 64 bits: a hostile table's product does not fit 32.
    const auto product = static_cast<float>(std::int64_t{static_cast<int>(ad) - low} * rise);
    const float above = run == 0 ? 0.0F : product / static_cast<float>(run);
    return {Place::inside, above + static_cast<float>(table.temp[segment])};
}

/// Looks a count up in the table.
inline TableTemp findTemp(const TempInfoTab& table, unsigned int ad) {
    return tempIn(table, findSegment(table, ad), ad);
}

/// Looks up counts of which neighbours often share a segment: the last one is tried first.
class TableCursor {
public:
    /// `table` must outlive the object.
    explicit TableCursor(const TempInfoTab& table);

    /// What `findTemp` gives.
    TableTemp find(unsigned int ad) {
        // In a rising table the segments before this one end below the count.
        if (!(m_rises && m_segment >= 0 && ad > m_table.ad[m_segment] &&
              ad <= m_table.ad[m_segment + 1] && ad >= m_table.minAD && ad <= m_table.maxAD))
            m_segment = findSegment(m_table, ad);
        return tempIn(m_table, m_segment, ad);
    }

private:
    const TempInfoTab& m_table;
    bool m_rises;
    int m_segment = belowSegments;
};

/// A reading with the status and the temperature of a table's look-up, the rest 0.
constexpr IrTempStru readingOf(const TableTemp& found) {
    IrTempStru reading{};
    if (found.place == Place::inside)
        setStatus(reading, "OK");
    else if (found.place == Place::below)
        setStatus(reading, "L");
    else
        setStatus(reading, "H");
    reading.temp = found.celsius;
    return reading;
}

/// Count to reported temperature: status, `ad` (low 16 bits of the argument) and `temp` of the
/// result, the rest 0.
///
/// "L" with -4001 below `minAD`, "H" with 4001 above `maxAD`, else the first segment that holds
/// the count, ends included. A count that no segment holds is "L" if it lies below the first
/// entry or the table has fewer than two entries, and "H" otherwise. In a segment whose ends have
/// one count the lower end's temperature holds.
IrTempStru adToTableTemp(const TempInfoTab& table, unsigned int ad);

/// Reported temperature to count: status, `ad` and `temp` of the result, `temp` being the table
/// temperature. Outside the table "L" or "H" with the table's end. A temperature that no segment
/// holds is "L" with the first entry, as are NaN and any in a table without entries. In a segment
/// whose ends have one temperature the lower end's count holds.
IrTempStru tempToTableAd(const TempInfoTab& table, float temp);

/// The count of a reported temperature relative to mid-scale, not cut to a whole number. Outside
/// the table the line through (30 °C, mid-scale) and the first entry goes on; where that has no
/// slope (the first entry is at 30 °C) the result is 0.
float tableDeltaAd(const TempInfoTab& table, float temp);

} // namespace irmcore
