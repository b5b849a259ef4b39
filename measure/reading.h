#pragma once

/// @file
/// Readings and measurement parameters.

#include <cstddef>
#include <cstdint>

/// One reading: a temperature, the count it belongs to, and whether it can be used.
///
/// Statuses, NUL-terminated: "OK", converted; "LE" and "HE", up to 2 °C below or above the
/// measuring range, `temp` is the computed temperature; "L" and "H", further out or outside the
/// calibration table, `temp` is the range's limit or the table's sentinel -4001 or 4001; "NULL",
/// the FPGA did not take the position or deliver the point, and only `status` was written.
/// Only "OK" marks a temperature to rely on.
struct IrTempStru {
    char status[6];          ///< NUL-terminated, see above
    std::uint16_t ad;        ///< the count the reading was made from, or computed for it
    float temp;              ///< °C
    std::uint16_t correctAD; ///< the count after the shutter term was added
    std::uint16_t deltaAD;   ///< the shutter term that was added, modulo 2^16
    float biaoDingTemp;      ///< in calibration mode the table temperature, in °C, of the count
                             ///< before the shutter term was added, otherwise 0
};

/// The user's measurement parameters.
struct TempSetup {
    float emiss;            ///< emissivity of the object, 0.001 to 1.001
    float dist;             ///< distance to the object in metres, 0 to 100000
    float offset;           ///< added to every temperature, °C, -100.001 to 100.001
    std::uint32_t reserved; ///< carried along, never interpreted
};

/// The readings of one measurement area.
struct Area_Temp {
    IrTempStru tempMax; ///< of the area's highest count
    IrTempStru tempMin; ///< of its lowest
    IrTempStru tempAvg; ///< of its mean count, which is not the mean of the temperatures
};

/// Which measurement parameters a query uses. Any value but 0 means `PARA_SYSTEM`.
enum ParaMode_t : int {
    PARA_CUSTOM = 0, ///< the parameters that come with the query
    PARA_SYSTEM = 1, ///< the camera's own
};

// Hosts share these layouts.
static_assert(sizeof(IrTempStru) == 20 && offsetof(IrTempStru, ad) == 6 &&
              offsetof(IrTempStru, temp) == 8 && offsetof(IrTempStru, correctAD) == 12 &&
              offsetof(IrTempStru, deltaAD) == 14 && offsetof(IrTempStru, biaoDingTemp) == 16);
static_assert(sizeof(TempSetup) == 16 && offsetof(TempSetup, dist) == 4 &&
              offsetof(TempSetup, offset) == 8 && offsetof(TempSetup, reserved) == 12);
static_assert(sizeof(Area_Temp) == 60 && offsetof(Area_Temp, tempMin) == 20 &&
              offsetof(Area_Temp, tempAvg) == 40);
static_assert(sizeof(ParaMode_t) == 4);

namespace irmcore {

/// Writes a status text of at most five letters.
template <std::size_t N>
constexpr void setStatus(IrTempStru& reading, const char (&text)[N]) {
    static_assert(N <= sizeof(reading.status), "a status has at most five letters");
    for (std::size_t i = 0; i < sizeof(reading.status); ++i)
        reading.status[i] = i < N ? text[i] : '\0';
}

/// Whether the reading is marked "OK".
constexpr bool isOk(const IrTempStru& reading) {
    return reading.status[0] == 'O' && reading.status[1] == 'K' && reading.status[2] == '\0';
}

} // namespace irmcore
