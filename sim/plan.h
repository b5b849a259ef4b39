#pragma once

#include "detector.h"
#include "scenario.h"
#include "stage.h"
#include "warmup.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace irmsim {

class Camera;

/// A recorded session to be replayed.
struct ReplayPlan {
    int tape = -1;     ///< the descriptor that it can be read from
    bool loop = false; ///< begins anew when it has ended
};

/// Everything about a simulated camera that a program is started on.
struct Plan {
    ScenePlan scene;
    Surroundings surroundings;
    int range = 0;                    ///< 0 or 1
    int lens = 0;                     ///< 0 to 6
    std::optional<double> inside;     ///< °C; without it, the reference of the range
    std::optional<WarmUp> warmUp;     ///< from power-up on
    double noise = 0.0;               ///< AD
    std::uint64_t seed = 1;           ///< of the noise
    double frameRate = 25.0;          ///< Hz
    double wallFactor = 0.0;          ///< times the wall clock; 0: simulated time
    bool pty = false;                 ///< a pty instead of the virtual port
    std::vector<ScenePlan> scenes;    ///< those that events show
    std::vector<Event> events;        ///< in the order of their times
    std::optional<ReplayPlan> replay; ///< answers instead of all the above
};

/// The environment variable that takes a plan to the process that is to run on it: the process's
/// id, a colon, and a descriptor from which the whole plan can be read. The id stays the same when
/// a process executes another program, so a script that starts a host takes its camera along; a
/// child has another one, and no camera.
inline constexpr char planVariable[] = "IRMSIM_PLAN";

/// The plan as bytes: lines of a keyword and its values, a PGM file's bytes after its line; "end"
/// ends it. Numbers are decimal, and exact.
///
///     irmsim-plan 1
///     scene uniform 160 120 37
///     surroundings 0.95 5 0.6 25 25
///     event 630000000000 targetMove 0 12 40 0 at 00:10:30 target cup move 12 40
///     end
std::string writePlan(const Plan& plan);

/// The same backwards. Nothing, and a text in `error`, for anything else.
std::optional<Plan> parsePlan(std::string_view bytes, std::string& error);

/// Sets a fresh camera up. False, with a text in `error`, when the scene cannot be drawn.
bool setUp(Camera& camera, const Plan& plan, std::string& error);

} // namespace irmsim
