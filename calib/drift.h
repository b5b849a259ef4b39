#pragma once

#include <cstdint>

/// The drift of counts with the camera's inside temperature (the mean of shutter and sensor
/// temperature). Pure: values in, values out.
///
/// Calibration tables hold counts taken at a reference inside temperature, 26.5 °C in range 0 and
/// 43.0 °C in the others. Per degree away from it the count of a scene at t °C moves by
///
///     range 0:  s(t) = (2.131 t² + 369.36 t - 12861) / 1000
///     others:   s(t) = (0.3619 t² + 88.36 t - 3026.6) / 1000
///
/// computed in double precision, rounded to single. The corrections are in double precision in
/// range 0 and in single in the others, cut toward zero to an unsigned number (0 when negative),
/// low 16 bits kept.
namespace irmcore {

/// Counts per degree of inside temperature, of a scene at `celsius`.
float driftSlope(int range, int celsius);

/// A count taken at the inside temperature `inside`, brought to the reference. Above 160 °C in
/// range 0, and 410 °C in the others, the slope does not hold and the count is returned as it is.
std::uint16_t toReference(int range, float inside, int celsius, std::uint16_t ad);

/// A count of the reference, brought to the inside temperature `inside`; at any `celsius`.
std::uint16_t fromReference(int range, float inside, int celsius, std::uint16_t ad);

} // namespace irmcore
