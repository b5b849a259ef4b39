#pragma once

#include "apps/view/snapshot.h"

#include <chrono>
#include <memory>

namespace irmcore::view::testing {

/// Pixel x, y of `synthetic`: a colour of its own.
constexpr std::uint32_t colourAt(int x, int y) {
    return 0xFF000050U | static_cast<std::uint32_t>(7 * x + 8) << 16U |
           static_cast<std::uint32_t>(9 * y + 8) << 8U;
}

inline Value celsius(double value, Pixel at = {}) { return {at, 1000, "OK", value}; }

/// A snapshot of a settled camera, read `seconds` after some time. Pixel x, y has 10 x + y °C; the
/// bar goes from blue to red, from 20 to 40 °C.
inline Snapshot synthetic(int width = 32, int height = 24, double seconds = 0.0) {
    Snapshot result;
    result.taken += std::chrono::microseconds(static_cast<long long>(seconds * 1e6));
    result.sourceName = "simulated camera";
    result.frame.width = width;
    result.frame.height = height;
    result.picture = {width, height, {}};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            result.picture.pixels.push_back(colourAt(x, y));
            result.frame.celsius.push_back(static_cast<float>(10 * x + y));
            result.frame.status.push_back(0);
            result.frame.counts.push_back(5000);
        }
    for (std::uint32_t i = 0; i < 256; ++i)
        result.bar[i] = i << 16U | (255U - i); // without an alpha
    result.barLow = celsius(20.0);
    result.barHigh = celsius(40.0);
    result.present = true;
    result.settled = true;
    result.lens = 0;
    return result;
}

inline std::shared_ptr<const Snapshot> shared(Snapshot snapshot) {
    return std::make_shared<const Snapshot>(std::move(snapshot));
}

} // namespace irmcore::view::testing
