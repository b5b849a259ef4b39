#pragma once

/// @file
/// The record of a calibration table.

#include <cstddef>
#include <cstdint>

/// One calibration table: what count a black body of a given temperature makes.
///
/// A usable table has at least two entries, with counts and temperatures rising from entry to
/// entry. What other tables give is defined too, see `irmcore::adToTableTemp`.
struct TempInfoTab {
    float lenTemp;          ///< lens temperature, °C
    float sensorTemp;       ///< detector temperature, °C
    float shutterTemp;      ///< shutter temperature, °C
    std::uint16_t maxAD;    ///< highest count that is converted
    std::uint16_t minAD;    ///< lowest count that is converted
    std::uint16_t reserved; ///< copied, never interpreted
    std::uint16_t tempNum;  ///< entries in use, at most 60
    std::int16_t baseTemp;  ///< °C; kept for the host, used by no conversion
    std::uint16_t ad[60];   ///< counts; entry i belongs to `temp[i]`
    std::int16_t temp[60];  ///< whole °C
};

// Hosts share this layout.
static_assert(sizeof(TempInfoTab) == 264 && offsetof(TempInfoTab, maxAD) == 12 &&
              offsetof(TempInfoTab, minAD) == 14 && offsetof(TempInfoTab, reserved) == 16 &&
              offsetof(TempInfoTab, tempNum) == 18 && offsetof(TempInfoTab, baseTemp) == 20 &&
              offsetof(TempInfoTab, ad) == 22 && offsetof(TempInfoTab, temp) == 142);

namespace irmcore {

/// Entries that a `TempInfoTab` holds at most.
inline constexpr int tableCapacity = 60;

/// Mid-scale of the detector's counts; tables are relative to it.
inline constexpr float midScale = 32768.0F;

} // namespace irmcore
