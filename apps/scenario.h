#pragma once

#include "../sim/scenario.h"
#include "../sim/warmup.h"

#include <optional>
#include <string>
#include <vector>

namespace irmcore::app {

/// What a scenario's script says.
struct Scenario {
    std::vector<irmsim::Event> events; ///< their texts are the lines
    std::vector<irmsim::ScenePlan> scenes;
};

/// A scene from its words: "bench", "uniform T", "gradient A B", or a PGM file's name, looked for
/// in `folder`. `size` gives the size of a built-in one. Nothing, and a text in `error`, when there
/// is no such scene.
std::optional<irmsim::ScenePlan> sceneOf(const std::vector<std::string>& words,
                                         const irmsim::ScenePlan& size, const std::string& folder,
                                         std::string& error);

/// Reads a script; docs/simulator.md has its commands. On failure nothing, and in `error` the
/// file, the line and the word: "walk.txt:3: 'targt' is no command".
std::optional<Scenario> readScenario(const std::string& file, const irmsim::ScenePlan& size,
                                     std::string& error);

} // namespace irmcore::app
