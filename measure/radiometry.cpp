#include "radiometry.h"

#include "../core/truncate.h"
#include "tablelookup.h"

#include <cmath>

namespace irmcore {

namespace {

double fourthPower(double celsius) { return std::pow(celsius + kelvin, 4.0); }

/// `ad` plus the term cut to a whole count, modulo 2^32.
unsigned int shifted(unsigned int ad, float shutterDelta) {
    return ad + static_cast<unsigned int>(truncateToInt(static_cast<double>(shutterDelta)));
}

} // namespace

double objectPower(const Model& model, float seen) {
    const float emissTrans = model.emiss * model.trans;
    const double observed = fourthPower(seen) / emissTrans;
    const double reflected = fourthPower(model.reflecTemp) * (1.0F - model.emiss) / model.emiss;
    const double air = fourthPower(model.envTemp) * (1.0F - model.trans) / emissTrans;
    return (observed - reflected) - air;
}

float seenTemp(const Model& model, float object) {
    const auto body = static_cast<float>(object + kelvin - model.offset);
    const double sum = std::pow(static_cast<double>(body), 4.0) * model.trans * model.emiss +
                       fourthPower(model.reflecTemp) * (1.0F - model.emiss) * model.trans +
                       fourthPower(model.envTemp) * (1.0F - model.trans);
    return static_cast<float>(std::pow(static_cast<double>(static_cast<float>(sum)), 0.25) -
                              kelvin);
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

Observation observe(const Model& model, const TempInfoTab& table, float shutterDelta,
                    unsigned int ad) {
    const unsigned int corrected = shifted(ad, shutterDelta);
    Observation result{adToTableTemp(table, corrected), true, 0.0};
    IrTempStru& reading = result.reading;
    reading.ad = low16(ad);
    reading.correctAD = low16(corrected);
    reading.deltaAD = low16(corrected - ad);
    if (model.calibrating)
        reading.biaoDingTemp = adToTableTemp(table, ad).temp;
    if (!isOk(reading))
        return result;

    const double power = objectPower(model, reading.temp);
    if (power < 0.0) {
        setStatus(reading, "L");
        reading.temp = static_cast<float>(model.rangeMin);
        return result;
    }
    result.settled = false;
    result.celsius = std::pow(power, 0.25) - kelvin + static_cast<double>(model.offset);
    return result;
}

IrTempStru conclude(const Model& model, const Observation& observation, float deltaTemp) {
    IrTempStru reading = observation.reading;
    classify(model, observation.celsius - static_cast<double>(deltaTemp), reading);
    return reading;
}

IrTempStru objectTemp(const Model& model, const TempInfoTab& table, float shutterDelta,
                      float deltaTemp, unsigned int ad) {
    const Observation observation = observe(model, table, shutterDelta, ad);
    return observation.settled ? observation.reading : conclude(model, observation, deltaTemp);
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
