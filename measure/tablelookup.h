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
