#pragma once

#include <optional>
#include <vector>

namespace irmcore::app {

/// Pixels that a spot's cross reaches from its middle.
inline constexpr int spotReach = 6;

/// A rectangle of pixels; x and y are its upper left corner.
struct Box {
    int x;
    int y;
    int width;
    int height;
};

constexpr bool overlap(const Box& a, const Box& b) {
    return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height &&
           b.y < a.y + a.height;
}

constexpr bool lieIn(const Box& inner, const Box& outer) {
    return inner.x >= outer.x && inner.y >= outer.y &&
           inner.x + inner.width <= outer.x + outer.width &&
           inner.y + inner.height <= outer.y + outer.height;
}

/// A label that belongs beside a mark.
struct Label {
    Box mark;
    int width;
    int height;
    std::optional<Box> preferred = std::nullopt; ///< where it goes if there is room
};

/// A place for each label: inside `area`, beside its mark or as near to it as there is room,
/// clear of `taken`, of all marks and of the other labels. Nothing where there is no room at all.
std::vector<std::optional<Box>> placeLabels(const Box& area, const std::vector<Label>& labels,
                                            std::vector<Box> taken);

} // namespace irmcore::app
