#include "scene.h"

#include "stamp.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace irmsim {

namespace {

constexpr int maxSide = 1024;

struct BlackBody {
    const char* name;
    double celsius;
};
// In two rows of four; the eighth place is the hand's.
constexpr std::array<BlackBody, 7> blackBodies{{{"black body -10", -10.0},
                                                {"black body 0", 0.0},
                                                {"black body 37", 37.0},
                                                {"black body 60", 60.0},
                                                {"black body 80", 80.0},
                                                {"black body 100", 100.0},
                                                {"black body 140", 140.0}}};
constexpr double handCelsius = 34.0;

} // namespace

Scene::Scene(int width, int height, double celsius)
    : m_width(std::clamp(width, 1, maxSide)), m_height(std::clamp(height, 1, maxSide)),
      m_celsius(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height), celsius),
      m_stamp(newStamp()) {}

Scene Scene::uniform(int width, int height, double celsius) {
    return Scene(width, height, celsius);
}

Scene Scene::gradient(int width, int height, double left, double right) {
    Scene scene(width, height, left);
    for (int x = 1; x < scene.m_width; ++x)
        scene.fill(x, 0, x, scene.m_height - 1, left + (right - left) * x / (scene.m_width - 1));
    return scene;
}

Scene Scene::bench(int width, int height) {
    Scene scene(width, height, 22.0);
    const double w = scene.m_width;
    const double h = scene.m_height;
    for (int y = 0; y < scene.m_height; ++y)
        for (int x = 0; x < scene.m_width; ++x)
            scene.set(x, y, 22.0 + 1.5 * (x / w - 0.5) - 1.0 * (y / h - 0.5));

    const double radius = h / 10;
    for (std::size_t i = 0; i < 8; ++i) {
        const std::size_t row = i / 4;
        const int cx = static_cast<int>((2 * static_cast<double>(i % 4) + 1) / 8 * w);
        const int cy = static_cast<int>((2 * static_cast<double>(row) + 1) / 4 * h);
        const bool hand = i == blackBodies.size();
        scene.m_targets.push_back({hand ? "hand" : blackBodies[i].name, cx, cy});
        const int reach = static_cast<int>(hand ? 2 * radius : radius);
        for (int y = cy - reach; y <= cy + reach; ++y) {
            for (int x = cx - reach; x <= cx + reach; ++x) {
                const double r = std::hypot(x - cx, y - cy) / radius;
                if (hand && r < 2) {
                    // Warm in the middle, passing into the wall without an edge.
                    const double share = 0.5 + 0.5 * std::cos(1.5707963267948966 * r);
                    scene.set(x, y, scene.at(x, y) + share * (handCelsius - scene.at(x, y)));
                } else if (!hand && r <= 1) {
                    scene.set(x, y, blackBodies[i].celsius);
                }
            }
        }
    }
    return scene;
}

double Scene::at(int x, int y) const {
    const int column = std::clamp(x, 0, m_width - 1);
    const int row = std::clamp(y, 0, m_height - 1);
    return m_celsius[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_width) +
                     static_cast<std::size_t>(column)];
}

double Scene::min() const { return *std::min_element(m_celsius.begin(), m_celsius.end()); }

double Scene::max() const { return *std::max_element(m_celsius.begin(), m_celsius.end()); }

void Scene::set(int x, int y, double celsius) { fill(x, y, x, y, celsius); }

void Scene::fill(int x0, int y0, int x1, int y1, double celsius) {
    const int lastColumn = std::min(x1, m_width - 1);
    const int lastRow = std::min(y1, m_height - 1);
    for (int y = std::max(y0, 0); y <= lastRow; ++y)
        for (int x = std::max(x0, 0); x <= lastColumn; ++x)
            m_celsius[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
                      static_cast<std::size_t>(x)] = celsius;
    m_stamp = newStamp();
}

} // namespace irmsim
