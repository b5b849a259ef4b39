#pragma once

/// Transmission of the air between camera and object. Pure: values in, values out.
///
/// The product of two absorption curves, each straight between its breakpoints: water vapour over
/// the precipitable water of the path, carbon dioxide over the path's length.
namespace irmcore {

/// The two breakpoints that enclose a value; equal when it lies on one.
struct Bracket {
    int lower;
    int upper;
};

/// Where `x` lies among the breakpoints 0, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 200: (0, 0) below
/// 0 and for NaN, (9, 10) above 200, so that the last segment goes on.
Bracket bracketOf(float x);

/// Breakpoint 0 to 10; an index outside gives the nearer end.
double breakpoint(int index);

/// Transmission of water vapour for precipitable water in mm, 0 to 1.
float waterTransmission(float water);

/// Transmission of carbon dioxide for a path in km, 0 to 1.
float carbonDioxideTransmission(float km);

/// Precipitable water in mm on `dist` metres of air at `envTemp` °C and a relative humidity given
/// as a fraction.
float precipitableWater(float envTemp, float humid, int dist);

/// The path of carbon dioxide in km, on `dist` metres of air.
constexpr float carbonDioxidePath(int dist) { return static_cast<float>(dist) / 1000.0F; }

/// Transmission of `dist` metres of air at `envTemp` °C and a relative humidity given as a
/// fraction. The saturated density is that of the whole degree, -49 to 49 °C; beyond, and for
/// NaN, the nearer end (NaN: the lower).
float transmission(float envTemp, float humid, int dist);

} // namespace irmcore
