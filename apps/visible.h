#pragma once

#include "../sim/scene.h"
#include "picture.h"

namespace irmcore::app {

/// A picture as the visible camera might see the scene: things told from one another by their
/// temperatures, each with a colour and a light of its own. In the scene's size; the same for the
/// same scene.
Picture visiblePicture(const irmsim::Scene& scene);

} // namespace irmcore::app
