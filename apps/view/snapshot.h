#pragma once

#include "../measure/reading.h"
#include "wishes.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace irmcore::view {

/// One temperature.
struct Value {
    Pixel at{};
    std::uint16_t ad = 0;
    std::string status = "NULL"; ///< "OK", "L", "LE", "HE", "H"; "NULL" when nothing came
    double celsius = 0.0; ///< with "L" and "H" the range's limit, or -4001 and 4001 where the
                          ///< table ends

    bool ok() const { return status == "OK"; }
};

/// What a tool reads. A spot has its value in `hottest`; `coldest` and `mean` are the same.
struct ToolReading {
    int id = 0;
    ToolKind kind = ToolKind::spot;
    Value hottest;
    Value coldest;
    Value mean; ///< of an area that of its mean count; without a place
};

enum class SourceKind { simulated, real, recording };

enum class CoreState { unknown, answers, silent };

/// A picture in colours, 0xFFRRGGBB, row by row from the top.
struct Coloured {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;
};

/// What the camera's thread tells the window: one frame with all that belongs to it. Complete in
/// itself, and never changed once it is out.
struct Snapshot {
    std::uint64_t number = 0;                    ///< rises
    std::chrono::steady_clock::time_point taken; ///< when the frame was read
    double seconds = 0.0; ///< camera's time: since power-up if simulated or recorded

    std::uint64_t camera = 0; ///< counts those that were opened, from 1
    SourceKind source = SourceKind::simulated;
    std::string sourceName;            ///< for a person: "simulated camera", "session.irmrec"
    std::vector<std::string> troubles; ///< what is wrong, in plain words, the worst first

    app::measuring::ThermalFrame frame;   ///< empty before the first one
    Coloured picture;                     ///< the frame, or a whole number of times its size
    std::array<std::uint32_t, 256> bar{}; ///< palette, coldest first
    Value barLow;                         ///< temperature at the lower end of the window
    Value barHigh;                        ///< at the upper end

    std::vector<ToolReading> readings; ///< of the tools last wished, in their order
    Value hottest;                     ///< of the frame
    Value coldest;

    /// What the camera's own files or a recording say, if it is not one made up for the window; set
    /// once it has been there.
    std::optional<Parameters> ownParameters;
    int ownRange = 0;

    bool present = false; ///< the camera is there; else the picture is the last one that was seen
    bool settled = false; ///< readings are to be relied on: calibrated since start or change, and
                          ///< the core answered
    bool calibrating = false; ///< the shutter is closed, the picture is the one from before
    bool frozen = false;
    int range = 0;
    int lens = -1;                 ///< -1: none
    double shutterTemp = 0.0;      ///< °C
    double sensorTemp = 0.0;       ///< °C
    double drift = 0.0;            ///< °C since the last calibration
    double sinceCalibration = 0.0; ///< s
    int calibrations = 0;
    CoreState core = CoreState::unknown;
    bool mixes = false;      ///< other image modes than infrared have an effect somewhere
    bool hasVisible = false; ///< the visible camera's picture can be shown: simulated cameras only
    double framesASecond = 0.0; ///< that were read, over the last second
};

} // namespace irmcore::view
