#include "picturechoices.h"

#include "picturepanel.h"
#include "swatches.h"

#include <algorithm>

namespace irmcore::view {

namespace {

bool fits(double value, const NumberField& field) {
    return value >= field.low && value <= field.high;
}

/// Takes an end that its field can have; both stay as they are where the others would cross.
template <typename Ends>
void takeEnds(const Ends& from, const NumberField& lowest, const NumberField& highest, Ends& to) {
    const double low = fits(from.low, lowest) ? from.low : to.low;
    const double high = fits(from.high, highest) ? from.high : to.high;
    constexpr double rounding = 0.01; // tenths of a degree are not exact
    if (high < low + leastWindow - rounding)
        return;
    to.low = low;
    to.high = high;
}

} // namespace

int colourIndex(const std::string& name) {
    for (std::size_t i = 0; i < isoColours.size(); ++i)
        if (name == isoColours[i].name)
            return static_cast<int>(i);
    return -1;
}

Look PicturePanel::checked(const Look& look) {
    Look result;
    const auto has = [](const auto& entries, int data) {
        return std::any_of(entries.begin(), entries.end(),
                           [data](const Entry& entry) { return entry.data == data; });
    };
    if (std::any_of(namedPalettes.begin(), namedPalettes.end(),
                    [&](const NamedPalette& p) { return p.index == look.palette; }))
        result.palette = look.palette;
    takeEnds(look, lowField, highField, result);
    if (has(windowEntries, look.window))
        result.window = look.window;
    if (has(modeEntries, look.mode))
        result.mode = look.mode;
    if (has(insetEntries, look.inset))
        result.inset = look.inset;
    if (look.blend >= 0.0 && look.blend <= 1.0)
        result.blend = look.blend;
    return result;
}

IsothermWish PicturePanel::checked(const IsothermWish& isotherm) {
    IsothermWish result;
    result.on = isotherm.on;
    takeEnds(isotherm, isoLowField, isoHighField, result);
    if (isotherm.type >= 0 && isotherm.type <= 2)
        result.type = isotherm.type;
    if (colourIndex(isotherm.colour) >= 0)
        result.colour = isotherm.colour;
    return result;
}

} // namespace irmcore::view
