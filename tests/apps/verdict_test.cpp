#include "apps/verdict.h"

#include <gtest/gtest.h>

namespace {

using irmcore::app::isRight;
using irmcore::app::Reading;

TEST(Verdict, statusAndTemperatureMustBothFitTheTruth) {
    struct Case {
        const char* status;
        float temperature;
        double truth;
        bool right;
    };
    const Case cases[] = {
        {"OK", 20.15F, 20.0, true},  {"OK", 20.25F, 20.0, false},  {"LE", 20.0F, 20.0, false},
        {"LE", -21.0F, -21.1, true}, {"OK", -21.0F, -21.1, false}, {"L", -20.0F, -21.1, false},
        {"L", -20.0F, -30.0, true},  {"L", -4001.0F, -30.0, true}, {"H", 150.0F, -30.0, false},
        {"HE", 151.0F, 151.0, true}, {"HE", 151.5F, 151.0, false}, {"H", 150.0F, 160.0, true},
        {"OK", 150.0F, 150.1, true}, // on the edge both are right
        {"HE", 150.2F, 150.1, true}, {"H", 150.0F, 150.1, false},  {"NULL", 20.0F, 20.0, false},
    };
    for (const Case& c : cases) {
        Reading reading;
        std::snprintf(reading.value.status, sizeof(reading.value.status), "%s", c.status);
        reading.value.temp = c.temperature;
        reading.truth = c.truth;
        EXPECT_EQ(isRight(reading, {-20, 150}, 0.20), c.right)
            << c.status << ' ' << c.temperature << " for " << c.truth;
    }
}

} // namespace
