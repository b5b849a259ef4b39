#pragma once

#include "../core/truncate.h"

#include <cstdint>

/// Arithmetic of the display window: the counts from level to level + span are spread over the
/// palette. Pure: values in, values out. Levels and spans are counts modulo 2^16.
namespace irmcore {

struct Window {
    std::uint16_t level;
    std::uint16_t span;
};

/// What the FPGA says of a frame, in AD. `mid` is its mean or its histogram's peak.
struct FrameStatistics {
    std::uint16_t high;
    std::uint16_t low;
    std::uint16_t mid;
};

/// Counts between which an automatic window stays.
struct WindowLimits {
    int min;
    int max;
};

namespace detail {

constexpr std::uint16_t wrapped(int value) { return low16(static_cast<std::uint32_t>(value)); }

/// Below `min` becomes `min`, otherwise above `max` becomes `max`: with inverted limits the order
/// decides.
constexpr std::uint16_t clampLowFirst(std::uint16_t ad, WindowLimits limits) {
    return ad < limits.min ? wrapped(limits.min) : ad > limits.max ? wrapped(limits.max) : ad;
}

constexpr std::uint16_t clampHighFirst(std::uint16_t ad, WindowLimits limits) {
    return ad > limits.max ? wrapped(limits.max) : ad < limits.min ? wrapped(limits.min) : ad;
}

/// The window of a scene too narrow for the palette: at the top if the scene reaches it, otherwise
/// about the middle.
constexpr Window narrowWindow(FrameStatistics s, WindowLimits limits, int span) {
    return {s.high == limits.max ? wrapped(limits.max - span) : wrapped(s.mid - span / 2 - 1),
            wrapped(span)};
}

} // namespace detail

/// The statistics brought within the limits.
constexpr FrameStatistics clamped(FrameStatistics s, WindowLimits limits) {
    return {detail::clampHighFirst(s.high, limits), detail::clampLowFirst(s.low, limits),
            detail::clampLowFirst(s.mid, limits)};
}

/// The window over clamped statistics, at least `minSpan` wide; a difference of just that is
/// narrow.
constexpr Window windowOver(FrameStatistics s, WindowLimits limits, int minSpan) {
    const int difference = s.high - s.low;
    return difference <= minSpan ? detail::narrowWindow(s, limits, minSpan)
                                 : Window{s.low, detail::wrapped(difference)};
}

/// The same over a histogram: the difference is taken modulo 2^16, and one of just `minSpan` is not
/// narrow.
constexpr Window windowOverHistogram(FrameStatistics s, WindowLimits limits, int minSpan) {
    const std::uint16_t difference = detail::wrapped(s.high - s.low);
    return difference < minSpan ? detail::narrowWindow(s, limits, minSpan)
                                : Window{s.low, difference};
}

/// A quarter of the new window and three quarters of the old.
constexpr Window smoothed(Window fresh, Window old) {
    return {detail::wrapped((fresh.level + 3 * old.level) / 4),
            detail::wrapped((fresh.span + 3 * old.span) / 4)};
}

/// Gain of a span; 0 for a span of 0.
constexpr std::uint32_t gainOf(std::uint32_t span) { return span == 0 ? 0 : 4194304U / span; }

} // namespace irmcore
