#pragma once

#include "model.h"
#include "reading.h"
#include "tablelookup.h"
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

/// The terms of a model.
Terms termsOf(const Model& model);

/// Whether two models are the same, bit by bit.
bool sameModel(const Model& a, const Model& b);

/// The temperature in °C that the camera sees of an object at `object` °C. The inverse of the
/// above but for the offset, which is taken off before the power here.
float seenTemp(const Model& model, float object);

/// Marks a computed temperature against the limits and stores it: more than 2 °C outside "L" or
/// "H" with the limit, closer "LE" or "HE", otherwise (also at exactly 2 °C) the status stays.
/// NaN is "L" with the lower limit.
void classify(const Model& model, double celsius, IrTempStru& reading);

/// Count to object temperature. `shutterDelta` is the shutter term in AD, `deltaTemp` the drift
/// correction in °C that is subtracted.
///
/// The sum of count and term is taken modulo 2^32: a small count with a negative term wraps, and
/// reads "H".
IrTempStru objectTemp(const Terms& terms, const TempInfoTab& table, float shutterDelta,
                      float deltaTemp, unsigned int ad);

/// Object temperature in °C to the count that the FPGA would deliver. Below -60 °C and for NaN
/// "L", above 4000 °C "H", each with `temp` and nothing else.
IrTempStru objectAd(const Model& model, const TempInfoTab& table, float shutterDelta, float temp);

/// Dew point in °C by the Magnus formula, of air at `envTemp` °C and a relative humidity given as a
/// fraction. -237.3, which the formula approaches as air dries, where it has no finite value.
float dewPoint(float envTemp, float humid);

} // namespace irmcore
