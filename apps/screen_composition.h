#pragma once

#include "screen_colouring.h"

namespace irmcore::app {

/// How the visible picture is laid on the infrared one, about the middle of the frame.
struct Alignment {
    double dx = 0; ///< frame pixels to the right
    double dy = 0; ///< frame pixels down
    double zoom = 1;
};

/// The two cameras' pictures and how the image modes put them together, by the registers at the
/// moment of construction. The frame and the visible picture are watched. Reentrant.
class Composition {
public:
    Composition(irmsim::Board& board, const Picture& visible);

    const irmsim::Frame& frame() const { return m_frame; }
    const Colouring& colouring() const { return m_colouring; }

    /// Draws the `part` of the frame that is to fill `place` of the screen as image mode `mode`
    /// shows it, insets and overlays apart: infrared by the nearest pixel, visible smooth.
    void draw(Picture& screen, const irmsim::Rect& place, unsigned mode,
              const irmsim::Rect& part) const;

private:
    Rgb pixel(unsigned mode, std::uint16_t ad, double x, double y) const;
    Rgb visible(double x, double y, const Alignment& a) const;

    const irmsim::Frame& m_frame;
    const Picture& m_visible;
    Colouring m_colouring;
    Alignment m_aligned;
    unsigned m_visibleShare;  // of 128, in mode 4
    unsigned m_infraredShare; // of 128, in mode 5
};

} // namespace irmcore::app
