#include "screen_composition.h"

#include <algorithm>

namespace irmcore::app {

namespace {

constexpr Rgb black{0, 0, 0};
constexpr std::uint32_t full = 128;
constexpr double lifeSize = 256;

/// `share` of 128 parts of `b` over `a`.
Rgb blend(Rgb a, Rgb b, unsigned share) {
    const auto mix = [share](unsigned from, unsigned to) {
        return static_cast<std::uint8_t>((from * (full - share) + to * share + full / 2) / full);
    };
    return {mix(a.r, b.r), mix(a.g, b.g), mix(a.b, b.b)};
}

double signedByte(std::uint32_t byte) {
    return byte < 128 ? static_cast<double>(byte) : static_cast<double>(byte) - 256.0;
}

Alignment alignmentOf(irmsim::Board& board) {
    const std::uint32_t zoom = registerValue(board, reg::mixZoom);
    return {signedByte(registerValue(board, reg::mixDx)),
            signedByte(registerValue(board, reg::mixDy)), zoom == 0 ? 1.0 : zoom / lifeSize};
}

/// A place along one side of the frame in the visible picture's own pixels.
double aligned(double at, double offset, double zoom, int frameSide, int side) {
    const double middle = frameSide / 2.0;
    return ((at - offset - middle) / zoom + middle) * side / frameSide;
}

} // namespace

Composition::Composition(irmsim::Board& board, const Picture& visible)
    : m_frame(board.frame()), m_visible(visible), m_colouring(board), m_aligned(alignmentOf(board)),
      m_visibleShare(std::min(registerValue(board, reg::ccdMixIrBlend), full)),
      m_infraredShare(std::min(registerValue(board, reg::irMixCcdBlend), full)) {}

/// The visible picture at a place of the frame, whose first pixel has its middle at 0.5, 0.5; black
/// where it does not reach.
Rgb Composition::visible(double x, double y, const Alignment& a) const {
    const double u = aligned(x, a.dx, a.zoom, m_frame.width, m_visible.width);
    const double v = aligned(y, a.dy, a.zoom, m_frame.height, m_visible.height);
    if (!(u >= 0 && v >= 0 && u < m_visible.width && v < m_visible.height))
        return black;
    const double left = std::clamp(u - 0.5, 0.0, m_visible.width - 1.0);
    const double top = std::clamp(v - 0.5, 0.0, m_visible.height - 1.0);
    const int x0 = static_cast<int>(left);
    const int y0 = static_cast<int>(top);
    const int x1 = std::min(x0 + 1, m_visible.width - 1);
    const int y1 = std::min(y0 + 1, m_visible.height - 1);
    const auto right = static_cast<unsigned>((left - x0) * full);
    const auto down = static_cast<unsigned>((top - y0) * full);
    return blend(blend(m_visible.at(x0, y0), m_visible.at(x1, y0), right),
                 blend(m_visible.at(x0, y1), m_visible.at(x1, y1), right), down);
}

Rgb Composition::pixel(unsigned mode, std::uint16_t ad, double x, double y) const {
    switch (mode) {
    case IMAGE_IR:
    case IMAGE_CCD_PIPE_IR:
        return m_colouring.of(ad);
    case IMAGE_CCD:
    case IMAGE_IR_PIPE_CCD:
        return visible(x, y, Alignment{});
    case IMAGE_CCD_MIX_IR:
        return blend(m_colouring.of(ad), visible(x, y, m_aligned), m_visibleShare);
    case IMAGE_IR_MIX_CCD:
        return blend(visible(x, y, m_aligned), m_colouring.of(ad), m_infraredShare);
    case IMAGE_FUSION:
        return m_colouring.inBand(ad) ? m_colouring.of(ad) : visible(x, y, m_aligned);
    default:
        return black;
    }
}

void Composition::draw(Picture& screen, const irmsim::Rect& place, unsigned mode,
                       const irmsim::Rect& part) const {
    const int width = place.x1 - place.x0 + 1;
    const int height = place.y1 - place.y0 + 1;
    const int columns = part.x1 - part.x0 + 1;
    const int rows = part.y1 - part.y0 + 1;
    for (int j = 0; j < height; ++j) {
        const int y = part.y0 + (2 * j + 1) * rows / (2 * height);
        const double middleY = part.y0 + (j + 0.5) * rows / height;
        for (int i = 0; i < width; ++i) {
            const int x = part.x0 + (2 * i + 1) * columns / (2 * width);
            const double middleX = part.x0 + (i + 0.5) * columns / width;
            screen.at(place.x0 + i, place.y0 + j) = pixel(mode, m_frame.at(x, y), middleX, middleY);
        }
    }
}

} // namespace irmcore::app
