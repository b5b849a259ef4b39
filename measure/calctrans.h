#pragma once

/// The atmospheric transmission model, the product of the absorption of water vapour and of carbon
/// dioxide, each straight between breakpoints. It has no data.
///
/// Thread-safe.
class [[gnu::visibility("default")]] CalcTrans {
public:
    /// Transmission, 0 to 1, of `dist` whole metres of air at `envTemp` °C and a relative humidity
    /// of `humid` (a fraction).
    float getTrans(float envTemp, float humid, int dist);
    /// Transmission of `water` mm of precipitable water.
    float calcH2OTrans(float water);
    /// Transmission of the carbon dioxide in `km` kilometres of air.
    float calcCO2Trans(float km);
    /// Sets the indices of the two breakpoints that enclose `x`. NaN leaves both as they are.
    void findOrderTable(int& lower, int& upper, float x);
    /// Breakpoint 0 to 10; an index outside gives the nearer end.
    double getDistanceFromLine(int index);
};
