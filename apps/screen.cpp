#include "screen.h"

#include "screen_composition.h"

#include <algorithm>
#include <optional>

namespace irmcore::app {

namespace {

using irmsim::Rect;

constexpr Rgb black{0, 0, 0};
constexpr Rgb white{235, 235, 235};
constexpr int barBorder = 2;
constexpr int barEntries = 256;
constexpr int wideFrame = 320;

/// The bits that switch the insets to their larger size.
constexpr reg::Field largeVisibleInset = reg::bit(reg::mixSize, 0, "largeVisibleInset");
constexpr reg::Field largeInfraredInset = reg::bit(reg::mixSize, 7, "largeInfraredInset");

/// Screen edge to insets and bar.
int margin(int screenWidth) { return screenWidth / 64; }

Rect grown(const Rect& r, int by) { return {r.x0 - by, r.y0 - by, r.x1 + by, r.y1 + by}; }

void fill(Picture& screen, const Rect& r, Rgb colour) {
    for (int y = r.y0; y <= r.y1; ++y)
        for (int x = r.x0; x <= r.x1; ++x)
            screen.at(x, y) = colour;
}

/// A third of the screen each way, or half; `end` is the first column past its right margin.
Rect insetPlace(const Picture& screen, int end, unsigned corner, bool large) {
    const int width = screen.width / (large ? 2 : 3);
    const int height = screen.height / (large ? 2 : 3);
    const int gap = margin(screen.width);
    const bool right = corner == POSITION_TOP_RIGHT || corner == POSITION_BOTTOM_RIGHT;
    const bool bottom = corner == POSITION_BOTTOM_LEFT || corner == POSITION_BOTTOM_RIGHT;
    const int x0 = right ? end - width : gap;
    const int y0 = bottom ? screen.height - gap - height : gap;
    return {x0, y0, x0 + width - 1, y0 + height - 1};
}

/// The pixels of a side of the screen that show pixel `at` of the frame; `first` and `last` bound
/// what of the frame the side shows.
struct Run {
    int from;
    int to; ///< inclusive
};
std::optional<Run> runOf(std::uint32_t at, int first, int last, int side) {
    if (at < static_cast<std::uint32_t>(first) || at > static_cast<std::uint32_t>(last))
        return std::nullopt;
    const int index = static_cast<int>(at) - first;
    const int count = last - first + 1;
    // Screen pixel i shows frame pixel (2i + 1)·count / (2·side), rounded down.
    const auto begin = [=](int pixel) { return (2 * pixel * side + count - 1) / (2 * count); };
    return Run{begin(index), begin(index + 1) - 1};
}

void drawLines(irmsim::Board& board, Picture& screen, const Rect& part, Rgb colour) {
    if (fieldValue(board, reg::line1Shown) != 0) {
        const std::uint32_t row = registerValue(board, reg::line1Row);
        if (const auto run = runOf(row, part.y0, part.y1, screen.height))
            fill(screen, {0, run->from, screen.width - 1, run->to}, colour);
    }
    if (fieldValue(board, reg::line2Shown) != 0) {
        const std::uint32_t column = registerValue(board, reg::line2Column);
        if (const auto run = runOf(column, part.x0, part.x1, screen.width))
            fill(screen, {run->from, 0, run->to, screen.height - 1}, colour);
    }
}

void drawInset(irmsim::Board& board, Picture& screen, const Composition& composition,
               unsigned mode) {
    const bool visible = mode == IMAGE_CCD_PIPE_IR;
    if (!visible && mode != IMAGE_IR_PIPE_CCD)
        return;
    const unsigned corner =
        fieldValue(board, visible ? reg::ccdInsetPosition : reg::irInsetPosition);
    const bool large = fieldValue(board, visible ? largeVisibleInset : largeInfraredInset) != 0;
    // The bar keeps the right edge to itself.
    const Rect bar = colourBar(screen.width, screen.height);
    const bool beside = fieldValue(board, reg::colorBar) != 0 && bar.x1 >= bar.x0;
    const int end = (beside ? bar.x0 - barBorder : screen.width) - margin(screen.width);
    const irmsim::Frame& frame = composition.frame();
    composition.draw(screen, insetPlace(screen, end, corner, large), visible ? IMAGE_CCD : IMAGE_IR,
                     {0, 0, frame.width - 1, frame.height - 1});
}

void drawBar(Picture& screen, const Colouring& colouring) {
    const Rect bar = colourBar(screen.width, screen.height);
    const int rowsEach = (bar.y1 - bar.y0 + 1) / barEntries;
    if (rowsEach == 0)
        return;
    fill(screen, grown(bar, barBorder), black);
    fill(screen, grown(bar, barBorder - 1), white);
    for (int y = bar.y0; y <= bar.y1; ++y) {
        const int entry = barEntries - 1 - (y - bar.y0) / rowsEach;
        fill(screen, {bar.x0, y, bar.x1, y}, colouring.entry(static_cast<std::size_t>(entry)));
    }
}

} // namespace

int screenScale(int frameWidth) { return frameWidth >= wideFrame ? 2 : 4; }

Rect colourBar(int screenWidth, int screenHeight) {
    const int rows = (screenHeight - 2 * barBorder) / barEntries * barEntries;
    const int width = screenWidth / 32;
    const int x1 = screenWidth - 1 - std::max(margin(screenWidth), barBorder);
    if (rows < barEntries || width < 1 || x1 - width + 1 < barBorder)
        return {0, 0, -1, -1};
    const int y0 = (screenHeight - rows) / 2;
    return {x1 - width + 1, y0, x1, y0 + rows - 1};
}

Picture screen(irmsim::Board& board, const Picture& visible) {
    const Composition composition(board, visible);
    const irmsim::Frame& frame = composition.frame();
    const int scale = screenScale(frame.width);
    Picture picture(frame.width * scale, frame.height * scale);
    const unsigned mode = fieldValue(board, reg::imageMode);
    if (mode == IMAGE_BLANK)
        return picture;
    const Rect part =
        mode == IMAGE_IR_MIX_CCD ? shownPart(frame) : Rect{0, 0, frame.width - 1, frame.height - 1};
    composition.draw(picture, {0, 0, picture.width - 1, picture.height - 1}, mode, part);
    drawLines(board, picture, part, composition.colouring().entry(lineEntry));
    drawInset(board, picture, composition, mode);
    if (fieldValue(board, reg::colorBar) != 0)
        drawBar(picture, composition.colouring());
    return picture;
}

} // namespace irmcore::app
