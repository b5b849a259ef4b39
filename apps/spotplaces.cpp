#include "spotplaces.h"

#include "labels.h"

#include <algorithm>

namespace irmcore::app {

namespace {

/// The mode that shows the same picture without its inset.
Image_Mode_t withoutInset(Image_Mode_t mode) {
    switch (mode) {
    case IMAGE_CCD_PIPE_IR:
        return IMAGE_IR;
    case IMAGE_IR_PIPE_CCD:
        return IMAGE_CCD;
    default:
        return mode;
    }
}

/// The screen with nothing over it.
Picture bareScreen(Shot& shot, Image_Mode_t mode) {
    shot.host().setImageMode(withoutInset(mode));
    shot.host().fpga_switch_colorBar(false);
    Picture bare = shot.screen();
    shot.host().setImageMode(mode);
    shot.host().fpga_switch_colorBar(true);
    return bare;
}

bool covered(const Picture& bare, const Picture& shown, const ScreenPoint& at) {
    for (int y = std::max(at.y - spotReach, 0); y <= std::min(at.y + spotReach, bare.height - 1);
         ++y)
        for (int x = std::max(at.x - spotReach, 0); x <= std::min(at.x + spotReach, bare.width - 1);
             ++x)
            if (bare.at(x, y) != shown.at(x, y))
                return true;
    return false;
}

} // namespace

std::optional<ScreenPoint> onScreen(const irmsim::Rect& part, int screenWidth, int screenHeight,
                                    int x, int y) {
    if (x < part.x0 || x > part.x1 || y < part.y0 || y > part.y1)
        return std::nullopt;
    const auto middle = [](int at, int first, int last, int side) {
        return (2 * (at - first) + 1) * side / (2 * (last - first + 1));
    };
    return ScreenPoint{middle(x, part.x0, part.x1, screenWidth),
                       middle(y, part.y0, part.y1, screenHeight)};
}

std::vector<std::optional<ScreenPoint>> spotPlaces(Shot& shot, const std::vector<Reading>& spots,
                                                   Image_Mode_t mode, const Picture& shown) {
    std::vector<std::optional<ScreenPoint>> places(spots.size());
    if (mode == IMAGE_BLANK)
        return places;
    const irmsim::Frame& frame = shot.bench().camera().board().frame();
    const irmsim::Rect part = mode == IMAGE_IR_MIX_CCD
                                  ? irmsim::shownPart(frame)
                                  : irmsim::Rect{0, 0, frame.width - 1, frame.height - 1};
    const Picture bare = bareScreen(shot, mode);
    std::transform(spots.begin(), spots.end(), places.begin(), [&](const Reading& spot) {
        const auto place = onScreen(part, shown.width, shown.height, spot.x, spot.y);
        return place && !covered(bare, shown, *place) ? place : std::nullopt;
    });
    return places;
}

} // namespace irmcore::app
