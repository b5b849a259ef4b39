#pragma once

#include "fields.h"

#include "../wishes.h"

#include <array>
#include <cstddef>

namespace irmcore::view {

/// What can be chosen for the picture: limits and lists, with what a person reads. The two ends of
/// a window have limits so that either has room for the other.

inline constexpr NumberField lowField{"windowLow", -100.0, 999.5, 1.0, 1, " °C"};
inline constexpr NumberField highField{"windowHigh", -99.5, 1000.0, 1.0, 1, " °C"};
inline constexpr NumberField isoLowField{"isothermLow", -100.0, 999.5, 1.0, 1, " °C"};
inline constexpr NumberField isoHighField{"isothermHigh", -99.5, 1000.0, 1.0, 1, " °C"};
inline constexpr double leastWindow = 0.5; // °C between its ends

/// An entry of a list.
struct Entry {
    int data;
    const char* text;
};

inline constexpr std::array windowEntries{Entry{LEVELSPAN_AUTO, "Automatic"},
                                          Entry{LEVELSPAN_ZFT, "Histogram"},
                                          Entry{LEVELSPAN_HAND, "By hand"}};
inline constexpr std::array isoEntries{Entry{0, "Below"}, Entry{1, "Between"}, Entry{2, "Above"}};
inline constexpr std::array modeEntries{Entry{IMAGE_IR, "Infrared"},
                                        Entry{IMAGE_CCD, "Visible"},
                                        Entry{IMAGE_CCD_PIPE_IR, "Infrared, visible inset"},
                                        Entry{IMAGE_IR_PIPE_CCD, "Visible, infrared inset"},
                                        Entry{IMAGE_CCD_MIX_IR, "Visible blended into infrared"},
                                        Entry{IMAGE_IR_MIX_CCD, "Infrared blended into visible"},
                                        Entry{IMAGE_FUSION, "Infrared inside the isotherm"},
                                        Entry{IMAGE_BLANK, "No picture"}};
inline constexpr std::array insetEntries{
    Entry{POSITION_TOP_LEFT, "Top left"}, Entry{POSITION_TOP_RIGHT, "Top right"},
    Entry{POSITION_BOTTOM_LEFT, "Bottom left"}, Entry{POSITION_BOTTOM_RIGHT, "Bottom right"}};

/// What `Isotherm::color` takes, and what a person reads.
struct ColourEntry {
    const char* name;
    const char* text;
};
inline constexpr std::array isoColours{
    ColourEntry{"Trans", "See-through"}, ColourEntry{"Green", "Green"},
    ColourEntry{"Black", "Black"},       ColourEntry{"White", "White"},
    ColourEntry{"Red", "Red"},           ColourEntry{"Blue", "Blue"}};

/// -1 for what is no colour of an isotherm.
int colourIndex(const std::string& name);

} // namespace irmcore::view
