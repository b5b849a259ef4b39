#include "detector.h"

#include "air.h"
#include "stamp.h"

#include <algorithm>
#include <cmath>

namespace irmsim {

namespace {

constexpr double kelvin = 273.15;
constexpr double midScale = 32768.0;
constexpr double planckB = 1430.0;       // K, at about 10 µm
constexpr double anchor = 30.0;          // °C, where every curve passes mid-scale
constexpr double gainLow = 100.0;        // AD/°C at the anchor, range 0
constexpr double gainHigh = 30.0;        // the others
constexpr double secondLensShare = 0.9;  // of the first lens's gain
constexpr double tableEmissivity = 0.95; // table space: this emissivity ...
constexpr double tableBackground = 25.0; // ... before this background, °C

double fourth(double celsius) {
    const double k = std::max(celsius + kelvin, 0.0);
    return k * k * k * k;
}

/// Table space of an apparent radiation in K⁴, °C.
double tableSpace(double w) {
    const double own = (w - (1 - tableEmissivity) * fourth(tableBackground)) / tableEmissivity;
    return std::sqrt(std::sqrt(std::max(own, 0.0))) - kelvin;
}

double planck(double t) {
    const double k = t + kelvin;
    return k > 0 ? 1.0 / (std::exp(planckB / k) - 1.0) : 0.0;
}

double planckSlope(double t) {
    const double k = t + kelvin;
    const double e = std::exp(planckB / k);
    return planckB / (k * k) * e / ((e - 1.0) * (e - 1.0));
}

/// Counts per degree of inside temperature for a scene at `t` °C.
double insideSlope(int range, double t) {
    return range == 0 ? (2.131 * t * t + 369.36 * t - 12861.0) / 1000.0
                      : (0.3619 * t * t + 88.36 * t - 3026.6) / 1000.0;
}

/// Degrees that a sensor temperature is worth since 0 °C.
double sensorDegrees(double s) { return 4.8 * std::min(s, 31.0) + 1.6 * std::max(s - 31.0, 0.0); }

std::uint64_t mix(std::uint64_t x) { // splitmix64
    x += 0x9E3779B97F4A7C15U;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
    return x ^ (x >> 31);
}

/// Noise of mean 0 and deviation 1 of one frame's pixels: the sum of a hash's four 16-bit words,
/// nearly a normal distribution, never beyond 3.47. Free of library functions, so equal on every
/// processor.
class UnitNoise {
public:
    UnitNoise(std::uint64_t seed, std::uint64_t frame) : m_frame(mix(mix(seed) ^ frame)) {}

    double operator()(std::uint32_t pixel) const {
        const std::uint64_t h = mix(m_frame ^ pixel);
        const auto sum = static_cast<std::int32_t>((h & 0xFFFF) + ((h >> 16) & 0xFFFF) +
                                                   ((h >> 32) & 0xFFFF) + (h >> 48));
        return (static_cast<double>(sum) - 131070.0) / 37837.2270;
    }

private:
    std::uint64_t m_frame;
};

/// Counts to the nearest whole one, cut to 0..65535.
std::uint16_t wordOf(double counts) {
    if (!(counts > 0)) // not a number: 0 too
        return 0;
    return static_cast<std::uint16_t>(std::min(counts + 0.5, 65535.0));
}

} // namespace

Detector::Detector()
    : m_shutter(referenceTemp()), m_sensor(referenceTemp()), m_calibratedInside(referenceTemp()),
      m_calibratedSensor(referenceTemp()) {
    refresh();
}

void Detector::setRange(int range) {
    m_range = range;
    refresh();
}

void Detector::setLens(int lens) {
    m_lens = lens;
    refresh();
}

void Detector::setTemperatures(double shutter, double sensor) {
    m_shutter = shutter;
    m_sensor = sensor;
    refresh();
}

void Detector::calibrate() {
    m_calibratedInside = inside();
    m_calibratedSensor = m_sensor;
    refresh();
}

void Detector::setModifySlope(bool on) {
    m_modifySlope = on;
    refresh();
}

void Detector::setDriftLaw(DriftLaw law) {
    m_driftLaw = law;
    refresh();
}

void Detector::setSurroundings(const Surroundings& truth) {
    m_truth = truth;
    refresh();
}

void Detector::setNoise(double sigmaAd, std::uint64_t seed) {
    m_sigma = sigmaAd;
    m_seed = seed;
    m_stamp = newStamp();
}

void Detector::setShutterClosed(bool closed) {
    m_closed = closed;
    m_stamp = newStamp();
}

double Detector::referenceTemp() const { return m_range == 0 ? 26.5 : 43.0; }

double Detector::gain() const {
    return (m_range == 0 ? gainLow : gainHigh) * (m_lens == 1 ? secondLensShare : 1.0);
}

double Detector::curve(double t) const {
    static const double zero = planck(anchor);
    static const double slope = planckSlope(anchor);
    return midScale + gain() * (planck(t) - zero) / slope;
}

double Detector::modifyFactor(double insideTemp) const {
    return m_modifySlope ? 1.0 + 0.0004 * (insideTemp - 26.5) : 1.0;
}

double Detector::atInside(double t) const {
    return curve(t) + insideSlope(m_range, t) * (inside() - referenceTemp());
}

double Detector::counts(double celsius) const {
    const double t = tableSpace(m_truth.emissivity * m_tau * fourth(celsius) + m_background);
    if (m_driftLaw == DriftLaw::tableSpace)
        return midScale + atInside(t + m_drift) - m_shutterCounts;
    return midScale + atInside(t) + gain() * m_drift - m_shutterCounts;
}

std::uint16_t Detector::raw(double celsius, std::uint64_t frame, std::uint32_t pixel) const {
    return m_closed ? 32768 : rawOf(counts(celsius), frame, pixel);
}

std::uint16_t Detector::rawOf(double counts, std::uint64_t frame, std::uint32_t pixel) const {
    if (m_closed)
        return 32768;
    return wordOf(m_sigma > 0 ? counts + m_sigma * UnitNoise(m_seed, frame)(pixel) : counts);
}

void Detector::rawFrame(const std::vector<double>& counts, std::uint64_t frame,
                        std::vector<std::uint16_t>& out) const {
    if (m_closed) {
        std::fill(out.begin(), out.end(), std::uint16_t{32768});
    } else if (m_sigma > 0) {
        const UnitNoise noise(m_seed, frame);
        for (std::size_t i = 0; i < counts.size(); ++i)
            out[i] = wordOf(counts[i] + m_sigma * noise(static_cast<std::uint32_t>(i)));
    } else {
        std::transform(counts.begin(), counts.end(), out.begin(), wordOf);
    }
}

double Detector::temperatureOf(double counts) const {
    // Colder than this the inside slope bends the curve back.
    double low = -120.0;
    double high = 1500.0;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        (this->counts(middle) < counts ? low : high) = middle;
    }
    return (low + high) / 2;
}

void Detector::refresh() {
    m_tau = airTransmission(m_truth.envTemp, m_truth.humidity, m_truth.distance);
    m_background = (1 - m_truth.emissivity) * m_tau * fourth(m_truth.reflectedTemp) +
                   (1 - m_tau) * fourth(m_truth.envTemp);
    m_drift = sensorDegrees(m_sensor) - sensorDegrees(m_calibratedSensor);
    m_shutterCounts =
        atInside(tableSpace(fourth(modifyFactor(m_calibratedInside) * m_calibratedInside)));
    m_stamp = newStamp();
}

} // namespace irmsim
