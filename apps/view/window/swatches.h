#pragma once

#include "../wishes.h"

#include <QIcon>
#include <QString>

#include <array>

namespace irmcore::view {

/// A palette that can be chosen.
struct NamedPalette {
    COLOR_TABLE index;
    const char* name;
};
inline constexpr std::array namedPalettes{
    NamedPalette{COLOR_IRON, "Iron"},
    NamedPalette{COLOR_RAINBOW, "Rainbow"},
    NamedPalette{COLOR_GREY, "Grey"},
    NamedPalette{COLOR_GREY_INVERTED, "Grey inverted"},
    NamedPalette{COLOR_SPIA, "Sepia"},
    NamedPalette{COLOR_BLUE_RED, "Blue to red"},
    NamedPalette{COLOR_HOT_COLD, "Hot and cold"},
    NamedPalette{COLOR_FEATHER, "Feather"},
};

/// A strip of the palette, coldest left.
QIcon swatch(COLOR_TABLE palette, QSize size);

} // namespace irmcore::view
