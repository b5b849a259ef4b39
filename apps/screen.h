#pragma once

#include "../sim/board.h"
#include "picture.h"

namespace irmcore::app {

/// A colour in the FPGA's terms: ITU-R BT.601, Y 16 to 235, Cb and Cr about 128. What lies outside
/// the screen's colours is cut.
Rgb rgbOf(std::uint8_t y, std::uint8_t cb, std::uint8_t cr);

/// Screen pixels for one pixel of the frame, each way: 2 for a frame of 320 columns or more, 4 for
/// a smaller one.
int screenScale(int frameWidth);

/// Where the colour bar lies on a screen of this size: x0, y0, x1, y1, all inclusive; its rows are
/// a multiple of 256, entry 255 at the top. A screen below 260 rows has none: x1 < x0.
irmsim::Rect colourBar(int screenWidth, int screenHeight);

/// What the camera's screen shows, from the board's registers and present frame alone; `visible` is
/// the visible camera's picture, in the frame's size. The screen is the frame times `screenScale`.
Picture screen(irmsim::Board& board, const Picture& visible);

} // namespace irmcore::app
