#include "verdict.h"

#include <cmath>
#include <string_view>

namespace irmcore::app {

namespace {

/// The status that a temperature deserves.
std::string_view deserved(double celsius, const RangeLimits& range) {
    constexpr double edge = 2.0; // °C that are still reported outside the range
    if (celsius < range.min)
        return celsius < range.min - edge ? "L" : "LE";
    if (celsius > range.max)
        return celsius > range.max + edge ? "H" : "HE";
    return "OK";
}

} // namespace

bool isRight(const Reading& reading, const RangeLimits& range, double bound) {
    const std::string_view status = reading.value.status;
    if (status != deserved(reading.truth, range) &&
        status != deserved(reading.truth - bound, range) &&
        status != deserved(reading.truth + bound, range))
        return false;
    const bool carriesTemperature = status != "L" && status != "H";
    return !carriesTemperature ||
           std::abs(static_cast<double>(reading.value.temp) - reading.truth) <= bound;
}

} // namespace irmcore::app
