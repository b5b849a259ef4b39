#include "curve.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace irmcore::app::calibration {

namespace {

constexpr double kelvin = 273.15;
constexpr double lowestB = 700.0; // K: a band around 20 µm
constexpr double highestB = 3000.0;

struct Fit {
    PlanckLaw law;
    double squares; ///< of the residuals, AD²
};

/// The best line over x for this b.
Fit fitLine(const std::vector<Sample>& samples, double b) {
    Fit fit{{b, 0.0, 0.0}, 0.0};
    const auto n = static_cast<double>(samples.size());
    double meanX = 0.0;
    double meanAd = 0.0;
    for (const Sample& s : samples) {
        meanX += fit.law.x(s.celsius) / n;
        meanAd += s.ad / n;
    }
    double xx = 0.0;
    double xy = 0.0;
    for (const Sample& s : samples) {
        const double dx = fit.law.x(s.celsius) - meanX;
        xx += dx * dx;
        xy += dx * (s.ad - meanAd);
    }
    fit.law.gain = xy / xx;
    fit.law.offset = meanAd - fit.law.gain * meanX;
    for (const Sample& s : samples)
        fit.squares += std::pow(s.ad - fit.law.ad(s.celsius), 2);
    return fit;
}

/// Slopes at the samples: the weighted harmonic mean of both sides, and 0 where they differ in
/// sign, so that no cubic overshoots.
std::vector<double> slopesOf(const std::vector<double>& x, const std::vector<double>& y) {
    const std::size_t n = x.size();
    std::vector<double> secant(n - 1);
    for (std::size_t i = 0; i + 1 < n; ++i)
        secant[i] = (y[i + 1] - y[i]) / (x[i + 1] - x[i]);
    std::vector<double> slope(n);
    slope.front() = secant.front();
    slope.back() = secant.back();
    for (std::size_t i = 1; i + 1 < n; ++i) {
        if (secant[i - 1] * secant[i] <= 0.0)
            continue;
        const double before = x[i] - x[i - 1];
        const double after = x[i + 1] - x[i];
        const double w1 = 2 * after + before;
        const double w2 = after + 2 * before;
        slope[i] = (w1 + w2) / (w1 / secant[i - 1] + w2 / secant[i]);
    }
    return slope;
}

} // namespace

double PlanckLaw::x(double celsius) const { return 1.0 / (std::exp(b / (celsius + kelvin)) - 1.0); }

PlanckLaw fitPlanck(const std::vector<Sample>& samples) {
    // Golden section: the sum of squares has one minimum over b.
    const double golden = (std::sqrt(5.0) - 1.0) / 2.0;
    double low = lowestB;
    double high = highestB;
    for (int i = 0; i < 50; ++i) {
        const double left = high - golden * (high - low);
        const double right = low + golden * (high - low);
        if (fitLine(samples, left).squares < fitLine(samples, right).squares)
            high = right;
        else
            low = left;
    }
    return fitLine(samples, (low + high) / 2.0).law;
}

Curve::Curve(const PlanckLaw& law, const std::vector<Sample>& samples) : m_law(law) {
    for (const Sample& sample : samples) {
        m_x.push_back(law.x(sample.celsius));
        m_ad.push_back(sample.ad);
    }
    m_slope = slopesOf(m_x, m_ad);
}

double Curve::ad(double celsius) const {
    const double x = m_law.x(celsius);
    if (x <= m_x.front())
        return m_ad.front() + m_law.gain * (x - m_x.front());
    if (x >= m_x.back())
        return m_ad.back() + m_law.gain * (x - m_x.back());
    const auto above = std::upper_bound(m_x.begin(), m_x.end(), x);
    const auto i = static_cast<std::size_t>(above - m_x.begin()) - 1;
    const double width = m_x[i + 1] - m_x[i];
    const double t = (x - m_x[i]) / width;
    const double u = 1.0 - t;
    return u * u * (1.0 + 2.0 * t) * m_ad[i] + t * t * (3.0 - 2.0 * t) * m_ad[i + 1] +
           width * t * u * (u * m_slope[i] - t * m_slope[i + 1]);
}

} // namespace irmcore::app::calibration
