#include "radiometry.h"

#include "../core/truncate.h"
#include "guard.h"
#include "literal.h"
#include "quickreading.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

namespace irmcore {

Terms termsOf(const Model& model) {
    const double reflected = literal::reflectedPower(model);
    const double air = literal::airPower(model);
    Terms terms{model,
                1.0 / static_cast<double>(model.emiss * model.trans),
                reflected + air,
                std::abs(reflected) + std::abs(air),
                static_cast<float>(model.rangeMin),
                static_cast<float>(model.rangeMax)};
    // Not a number, too, where the quick way is closed: it fails every comparison.
    if (!(terms.perSeen > 0.0 && std::abs(model.offset) <= largestShift))
        terms.perSeen = std::numeric_limits<double>::quiet_NaN();
    return terms;
}

bool sameModel(const Model& a, const Model& b) {
    return std::memcmp(&a, &b, offsetof(Model, calibrating)) == 0 && a.calibrating == b.calibrating;
}

float seenTemp(const Model& model, float object) {
    const double body = squaredSquare(static_cast<double>(literal::bodyKelvins(model, object)));
    const double reflected = squaredSquare(static_cast<double>(model.reflecTemp) + kelvin);
    const double air = squaredSquare(static_cast<double>(model.envTemp) + kelvin);
    const auto trans = static_cast<double>(model.trans);
    const auto emiss = static_cast<double>(model.emiss);
    const double sum = body * trans * emiss +
                       reflected * static_cast<double>(1.0F - model.emiss) * trans +
                       air * static_cast<double>(1.0F - model.trans);
    // All terms have one sign, so that no place is lost.
    if (model.emiss >= 0.0F && model.emiss <= 1.0F && model.trans >= 0.0F && model.trans <= 1.0F)
        if (const auto quick = celsiusIfSure(sum))
            return *quick;
    return literal::seenTemp(model, object);
}

void classify(const Model& model, double celsius, IrTempStru& reading) {
    const double low = model.rangeMin;
    const double high = model.rangeMax;
    reading.temp = static_cast<float>(celsius);
    if (celsius < low - 2.0 || std::isnan(celsius)) {
        setStatus(reading, "L");
        reading.temp = static_cast<float>(low);
    } else if (celsius < low && celsius > low - 2.0) {
        setStatus(reading, "LE");
    } else if (celsius > high + 2.0) {
        setStatus(reading, "H");
        reading.temp = static_cast<float>(high);
    } else if (celsius > high && celsius < high + 2.0) {
        setStatus(reading, "HE");
    }
}

IrTempStru objectTemp(const Terms& terms, const TempInfoTab& table, float shutterDelta,
                      float deltaTemp, unsigned int ad) {
    return quickReading(terms, table, shutterDelta, ad, [deltaTemp] { return deltaTemp; });
}

IrTempStru objectAd(const Model& model, const TempInfoTab& table, float shutterDelta, float temp) {
    constexpr float lowest = -60.0F;
    constexpr float highest = 4000.0F;
    IrTempStru result{};
    result.temp = temp;
    if (!(temp >= lowest)) {
        setStatus(result, "L");
        return result;
    }
    if (temp > highest) {
        setStatus(result, "H");
        return result;
    }
    result = tempToTableAd(table, seenTemp(model, temp));
    result.temp = temp;
    if (isOk(result))
        result.ad =
            low16(static_cast<unsigned int>(result.ad) -
                  static_cast<unsigned int>(truncateToInt(static_cast<double>(shutterDelta))));
    return result;
}

float dewPoint(float envTemp, float humid) {
    constexpr double magnusTemp = 237.3;
    constexpr float driest = -237.3F;
    const auto te = static_cast<double>(envTemp);
    const auto saturated =
        static_cast<float>(std::pow(10.0, 7.5 * te / (te + magnusTemp) + 0.66077));
    const float vapour = saturated * humid; // mmHg, as the pressure above
    const double log = std::log10(static_cast<double>(vapour));
    const auto dew = static_cast<float>((0.66077 - log) * magnusTemp / (log - 8.16077));
    return std::isfinite(dew) ? dew : driest;
}

} // namespace irmcore
