#pragma once

#include "../../device/records.h"
#include "../../display/levelspan.h"
#include "../../display/palette.h"
#include "../measure/places.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The window on the camera: plain values go from the thread of the window to that of the camera
/// (`Wishes`, `Simulation`), others come back (`Snapshot`). Nothing in them is shared.
namespace irmcore::view {

using app::measuring::Pixel;
using app::measuring::Span;

enum class ToolKind { spot, line, area };

/// What a person has placed on the picture.
struct Tool {
    int id = 0; ///< never used twice; readings carry it
    ToolKind kind = ToolKind::spot;
    Span place{}; ///< frame pixels, both ends included; of a spot both are the same
};

bool operator==(const Tool& a, const Tool& b);
inline bool operator!=(const Tool& a, const Tool& b) { return !(a == b); }

/// Measurement parameters as the window has them; the library takes floats.
struct Parameters {
    double emissivity = 0.95; ///< fraction, 0.01 to 1
    double distance = 5.0;    ///< m
    double humidity = 0.6;    ///< fraction
    double air = 25.0;        ///< °C
    double reflected = 25.0;  ///< °C
    double offset = 0.0;      ///< °C
};

bool operator==(const Parameters& a, const Parameters& b);
inline bool operator!=(const Parameters& a, const Parameters& b) { return !(a == b); }

/// An isotherm between two temperatures.
struct IsothermWish {
    bool on = false;
    int type = 1;                 ///< 0 below `low`, 1 between, 2 above `high`
    double low = 30.0;            ///< °C
    double high = 40.0;           ///< °C
    std::string colour = "Trans"; ///< one of `Isotherm::color`'s
};

bool operator==(const IsothermWish& a, const IsothermWish& b);
inline bool operator!=(const IsothermWish& a, const IsothermWish& b) { return !(a == b); }

/// How the picture is shown.
struct Look {
    COLOR_TABLE palette = COLOR_IRON;
    Mode_t window = LEVELSPAN_AUTO;
    double low = 20.0;  ///< °C, lower end of a window by hand
    double high = 40.0; ///< °C, upper end
    Image_Mode_t mode = IMAGE_IR;
    Image_Position_t inset = POSITION_BOTTOM_LEFT;
    double blend = 0.5; ///< share of what is blended in, 0 to 1
};

bool operator==(const Look& a, const Look& b);
inline bool operator!=(const Look& a, const Look& b) { return !(a == b); }

/// All that the window wants of the camera. The camera's thread brings the camera there, also after
/// it was lost and found.
struct Wishes {
    Parameters parameters;
    Look look;
    IsothermWish isotherm;
    int range = 0; ///< 0 or 1
    bool frozen = false;
    bool calibrates = true; ///< rounds of the shutter by itself, when they are due
    std::vector<Tool> tools;
    /// The `Snapshot::camera` that parameters and range are meant for. A camera that brings its own
    /// keeps these until it is the one.
    std::uint64_t camera = 0;
};

/// A rectangle of one temperature before the simulated scene.
struct SimulatedTarget {
    Pixel centre{192, 144};
    int width = 40;
    int height = 40;
    double celsius = 80.0;
};

bool operator==(const SimulatedTarget& a, const SimulatedTarget& b);
inline bool operator!=(const SimulatedTarget& a, const SimulatedTarget& b) { return !(a == b); }

/// What the window wants of the simulated camera's surroundings.
struct Simulation {
    int lens = 0; ///< 0 to 6
    bool coreSilent = false;
    bool unplugged = false; ///< the FPGA device
    std::optional<SimulatedTarget> target;
};

} // namespace irmcore::view
