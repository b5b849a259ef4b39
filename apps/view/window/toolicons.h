#pragma once

#include <QColor>
#include <QIcon>

namespace irmcore::view {

enum class ToolIcon { select, spot, line, area, marks, freeze, calibrate };

/// Drawn in one colour, sharp at usual and double density.
QIcon toolIcon(ToolIcon which, const QColor& colour);

} // namespace irmcore::view
