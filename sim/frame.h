#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace irmsim {

/// A frame of raw AD values, row by row.
struct Frame {
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> ad;

    /// AD at a pixel; 0 outside the frame.
    std::uint16_t at(int x, int y) const {
        if (x < 0 || y < 0 || x >= width || y >= height)
            return 0;
        return ad[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                  static_cast<std::size_t>(x)];
    }
};

/// A rectangle of pixels: first and last column and row, all inclusive.
struct Rect {
    int x0;
    int y0;
    int x1;
    int y1;
};

/// A pixel and its value.
struct Extreme {
    std::uint16_t ad = 0;
    std::uint16_t x = 0;
    std::uint16_t y = 0;
};

/// What the FPGA counts over a part of the frame; all 0 for a part without pixels. Of equal
/// extremes the first counts, in reading order.
struct Statistics {
    Extreme max;
    Extreme min;
    std::uint64_t sum = 0;
    std::uint32_t pixels = 0;

    std::uint16_t mean() const {
        return pixels == 0 ? std::uint16_t{0} : static_cast<std::uint16_t>(sum / pixels);
    }
};

/// Statistics of the pixels of `part` that lie inside the frame.
Statistics measure(const Frame& frame, const Rect& part);

/// The value that most pixels have, the lowest of several; `bins` is room for 65536 counters.
std::uint16_t histogramPeak(const Frame& frame, std::vector<std::uint32_t>& bins);

/// The frame in another size, each pixel the nearest of the frame, as little-endian words into
/// 2·width·height bytes at `out`.
void deliver(const Frame& frame, int width, int height, std::uint8_t* out);

} // namespace irmsim
