#include "curve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace irmcore::app::check {

namespace {

constexpr std::array<double, 5> pattern{1, -4, 6, -4, 1};

std::vector<double> fourthDifferences(const std::vector<double>& values) {
    std::vector<double> differences;
    for (std::size_t k = 0; k + pattern.size() <= values.size(); ++k) {
        double sum = 0;
        for (std::size_t j = 0; j < pattern.size(); ++j)
            sum += pattern[j] * values[k + j];
        differences.push_back(sum);
    }
    return differences;
}

/// An error of value `i` that would explain the differences best, and how much of their squares.
struct Guess {
    double error;
    double explains;
};

Guess guessAt(const std::vector<double>& differences, std::size_t i) {
    double product = 0;
    double square = 0;
    for (std::size_t j = 0; j < pattern.size(); ++j) {
        if (i < j || i - j >= differences.size())
            continue;
        product += pattern[j] * differences[i - j];
        square += pattern[j] * pattern[j];
    }
    return {product / square, product * product / square};
}

} // namespace

std::vector<Outlier> offCurve(std::vector<double> values, double share, int most) {
    constexpr std::size_t fewest = 6;
    std::vector<Outlier> found;
    while (values.size() >= fewest && static_cast<int>(found.size()) < most) {
        const std::vector<double> differences = fourthDifferences(values);
        std::size_t worst = 0;
        for (std::size_t i = 1; i < values.size(); ++i)
            if (guessAt(differences, i).explains > guessAt(differences, worst).explains)
                worst = i;
        const double by = guessAt(differences, worst).error;
        const std::size_t below = worst == 0 ? 0 : worst - 1;
        const std::size_t above = std::min(worst + 1, values.size() - 1);
        const double step =
            std::abs(values[above] - values[below]) / static_cast<double>(above - below);
        if (!(std::abs(by) > share * step))
            break;
        values[worst] -= by;
        found.push_back({static_cast<int>(worst), by});
    }
    return found;
}

Line fitLine(const std::vector<double>& x, const std::vector<double>& y) {
    double meanX = 0;
    double meanY = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        meanX += x[i] / static_cast<double>(x.size());
        meanY += y[i] / static_cast<double>(x.size());
    }
    double product = 0;
    double square = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        product += (x[i] - meanX) * (y[i] - meanY);
        square += (x[i] - meanX) * (x[i] - meanX);
    }
    const double slope = square > 0 ? product / square : 0;
    return {meanY - slope * meanX, slope};
}

} // namespace irmcore::app::check
