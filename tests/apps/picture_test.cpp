#include "apps/labels.h"

#include <gtest/gtest.h>

namespace {

using irmcore::app::Box;
using irmcore::app::Label;

TEST(Labels, coverNothingAndStayInTheArea) {
    const Box area{0, 0, 320, 240};
    std::vector<Box> taken{{300, 20, 10, 200}}; // a bar
    std::vector<Label> labels{{{300, 20, 10, 0}, 56, 16, Box{254, 3, 56, 16}}};
    for (const int x : {0, 3, 150, 153, 280, 307}) // at the edges, and on top of each other
        for (const int y : {30, 35, 110, 227})
            labels.push_back({{x, y, 13, 13}, 48, 16});
    const auto places = irmcore::app::placeLabels(area, labels, taken);
    ASSERT_EQ(places.size(), labels.size());
    for (const Label& label : labels)
        taken.push_back(label.mark);
    for (const auto& place : places) {
        ASSERT_TRUE(place);
        EXPECT_TRUE(lieIn(*place, area)) << place->x << ',' << place->y;
        for (const Box& box : taken)
            EXPECT_FALSE(overlap(*place, box)) << place->x << ',' << place->y;
        taken.push_back(*place);
    }
    EXPECT_EQ(places[0]->x, 254); // the preferred place was free
}

TEST(Labels, withoutRoomThereIsNone) {
    const std::vector<Label> labels{{{10, 10, 5, 5}, 30, 8}, {{10, 30, 5, 5}, 60, 8}};
    const auto places = irmcore::app::placeLabels({0, 0, 50, 50}, labels, {});
    EXPECT_TRUE(places[0]);
    EXPECT_FALSE(places[1]); // wider than the area
}

} // namespace
