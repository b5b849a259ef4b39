#pragma once

#include "../core/truncate.h"
#include "guard.h"
#include "literal.h"

#include <cmath>
#include <limits>
#include <optional>

/// The path of every reading. Pure but for what `drift` does; the results are those of
/// `literal::objectTemp`, bit by bit.
namespace irmcore {

/// Offset and drift correction up to which the bound below holds, °C.
inline constexpr float largestShift = 1024.0F;

/// Bound of the error of a quick object temperature in °C, as a power of 2: a root below 2^11 K is
/// within 2^-47 of the prescribed one (a quarter of 178 u from its power, see below, 16 u of its
/// own and 2 u of `pow`), and each of three sums on either side rounds a number below 2^12 by at
/// most 2^-42.
inline constexpr int objectErrorExponent = -35;

/// The object's temperature in °C without the drift correction, from the temperature the camera
/// sees, if the bound above holds for it; else NaN.
inline double observedIfClose(const Terms& terms, float seen) {
    // With u = 2^-53: the fourth power is within 3 u and its product within 5 u, the prescribed
    // ones within 2 u and 3 u; the differences and the sum add one each. While no term is above
    // sixteen times the result, the result is within 178 u of the prescribed one and its root
    // within a quarter of that.
    constexpr double most = 16.0;
    constexpr double highest = 17592186044416.0; // (2^11 K)^4
    const double observed = squaredSquare(static_cast<double>(seen) + kelvin) * terms.perSeen;
    const double power = observed - terms.surroundings;
    const double bound = power * most;
    if (!(power >= 1.0 && power < highest && observed < bound && terms.magnitude < bound))
        return std::numeric_limits<double>::quiet_NaN();
    return fourthRoot(power) - kelvin + static_cast<double>(terms.of.offset);
}

/// What is left of an observed temperature without the drift correction, as a single, if the bound
/// above leaves no other.
inline std::optional<float> roundedIfSure(double observed, float deltaTemp) {
    const double celsius = observed - static_cast<double>(deltaTemp);
    if (std::abs(deltaTemp) <= largestShift && roundsAlikeWithin(celsius, objectErrorExponent))
        return static_cast<float>(celsius);
    return std::nullopt;
}

/// Finishes a reading marked "OK" with an observed temperature; false, and the reading as it was,
/// when its error leaves a choice.
inline bool concludeIfSure(const Terms& terms, double observed, float deltaTemp,
                           IrTempStru& reading) {
    const auto celsius = roundedIfSure(observed, deltaTemp);
    if (!celsius)
        return false;
    if (*celsius > terms.rangeMin && *celsius < terms.rangeMax) {
        reading.temp = *celsius;
        return true;
    }
    // Numbers that round to one single lie on one side of any limit that is not that single.
    const auto at = [rounded = static_cast<double>(*celsius)](double limit) {
        return rounded == limit;
    };
    const double low = terms.of.rangeMin;
    const double high = terms.of.rangeMax;
    if (at(low) || at(low - 2.0) || at(high) || at(high + 2.0))
        return false;
    classify(terms.of, observed - static_cast<double>(deltaTemp), reading);
    return true;
}

/// Count to object temperature, see `objectTemp`. `drift()` gives the drift correction in °C; it is
/// asked for once at most, and not when the reading is "L" or "H" without it.
template <typename Drift>
IrTempStru quickReading(const Terms& terms, const TempInfoTab& table, float shutterDelta,
                        unsigned int ad, Drift drift) {
    const int shift = truncateToInt(static_cast<double>(shutterDelta));
    const unsigned int corrected = ad + static_cast<unsigned int>(shift);
    const TableTemp found = findTemp(table, corrected);
    IrTempStru reading = readingOf(found);
    reading.ad = low16(ad);
    reading.correctAD = low16(corrected);
    reading.deltaAD = low16(corrected - ad);
    if (terms.of.calibrating)
        reading.biaoDingTemp = adToTableTemp(table, ad).temp;
    if (found.place != Place::inside)
        return reading;

    const auto seen = fromTableIfSure(found.celsius);
    reading.temp = seen ? *seen : literal::fromTable(found.celsius);
    const double observed = observedIfClose(terms, reading.temp);
    if (std::isnan(observed)) {
        literal::finish(terms.of, reading, drift);
        return reading;
    }
    const float deltaTemp = drift();
    if (!concludeIfSure(terms, observed, deltaTemp, reading))
        literal::finish(terms.of, reading, [deltaTemp] { return deltaTemp; });
    return reading;
}

} // namespace irmcore
