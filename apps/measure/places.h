#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace irmcore::app::measuring {

struct Pixel {
    int x; ///< column
    int y; ///< row
};

/// A line from one pixel to another, or an area with these corners; both ends included.
struct Span {
    Pixel from;
    Pixel to;
};

/// "X,Y". Nothing for anything else.
std::optional<Pixel> pixelOf(const QString& text);
/// "X1,Y1,X2,Y2". Nothing for anything else.
std::optional<Span> spanOf(const QString& text);

/// The area with the upper left corner first.
Span asArea(const Span& corners);

/// The pixels of a line, each touching the next, by Bresenham's rule: as many as its longer side.
std::vector<Pixel> pixelsOf(const Span& line);

} // namespace irmcore::app::measuring
