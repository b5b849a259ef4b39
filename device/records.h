#pragma once

/// @file
/// What registers carry, as records.

#include <cstddef>
#include <cstdint>

/// A pixel position, as the FPGA takes it: four bytes, x first.
struct _fpga_point {
    std::uint16_t x; ///< column, 0 at the left
    std::uint16_t y; ///< row, 0 at the top
};

/// The frame's coldest pixel.
struct _point_min {
    std::uint16_t ad; ///< raw detector count
    std::uint16_t x;  ///< column
    std::uint16_t y;  ///< row
};

/// The frame's hottest pixel, in the layout of `_point_min`.
struct _point_max {
    std::uint16_t ad; ///< raw detector count
    std::uint16_t x;  ///< column
    std::uint16_t y;  ///< row
};

/// The rectangle of one measurement area. The library passes the four words on unchanged; the
/// FPGA takes them as x0, y0, x1, y1, all inclusive.
struct _area {
    std::uint16_t bounds[4]; ///< x0, y0, x1, y1
};

/// What the FPGA computed for one measurement area, in register order.
struct _area_val {
    std::uint16_t maxAD;  ///< highest raw detector count in the area
    std::uint16_t minAD;  ///< lowest raw detector count in the area
    std::uint16_t avgAD;  ///< mean raw detector count of the area
    std::uint16_t pos[4]; ///< x, y of the maximum, then x, y of the minimum
};

/// What the camera's screen shows; a field of three bits.
enum Image_Mode_t : int {
    IMAGE_IR = 0,          ///< the infrared picture alone
    IMAGE_CCD = 1,         ///< the visible camera's picture alone
    IMAGE_CCD_PIPE_IR = 2, ///< infrared picture with a visible inset
    IMAGE_IR_PIPE_CCD = 3, ///< visible picture with an infrared inset
    IMAGE_CCD_MIX_IR = 4,  ///< visible picture blended into the infrared one
    IMAGE_IR_MIX_CCD = 5,  ///< infrared picture blended into the visible one, which shows the frame
                           ///< without its margin; the extremes are then those of what is shown
    IMAGE_FUSION = 6,      ///< infrared inside the isotherm band, visible elsewhere
    IMAGE_BLANK = 7,       ///< no picture
};

/// Where an inset picture lies; a field of two bits.
enum Image_Position_t : int {
    POSITION_TOP_LEFT = 0,
    POSITION_TOP_RIGHT = 1,
    POSITION_BOTTOM_LEFT = 2,
    POSITION_BOTTOM_RIGHT = 3,
};

// Hosts and the FPGA share these layouts.
static_assert(sizeof(_fpga_point) == 4 && offsetof(_fpga_point, y) == 2);
static_assert(sizeof(_point_min) == 6 && offsetof(_point_min, x) == 2 &&
              offsetof(_point_min, y) == 4);
static_assert(sizeof(_point_max) == 6 && offsetof(_point_max, x) == 2 &&
              offsetof(_point_max, y) == 4);
static_assert(sizeof(_area) == 8);
static_assert(sizeof(_area_val) == 14 && offsetof(_area_val, minAD) == 2 &&
              offsetof(_area_val, avgAD) == 4 && offsetof(_area_val, pos) == 6);
static_assert(sizeof(Image_Mode_t) == 4 && sizeof(Image_Position_t) == 4);
