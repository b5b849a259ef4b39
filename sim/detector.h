#pragma once

#include <cstdint>
#include <vector>

namespace irmsim {

/// The physical truth about the object and the air before it, which may differ from what the host
/// believes.
struct Surroundings {
    double emissivity = 0.95;  ///< of the object, above 0 to 1
    double distance = 5.0;     ///< m
    double humidity = 0.6;     ///< relative, a fraction
    double envTemp = 25.0;     ///< of the air, °C
    double reflectedTemp = 25; ///< of what the object mirrors, °C
};

/// How the counts move with the sensor temperature after a shutter calibration.
enum class DriftLaw {
    tableSpace, ///< the scene seems warmer by so many degrees
    offset,     ///< every pixel gains the same number of counts
};

/// The detector: object temperature -> raw AD, in double precision. A value, without a clock: its
/// temperatures are what was last set. Reentrant.
///
///     tau    = air(envTemp, humidity, distance)
///     W      = e·tau·To⁴ + (1-e)·tau·Tr⁴ + (1-tau)·Te⁴                     kelvin
///     t      = ((W - 0.05·298.15⁴) / 0.95)^(1/4) - 273.15                  table space
///     C(t)   = 32768 + g·(P(t) - P(30)) / P'(30),  P(t) = 1 / (exp(1430/(t + 273.15)) - 1)
///     A(t,T) = C(t) + s(t)·(T - Tref),  T = (shutter + sensor) / 2
///     d      = D(sensor) - D(s0),  D(s) = 4.8·min(s, 31) + 1.6·max(s - 31, 0)
///     AD     = 32768 + A(t + d, T) - A(G(m(T0)·T0), T) + noise
///
/// G is table space of an emissivity of 0.95 before 25 °C; T0 and s0 are the inside and sensor
/// temperatures of the last calibration; m is 1 or, with the modify slope, 1 + 0.0004·(T - 26.5).
class Detector {
public:
    /// Range 0, lens 0, at its reference inside temperature and calibrated there, no noise.
    Detector();

    /// Range 0, or any other for the high range. Temperatures and calibration stay.
    void setRange(int range);
    /// Lens index. Lens 1 lets a tenth less through; all others are alike.
    void setLens(int lens);
    /// Shutter and sensor temperature, °C, without calibrating.
    void setTemperatures(double shutter, double sensor);
    /// A shutter calibration at the present temperatures.
    void calibrate();
    /// Switches the modify slope. It takes effect at once, for the last calibration too.
    void setModifySlope(bool on);
    void setDriftLaw(DriftLaw law);
    void setSurroundings(const Surroundings& truth);
    /// Standard deviation in AD (0: none) and seed of the noise.
    void setNoise(double sigmaAd, std::uint64_t seed);
    /// While the shutter is closed every pixel is 32768.
    void setShutterClosed(bool closed);

    int range() const { return m_range; }
    int lens() const { return m_lens; }
    double shutterTemp() const { return m_shutter; }
    double sensorTemp() const { return m_sensor; }
    double noise() const { return m_sigma; } ///< AD
    bool shutterClosed() const { return m_closed; }
    const Surroundings& surroundings() const { return m_truth; }
    double transmission() const { return m_tau; } ///< of the air, 0 to 1

    /// Reference inside temperature of the range, °C: 26.5 in range 0, 43.0 in the others.
    double referenceTemp() const;
    /// C(t), AD: what a calibration table measured on this detector holds at `t` °C.
    double curve(double t) const;
    /// The modify factor m at an inside temperature in °C.
    double modifyFactor(double insideTemp) const;

    /// AD of an object at `celsius`, neither rounded nor cut nor noisy, shutter open.
    double counts(double celsius) const;
    /// The pixel as the FPGA delivers it: rounded, with noise, cut to 0..65535.
    std::uint16_t raw(double celsius, std::uint64_t frame, std::uint32_t pixel) const;
    /// `raw` for counts already worked out.
    std::uint16_t rawOf(double counts, std::uint64_t frame, std::uint32_t pixel) const;
    /// `rawOf` for all pixels of a frame; `out` has the size of `counts`.
    void rawFrame(const std::vector<double>& counts, std::uint64_t frame,
                  std::vector<std::uint16_t>& out) const;
    /// The object temperature in °C that gives these counts, within -120..1500; beyond, the bound.
    double temperatureOf(double counts) const;

    /// Two detectors of the same stamp give the same counts.
    std::uint64_t stamp() const { return m_stamp; }

private:
    double inside() const { return (m_shutter + m_sensor) / 2; }
    double gain() const;             // g, AD/°C
    double atInside(double t) const; // A(t, T)
    void refresh();

    int m_range = 0;
    int m_lens = 0;
    double m_shutter;
    double m_sensor;
    double m_calibratedInside; // T0
    double m_calibratedSensor; // s0
    bool m_modifySlope = false;
    bool m_closed = false;
    DriftLaw m_driftLaw = DriftLaw::tableSpace;
    Surroundings m_truth;
    double m_sigma = 0;
    std::uint64_t m_seed = 0;

    // Worked out by refresh() from the above.
    double m_tau = 1;
    double m_background = 0;    // reflected and air radiation, K⁴
    double m_drift = 0;         // d
    double m_shutterCounts = 0; // A(G(m(T0)·T0), T)
    std::uint64_t m_stamp = 0;
};

} // namespace irmsim
