#pragma once

#include "../sim/detector.h"
#include "../sim/scene.h"
#include "pictureplan.h"

#include <QStringList>

#include <optional>

namespace irmcore::app {

/// What the demonstration is to do.
struct DemoPlan {
    irmsim::Scene scene = irmsim::Scene::bench(384, 288);
    irmsim::Surroundings surroundings; ///< the truth, which the host is told as well
    int range = 0;
    bool accuracy = false;              ///< sweep whole ranges instead of measuring a scene
    bool warmUp = false;                ///< follow a camera that warms up instead
    std::optional<PicturePlan> picture; ///< write a picture instead
    bool json = false;
    bool verbose = false;
};

/// The plan that the words of `irmcore demo` ask for. Without one, `exitCode` says how the program
/// ends: what was wrong, or the help that was asked for, has been printed.
std::optional<DemoPlan> parseDemo(const QStringList& words, int& exitCode);

/// The range for a scene: the low one unless more of the scene's pixels lie within the high one.
int rangeFor(const irmsim::Scene& scene);

} // namespace irmcore::app
