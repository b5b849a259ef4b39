#include "places.h"

#include <QStringList>

#include <algorithm>
#include <cstdlib>

namespace irmcore::app::measuring {

namespace {

/// `count` whole numbers of 0 or more between commas; an empty list for anything else.
std::vector<int> numbersOf(const QString& text, int count) {
    std::vector<int> numbers;
    for (const QString& part : text.split(QLatin1Char(','))) {
        bool ok = false;
        const int number = part.toInt(&ok);
        if (!ok || number < 0)
            return {};
        numbers.push_back(number);
    }
    return static_cast<int>(numbers.size()) == count ? numbers : std::vector<int>{};
}

} // namespace

std::optional<Pixel> pixelOf(const QString& text) {
    const std::vector<int> numbers = numbersOf(text, 2);
    return numbers.empty() ? std::nullopt : std::optional(Pixel{numbers[0], numbers[1]});
}

std::optional<Span> spanOf(const QString& text) {
    const std::vector<int> n = numbersOf(text, 4);
    return n.empty() ? std::nullopt : std::optional(Span{{n[0], n[1]}, {n[2], n[3]}});
}

Span asArea(const Span& corners) {
    const auto [left, right] = std::minmax(corners.from.x, corners.to.x);
    const auto [top, bottom] = std::minmax(corners.from.y, corners.to.y);
    return {{left, top}, {right, bottom}};
}

std::vector<Pixel> pixelsOf(const Span& line) {
    const int dx = std::abs(line.to.x - line.from.x);
    const int dy = std::abs(line.to.y - line.from.y);
    const int stepX = line.from.x < line.to.x ? 1 : -1;
    const int stepY = line.from.y < line.to.y ? 1 : -1;
    std::vector<Pixel> pixels;
    Pixel at = line.from;
    int error = dx - dy;
    for (int left = std::max(dx, dy); left >= 0; --left) {
        pixels.push_back(at);
        const int twice = 2 * error;
        if (twice > -dy) {
            error -= dy;
            at.x += stepX;
        }
        if (twice < dx) {
            error += dx;
            at.y += stepY;
        }
    }
    return pixels;
}

} // namespace irmcore::app::measuring
