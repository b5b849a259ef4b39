#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace irmcore::app {

/// A colour as screens and image files take it, 0 to 255 each.
struct Rgb {
    std::uint8_t r;
    std::uint8_t g;
    std::uint8_t b;

    bool operator==(const Rgb& other) const { return r == other.r && g == other.g && b == other.b; }
    bool operator!=(const Rgb& other) const { return !(*this == other); }
};

/// A picture, row by row from the top.
struct Picture {
    Picture(int columns, int rows)
        : width(columns), height(rows),
          pixels(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows), Rgb{0, 0, 0}) {
    }

    Rgb& at(int x, int y) { return pixels[index(x, y)]; }
    const Rgb& at(int x, int y) const { return pixels[index(x, y)]; }

    int width;
    int height;
    std::vector<Rgb> pixels;

private:
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(x);
    }
};

} // namespace irmcore::app
