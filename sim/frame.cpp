#include "frame.h"

#include <algorithm>
#include <cstring>

namespace irmsim {

Statistics measure(const Frame& frame, const Rect& part) {
    const int x0 = std::max(part.x0, 0);
    const int y0 = std::max(part.y0, 0);
    const int x1 = std::min(part.x1, frame.width - 1);
    const int y1 = std::min(part.y1, frame.height - 1);
    Statistics s;
    if (x0 > x1 || y0 > y1)
        return s;
    for (int y = y0; y <= y1; ++y) {
        for (int x = x0; x <= x1; ++x) {
            const std::uint16_t ad = frame.at(x, y);
            const Extreme here{ad, static_cast<std::uint16_t>(x), static_cast<std::uint16_t>(y)};
            if (s.pixels == 0 || ad > s.max.ad)
                s.max = here;
            if (s.pixels == 0 || ad < s.min.ad)
                s.min = here;
            s.sum += ad;
            ++s.pixels;
        }
    }
    return s;
}

std::uint16_t histogramPeak(const Frame& frame, std::vector<std::uint32_t>& bins) {
    std::fill(bins.begin(), bins.end(), 0U);
    for (const std::uint16_t ad : frame.ad)
        ++bins[ad];
    return static_cast<std::uint16_t>(std::max_element(bins.begin(), bins.end()) - bins.begin());
}

void deliver(const Frame& frame, int width, int height, std::uint8_t* out) {
    constexpr bool littleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    if (littleEndian && frame.width == width && frame.height == height) {
        std::memcpy(out, frame.ad.data(), frame.ad.size() * sizeof frame.ad[0]);
        return;
    }
    for (int y = 0; y < height; ++y) {
        const int fromY = (2 * y + 1) * frame.height / (2 * height);
        for (int x = 0; x < width; ++x) {
            const int fromX = (2 * x + 1) * frame.width / (2 * width);
            const std::uint16_t ad = frame.at(fromX, fromY);
            *out++ = static_cast<std::uint8_t>(ad & 0xFF);
            *out++ = static_cast<std::uint8_t>(ad >> 8);
        }
    }
}

} // namespace irmsim
