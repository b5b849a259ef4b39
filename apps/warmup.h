#pragma once

#include <QString>

#include <cstdio>
#include <string>
#include <vector>

namespace irmcore::app {

/// How far readings were from the truth in one course of the camera's temperature, °C.
struct Course {
    std::string what; ///< the course, or what the host left out
    double worst = 0.0;
    double worstAt = 0.0;     ///< the target, °C
    double worstInside = 0.0; ///< the inside temperature then, °C
    double bound = 0.0;       ///< 0 where nothing is promised
    int readings = 0;
    int lost = 0;   ///< readings that carry no temperature ("L" or "H"), though they should
    int rounds = 0; ///< calibration rounds
};

/// Whether a course stayed within what is promised for it.
inline bool keepsBound(const Course& course) {
    return course.bound == 0.0 || (course.worst <= course.bound && course.lost == 0);
}

/// Lets the camera warm up from 26.5 to 45 °C inside and measures targets all the while, with easy
/// and hard parameters and with one step after another left out; then lets it settle at inside
/// temperatures from 5 to 55 °C in both ranges. On failure the list is empty and `error` says why.
std::vector<Course> warmUp(QString& error);

} // namespace irmcore::app
