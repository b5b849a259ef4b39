#pragma once

#include "../core/truncate.h"
#include "radiometry.h"
#include "tablelookup.h"

#include <cmath>

/// The conversions as they are prescribed, with `pow` for every power and root. The library decides
/// by them what its quicker way leaves in doubt; tests and benchmarks hold it against them.
///
/// Pure: values in, values out.
namespace irmcore::literal {

inline double fourthPower(double kelvins) { return std::pow(kelvins, 4.0); }

inline double fourthRoot(double radicand) { return std::pow(radicand, 0.25); }

/// The background's part of what a surface of emissivity 0.95 shows.
inline double background() { return backgroundShare * fourthPower(backgroundKelvin); }

/// Fourth root of `radicand`, rounded to single first, as °C. 0 K where there is no root.
inline float celsiusOf(double radicand) {
    const auto rounded = static_cast<float>(radicand);
    if (!(rounded > 0.0F))
        return static_cast<float>(-kelvin);
    return static_cast<float>(fourthRoot(static_cast<double>(rounded)) - kelvin);
}

/// See `irmcore::fromTable`.
inline float fromTable(float celsius) {
    const double body = fourthPower(static_cast<double>(celsius) + kelvin);
    return celsiusOf(surfaceEmissivity * body + background());
}

/// See `irmcore::toTable`.
inline float toTable(float celsius) {
    const double surface = fourthPower(static_cast<double>(celsius) + kelvin);
    return celsiusOf((surface - background()) / surfaceEmissivity);
}

/// See `irmcore::findTemp`.
inline TableTemp findTemp(const TempInfoTab& table, unsigned int ad) {
    if (ad < table.minAD)
        return {Place::below, belowTable};
    if (ad > table.maxAD)
        return {Place::above, aboveTable};
    const int entries = table.tempNum < tableCapacity ? table.tempNum : tableCapacity;
    for (int i = 0; i + 1 < entries; ++i)
        if (ad >= table.ad[i] && ad <= table.ad[i + 1]) {
            const std::int64_t product = (std::int64_t{ad} - table.ad[i]) *
                                         (std::int64_t{table.temp[i + 1]} - table.temp[i]);
            const int run = table.ad[i + 1] - table.ad[i];
            const float rise =
                run == 0 ? 0.0F : static_cast<float>(product) / static_cast<float>(run);
            return {Place::inside, rise + static_cast<float>(table.temp[i])};
        }
    if (entries < 2 || ad < table.ad[0])
        return {Place::below, belowTable};
    return {Place::above, aboveTable};
}

/// What the surroundings reflected by the object take from its fourth power.
inline double reflectedPower(const Model& model) {
    return fourthPower(static_cast<double>(model.reflecTemp) + kelvin) * (1.0F - model.emiss) /
           model.emiss;
}

/// What the air takes from it.
inline double airPower(const Model& model) {
    return fourthPower(static_cast<double>(model.envTemp) + kelvin) * (1.0F - model.trans) /
           (model.trans * model.emiss);
}

/// What the camera sees as the object would have to send it out, were there neither reflection nor
/// radiation of the air, K^4; from the temperature seen in °C.
inline double observedPower(const Model& model, float seen) {
    return fourthPower(static_cast<double>(seen) + kelvin) / (model.emiss * model.trans);
}

/// Fourth power of the object's absolute temperature, from the temperature the camera sees in °C.
/// Negative when the object would have to be colder than 0 K; not a number when no radiation of
/// the object reaches the camera (a transmission of 0).
inline double objectPower(const Model& model, float seen) {
    return (observedPower(model, seen) - reflectedPower(model)) - airPower(model);
}

/// The temperature in °C of a fourth power.
inline double bodyCelsius(double power) { return fourthRoot(power) - kelvin; }

/// The object's temperature in °C from its fourth power, without the drift correction.
inline double objectCelsius(const Model& model, double power) {
    return bodyCelsius(power) + static_cast<double>(model.offset);
}

/// The object's temperature in K, without the offset.
inline float bodyKelvins(const Model& model, float object) {
    return static_cast<float>(object + kelvin - model.offset);
}

/// See `irmcore::seenTemp`.
inline float seenTemp(const Model& model, float object) {
    const double sum =
        fourthPower(static_cast<double>(bodyKelvins(model, object))) * model.trans * model.emiss +
        fourthPower(static_cast<double>(model.reflecTemp) + kelvin) * (1.0F - model.emiss) *
            model.trans +
        fourthPower(static_cast<double>(model.envTemp) + kelvin) * (1.0F - model.trans);
    return static_cast<float>(fourthRoot(static_cast<double>(static_cast<float>(sum))) - kelvin);
}

/// Finishes a reading whose temperature is the one seen. `drift()` gives the drift correction in
/// °C; it is asked for only if it plays a part.
template <typename Drift>
void finish(const Model& model, IrTempStru& reading, Drift drift) {
    const double power = objectPower(model, reading.temp);
    if (power < 0.0) {
        setStatus(reading, "L");
        reading.temp = static_cast<float>(model.rangeMin);
        return;
    }
    classify(model, objectCelsius(model, power) - static_cast<double>(drift()), reading);
}

/// See `irmcore::objectTemp`.
inline IrTempStru objectTemp(const Model& model, const TempInfoTab& table, float shutterDelta,
                             float deltaTemp, unsigned int ad) {
    const unsigned int corrected =
        ad + static_cast<unsigned int>(truncateToInt(static_cast<double>(shutterDelta)));
    const TableTemp found = literal::findTemp(table, corrected);
    IrTempStru reading = readingOf(found);
    reading.ad = low16(ad);
    reading.correctAD = low16(corrected);
    reading.deltaAD = low16(corrected - ad);
    if (model.calibrating) {
        const TableTemp plain = literal::findTemp(table, ad);
        reading.biaoDingTemp =
            plain.place == Place::inside ? fromTable(plain.celsius) : plain.celsius;
    }
    if (found.place != Place::inside)
        return reading;
    reading.temp = fromTable(found.celsius);
    finish(model, reading, [deltaTemp] { return deltaTemp; });
    return reading;
}

} // namespace irmcore::literal
