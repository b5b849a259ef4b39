#pragma once

/// The measuring ranges, by index: 0 is -20 to 150 °C, every other 0 to 400 °C.
namespace irmcore {

struct RangeLimits {
    int min; ///< °C
    int max; ///< °C
};

constexpr RangeLimits limitsOfRange(int range) {
    return range == 0 ? RangeLimits{-20, 150} : RangeLimits{0, 400};
}

} // namespace irmcore
