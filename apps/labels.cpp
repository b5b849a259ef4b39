#include "labels.h"

#include <algorithm>
#include <array>

namespace irmcore::app {

namespace {

/// Places about a mark at a distance, the best first: beside it, above and below, then askew.
std::array<Box, 8> placesAbout(const Label& label, int distance) {
    const Box& mark = label.mark;
    const int left = mark.x - distance - label.width;
    const int right = mark.x + mark.width + distance;
    const int centre = mark.x + (mark.width - label.width) / 2;
    const int above = mark.y - distance - label.height;
    const int below = mark.y + mark.height + distance;
    const int middle = mark.y + (mark.height - label.height) / 2;
    const auto at = [&](int x, int y) { return Box{x, y, label.width, label.height}; };
    return {at(right, middle), at(left, middle), at(centre, above), at(centre, below),
            at(right, above),  at(right, below), at(left, above),   at(left, below)};
}

std::optional<Box> placeOne(const Box& area, const Label& label, const std::vector<Box>& taken) {
    const auto free = [&](const Box& place) {
        return lieIn(place, area) && std::none_of(taken.begin(), taken.end(), [&](const Box& box) {
                   return overlap(place, box);
               });
    };
    if (label.preferred && free(*label.preferred))
        return label.preferred;
    constexpr int step = 2;
    for (int distance = 1; distance < std::max(area.width, area.height); distance += step)
        for (const Box& place : placesAbout(label, distance))
            if (free(place))
                return place;
    return std::nullopt;
}

} // namespace

std::vector<std::optional<Box>> placeLabels(const Box& area, const std::vector<Label>& labels,
                                            std::vector<Box> taken) {
    for (const Label& label : labels)
        taken.push_back(label.mark);
    std::vector<std::optional<Box>> places;
    for (const Label& label : labels) {
        places.push_back(placeOne(area, label, taken));
        if (places.back())
            taken.push_back(*places.back());
    }
    return places;
}

} // namespace irmcore::app
