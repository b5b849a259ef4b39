#pragma once

#include "apps/view/window/tools.h"
#include "apps/view/window/wording.h"

#include <string>
#include <vector>

namespace irmcore::view::testing {

/// "1,2 30,40".
inline std::string textOf(const Span& s) {
    return std::to_string(s.from.x) + "," + std::to_string(s.from.y) + " " +
           std::to_string(s.to.x) + "," + std::to_string(s.to.y);
}

/// "S1 5,5 5,5; A1 1,2 3,4".
inline std::string textOf(const std::vector<PlacedTool>& tools) {
    std::string text;
    for (const PlacedTool& placed : tools)
        text += (text.empty() ? "" : "; ") +
                toolName(placed.tool.kind, placed.number).toStdString() + " " +
                textOf(placed.tool.place);
    return text;
}

} // namespace irmcore::view::testing
