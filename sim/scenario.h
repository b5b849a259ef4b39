#pragma once

#include "clock.h"
#include "stage.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace irmsim {

/// What a scenario can make happen, and the values that it takes; °C, s and pixels. A target is
/// named by its number, which is its place in the painting order.
enum class What {
    scene,       ///< number among the scenario's scenes
    targetAt,    ///< target, centre x and y, width, height, temperature
    targetMove,  ///< target, centre x and y, seconds that it takes
    targetTemp,  ///< target, temperature
    targetOff,   ///< target
    inside,      ///< shutter and sensor temperature
    sensor,      ///< sensor temperature
    shutter,     ///< shutter temperature
    warmUp,      ///< temperature at the end, time constant
    ambient,     ///< temperature of the air and of what objects reflect
    lens,        ///< index
    range,       ///< 0 or 1
    freeze,      ///< 0 or 1
    coreSilent,  //
    coreLate,    ///< seconds
    coreGarbled, ///< offset of the byte
    coreNormal,  //
    corePowerUp, //
    transfer,    ///< which from now (0: none), error or 0, bytes, 1 for from then on
    device,      ///< 0 gone, 1 back
    port,        ///< 0 gone, 1 back
};

/// The name in a plan and the number of values of each.
struct WhatOf {
    const char* name;
    std::size_t values;
};
inline constexpr std::array<WhatOf, 21> whats{
    {{"scene", 1},       {"targetAt", 6},   {"targetMove", 4},  {"targetTemp", 2}, {"targetOff", 1},
     {"inside", 1},      {"sensor", 1},     {"shutter", 1},     {"warmUp", 2},     {"ambient", 1},
     {"lens", 1},        {"range", 1},      {"freeze", 1},      {"coreSilent", 0}, {"coreLate", 1},
     {"coreGarbled", 1}, {"coreNormal", 0}, {"corePowerUp", 0}, {"transfer", 4},   {"device", 1},
     {"port", 1}}};

/// One thing that happens to a camera by itself.
struct Event {
    Time at{0}; ///< simulated time since power-up
    What what = What::scene;
    std::array<double, 6> values{};
    std::string text; ///< put on standard error when it happens, unless empty
};

/// What happens to a camera as its time passes: events in the order of their times, and targets on
/// their way. Not locked.
class Scenario {
public:
    Scenario() = default;
    /// Events out of order happen as soon as those before them have.
    Scenario(std::vector<Event> events, std::vector<ScenePlan> scenes);

    /// When something is to happen next.
    Time due() const { return m_due; }
    /// The next event that is due by `now`, taken off the list; null when there is none.
    const Event* take(Time now);
    /// After the events: moves targets on, and says when something happens next. True when the
    /// picture has changed.
    bool bring(Time now);

    const std::vector<ScenePlan>& scenes() const { return m_scenes; }
    Stage stage; ///< its targets are empty until an event places one

private:
    std::vector<Event> m_events;
    std::vector<ScenePlan> m_scenes;
    std::size_t m_next = 0;
    Time m_due = Time::max();
};

} // namespace irmsim
