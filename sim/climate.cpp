#include "climate.h"

#include <cmath>

namespace irmsim {

namespace {

constexpr double largestTemperature = 16383;
constexpr unsigned largestHumidity = 4095;

/// Relative humidity in percent of a raw word.
double percent(double celsius, unsigned raw) {
    const double so = raw;
    const double linear = -4.0 + 0.0405 * so - 2.8e-6 * so * so;
    return (celsius - 25.0) * (0.01 + 8e-5 * so) + linear;
}

} // namespace

std::uint16_t climateTemperatureWord(double celsius) {
    const double steps = std::round((celsius + 39.66) / 0.01);
    return static_cast<std::uint16_t>(std::fmin(std::fmax(steps, 0.0), largestTemperature));
}

std::uint16_t climateHumidityWord(double celsius, double humidity) {
    const double wanted = humidity * 100.0;
    // The conversion rises with the word: find the two words around the wanted value.
    unsigned low = 0;
    unsigned high = largestHumidity;
    while (high - low > 1) {
        const unsigned middle = (low + high) / 2;
        (percent(celsius, middle) <= wanted ? low : high) = middle;
    }
    const bool lowIsNearer = wanted - percent(celsius, low) <= percent(celsius, high) - wanted;
    return static_cast<std::uint16_t>(lowIsNearer ? low : high);
}

} // namespace irmsim
