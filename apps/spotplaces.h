#pragma once

#include "picture.h"
#include "scenereadings.h"
#include "shot.h"

#include <optional>
#include <vector>

namespace irmcore::app {

/// A pixel of the screen.
struct ScreenPoint {
    int x;
    int y;
};

/// The middle of the frame's pixel `x`, `y` on a screen that shows the `part` of the frame; nothing
/// outside that part.
std::optional<ScreenPoint> onScreen(const irmsim::Rect& part, int screenWidth, int screenHeight,
                                    int x, int y);

/// Where each spot lies on `shown`, the shot's screen in image mode `mode`; nothing for one that
/// is out of view or covered by an inset or the colour bar.
std::vector<std::optional<ScreenPoint>> spotPlaces(Shot& shot, const std::vector<Reading>& spots,
                                                   Image_Mode_t mode, const Picture& shown);

} // namespace irmcore::app
