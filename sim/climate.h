#pragma once

#include <cstdint>

namespace irmsim {

/// Raw words of the board's SHT11 climate sensor, at 3.5 V: the inverse of its maker's conversion
/// to °C and relative humidity, to the nearest step. 14 bits of temperature, 12 of humidity.
/// Reentrant.
std::uint16_t climateTemperatureWord(double celsius);
std::uint16_t climateHumidityWord(double celsius, double humidity); ///< `humidity` a fraction

} // namespace irmsim
