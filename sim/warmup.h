#pragma once

namespace irmsim {

/// A warm-up of first order: every time constant the distance to the end shrinks to 1/e.
/// Temperatures in °C.
struct WarmUp {
    double shutterStart = 26.5;
    double shutterEnd = 45.0;
    double sensorStart = 26.5;
    double sensorEnd = 45.0;
    double timeConstant = 600.0; ///< s; what is not above 0 is at its end at once

    /// Shutter and sensor alike.
    static WarmUp inside(double start, double end, double timeConstant = 600.0) {
        return {start, end, start, end, timeConstant};
    }

    /// Temperatures after so many seconds.
    double shutterAt(double seconds) const;
    double sensorAt(double seconds) const;
};

} // namespace irmsim
