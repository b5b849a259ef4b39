#pragma once

#include <vector>

namespace irmcore::app::calibration {

/// The law that a band of radiation follows: AD = offset + gain / (exp(b / kelvin) - 1).
struct PlanckLaw {
    double b = 1430.0; ///< K: about 14388 µm K over the middle of the band
    double offset = 0.0;
    double gain = 1.0;

    /// 1 / (exp(b / kelvin) - 1) at `celsius`.
    double x(double celsius) const;
    double ad(double celsius) const { return offset + gain * x(celsius); }
};

/// A count at a temperature.
struct Sample {
    double celsius;
    double ad;
};

/// The law of the least squares through samples of at least three temperatures, with b between 700
/// and 3000 K.
PlanckLaw fitPlanck(const std::vector<Sample>& samples);

/// A curve through all samples, smooth and rising where they rise. Over the law's x the samples of
/// a detector lie nearly on a straight line; what is left is bent by monotone cubics, whose slopes
/// are those of Fritsch and Carlson. Beyond the samples the law goes on from the last one.
class Curve {
public:
    /// `samples` in rising order, at least two.
    Curve(const PlanckLaw& law, const std::vector<Sample>& samples);

    double ad(double celsius) const;

private:
    PlanckLaw m_law;
    std::vector<double> m_x;
    std::vector<double> m_ad;
    std::vector<double> m_slope;
};

} // namespace irmcore::app::calibration
