#pragma once

#include "reading.h"
#include "tempinfotab.h"

/// The object temperature model. Pure: values in, values out.
///
/// With W a fourth power of absolute temperature, e the emissivity and tau the air's transmission,
/// the camera sees
///
///     W_seen = e tau W_object + (1 - e) tau W_reflected + (1 - tau) W_air
///
/// so that
///
///     W_object = W_seen / (e tau) - W_reflected (1 - e) / e - W_air (1 - tau) / (tau e)
///
/// Powers and roots are taken in double precision; e tau, 1 - e and 1 - tau are single.
namespace irmcore {

/// What a conversion depends on besides table and shutter term.
struct Model {
    float emiss;      ///< emissivity
    float offset;     ///< added to the object temperature, °C
    float envTemp;    ///< air temperature, °C
    float reflecTemp; ///< temperature of the reflected surroundings, °C
    float trans;      ///< transmission of the air
    int rangeMin;     ///< lower limit of the measuring range, °C
    int rangeMax;     ///< upper limit, °C
    bool calibrating; ///< also report the table temperature of the count itself
};

/// Fourth power of the object's absolute temperature, from the temperature the camera sees in °C.
/// Negative when the object would have to be colder than 0 K; not a number when no radiation of
/// the object reaches the camera (a transmission of 0).
double objectPower(const Model& model, float seen);

/// The temperature in °C that the camera sees of an object at `object` °C. The inverse of the
/// above but for the offset, which is taken off before the power here.
float seenTemp(const Model& model, float object);

/// Marks a computed temperature against the limits and stores it: more than 2 °C outside "L" or
/// "H" with the limit, closer "LE" or "HE", otherwise (also at exactly 2 °C) the status stays.
/// NaN is "L" with the lower limit.
void classify(const Model& model, double celsius, IrTempStru& reading);

/// A count half way to its temperature.
struct Observation {
    IrTempStru reading; ///< with everything that is known by now
    bool settled;       ///< nothing is to be added: the reading is "L" or "H"
    double celsius;     ///< else the object's temperature, without the drift correction
};

/// Count to object temperature, but for the drift correction. `shutterDelta` is the shutter term in
/// AD.
///
/// The sum of count and term is taken modulo 2^32: a small count with a negative term wraps, and
/// reads "H".
Observation observe(const Model& model, const TempInfoTab& table, float shutterDelta,
                    unsigned int ad);

/// The reading of an observation that is not settled. `deltaTemp` is the drift correction in °C
/// that is subtracted.
IrTempStru conclude(const Model& model, const Observation& observation, float deltaTemp);

/// Count to object temperature, both steps in one.
IrTempStru objectTemp(const Model& model, const TempInfoTab& table, float shutterDelta,
                      float deltaTemp, unsigned int ad);

/// Object temperature in °C to the count that the FPGA would deliver. Below -60 °C and for NaN
/// "L", above 4000 °C "H", each with `temp` and nothing else.
IrTempStru objectAd(const Model& model, const TempInfoTab& table, float shutterDelta, float temp);

/// Dew point in °C by the Magnus formula, of air at `envTemp` °C and a relative humidity given as a
/// fraction. -237.3, which the formula approaches as air dries, where it has no finite value.
float dewPoint(float envTemp, float humid);

} // namespace irmcore
