#include "visible.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace irmcore::app {

namespace {

constexpr std::size_t bins = 256;
constexpr std::size_t seam = 9; // bins

/// A surface in full light, 0 to 1.
struct Paint {
    double r;
    double g;
    double b;
};
/// By rising temperature; neither brightness nor hue rises with it.
constexpr std::array<Paint, 6> materials{{{0.33, 0.38, 0.44},
                                          {0.62, 0.58, 0.51},
                                          {0.38, 0.42, 0.33},
                                          {0.56, 0.45, 0.36},
                                          {0.52, 0.47, 0.43},
                                          {0.42, 0.32, 0.28}}};

/// A value for every pixel of the scene; places outside give the nearest pixel's.
class Field {
public:
    Field(int width, int height)
        : m_width(width), m_height(height),
          m_values(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

    int width() const { return m_width; }
    int height() const { return m_height; }
    const std::vector<double>& values() const { return m_values; }
    double& at(int x, int y) { return m_values[index(x, y)]; }
    double at(int x, int y) const {
        return m_values[index(std::clamp(x, 0, m_width - 1), std::clamp(y, 0, m_height - 1))];
    }

private:
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
               static_cast<std::size_t>(x);
    }

    int m_width;
    int m_height;
    std::vector<double> m_values;
};

/// Mean over a square of 2·reach + 1 pixels each way.
Field softened(const Field& from, int reach) {
    Field rows(from.width(), from.height());
    Field all(from.width(), from.height());
    const auto mean = [reach](const Field& f, int x, int y, int dx, int dy) {
        double sum = 0;
        for (int i = -reach; i <= reach; ++i)
            sum += f.at(x + i * dx, y + i * dy);
        return sum / (2 * reach + 1);
    };
    for (int y = 0; y < from.height(); ++y)
        for (int x = 0; x < from.width(); ++x)
            rows.at(x, y) = mean(from, x, y, 1, 0);
    for (int y = 0; y < from.height(); ++y)
        for (int x = 0; x < from.width(); ++x)
            all.at(x, y) = mean(rows, x, y, 0, 1);
    return all;
}

/// The scene's temperatures, brought to 0 for the coldest and 1 for the hottest pixel.
Field heatOf(const irmsim::Scene& scene) {
    const auto finite = [](double t) { return t > -300 ? std::min(t, 5000.0) : -300.0; };
    Field heat(scene.width(), scene.height());
    for (int y = 0; y < heat.height(); ++y)
        for (int x = 0; x < heat.width(); ++x)
            heat.at(x, y) = finite(scene.at(x, y));
    const auto [low, high] = std::minmax_element(heat.values().begin(), heat.values().end());
    const double coldest = *low;
    const double span = std::max(*high - coldest, 1e-6);
    for (int y = 0; y < heat.height(); ++y)
        for (int x = 0; x < heat.width(); ++x)
            heat.at(x, y) = (heat.at(x, y) - coldest) / span;
    return heat;
}

std::size_t binOf(double heat) {
    return static_cast<std::size_t>(std::lround(std::clamp(heat, 0.0, 1.0) * (bins - 1)));
}

/// The paint of each 1/255 of the temperatures. They fall into groups about their own means, a wall
/// of nearly one temperature into one. A temperature counts by the root of its pixels, so that
/// small things get a paint of their own. Groups pass into one another without a seam.
std::array<Paint, bins> paintsOf(const Field& heat) {
    std::array<double, bins> weight{};
    for (const double h : heat.values())
        weight[binOf(h)] += 1;
    for (double& w : weight)
        w = std::sqrt(w);
    std::array<double, materials.size()> centre{};
    for (std::size_t k = 0; k < centre.size(); ++k)
        centre[k] = (static_cast<double>(k) + 0.5) * bins / centre.size();
    std::array<std::size_t, bins> group{};
    for (int round = 0; round < 20; ++round) {
        std::array<double, materials.size()> sum{};
        std::array<double, materials.size()> count{};
        for (std::size_t i = 0; i < bins; ++i) {
            const auto distance = [&](std::size_t k) {
                return std::fabs(static_cast<double>(i) - centre[k]);
            };
            for (std::size_t k = 0; k < centre.size(); ++k)
                if (distance(k) < distance(group[i]))
                    group[i] = k;
            sum[group[i]] += weight[i] * static_cast<double>(i);
            count[group[i]] += weight[i];
        }
        for (std::size_t k = 0; k < centre.size(); ++k)
            if (count[k] > 0)
                centre[k] = sum[k] / count[k];
    }
    std::array<Paint, bins> paints{};
    for (std::size_t i = 0; i < bins; ++i) {
        const std::size_t from = i < seam ? 0 : i - seam;
        const std::size_t to = std::min(i + seam, bins - 1);
        const double share = 1.0 / static_cast<double>(to - from + 1);
        for (std::size_t j = from; j <= to; ++j) {
            paints[i].r += share * materials[group[j]].r;
            paints[i].g += share * materials[group[j]].g;
            paints[i].b += share * materials[group[j]].b;
        }
    }
    return paints;
}

/// -1 to 1, the same for the same place.
double grain(int x, int y) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x9E3779B1U;
    h ^= static_cast<std::uint32_t>(y) * 0x85EBCA77U;
    h = (h ^ (h >> 15)) * 0x2C1B3C6DU;
    h = (h ^ (h >> 12)) * 0x297A2D39U;
    h ^= h >> 15;
    return h / 2147483647.5 - 1;
}

