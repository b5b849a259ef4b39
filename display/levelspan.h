#pragma once

/// @file
/// The display window's modes and limits.

#include <cstdint>

/// How the window is placed.
enum Mode_t : int {
    LEVELSPAN_AUTO = 0, ///< from the frame's extremes and mean
    LEVELSPAN_ZFT = 1,  ///< from the histogram's ends and peak
    LEVELSPAN_HAND = 2, ///< by hand, between two temperatures
};
static_assert(sizeof(Mode_t) == 4);

/// Upper limit of the automatic window, 0 to 65535 AD. One per process, as the two below.
[[gnu::visibility("default")]] extern int m_levelSpanMaxAD;
/// Lower limit of the automatic window, 0 to 65535 AD.
[[gnu::visibility("default")]] extern int m_levelSpanMinAD;
/// What `FPGA::startLevelSpanControl` was last given; for the host.
[[gnu::visibility("default")]] extern bool m_isStarLevelSpanControl;