/// Grain of `size` pixels, smooth between.
double mottle(int x, int y, int size) {
    const double u = static_cast<double>(x % size) / size;
    const double v = static_cast<double>(y % size) / size;
    const int i = x / size;
    const int j = y / size;
    const double top = grain(i, j) * (1 - u) + grain(i + 1, j) * u;
    const double bottom = grain(i, j + 1) * (1 - u) + grain(i + 1, j + 1) * u;
    return top * (1 - v) + bottom * v;
}

std::uint8_t channel(double value) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255));
}

} // namespace

Picture visiblePicture(const irmsim::Scene& scene) {
    const Field heat = heatOf(scene);
    const auto paints = paintsOf(heat);
    const int unit = std::max(heat.width() / 160, 1);
    const Field relief = softened(heat, unit);
    const Field surroundings = softened(relief, 6 * unit);
    Picture picture(heat.width(), heat.height());
    for (int y = 0; y < heat.height(); ++y) {
        for (int x = 0; x < heat.width(); ++x) {
            // Slopes over the width of the picture.
            const double dx = (relief.at(x + 1, y) - relief.at(x - 1, y)) * heat.width() / 2;
            const double dy = (relief.at(x, y + 1) - relief.at(x, y - 1)) * heat.width() / 2;
            const double slope = std::hypot(dx, dy);
            // Light from the upper left; steep slopes are the outlines of things.
            const double light = 0.25 * (0.6 * dx + 0.8 * dy) / (2 + slope);
            const double outline = slope / (slope + 12);
            const double detail = heat.at(x, y) - surroundings.at(x, y);
            const double tone = 0.3 * detail / (0.15 + std::fabs(detail));
            const double texture =
                0.03 * mottle(x, y, 9 * unit) + 0.025 * mottle(x, y, 3 * unit) + 0.02 * grain(x, y);
            const double room = 1.15 - 0.18 * x / heat.width() - 0.22 * y / heat.height();
            const double shade =
                room * (1 + light + tone + texture) * (1 - 0.6 * outline * outline);
            const Paint& paint = paints[binOf(relief.at(x, y))];
            picture.at(x, y) = {channel(paint.r * shade), channel(paint.g * shade),
                                channel(paint.b * shade)};
        }
    }
    return picture;
}

} // namespace irmcore::app
