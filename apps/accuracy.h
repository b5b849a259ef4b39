#pragma once

#include "../core/range.h"
#include "../sim/scene.h"

#include <QString>

#include <string>
#include <vector>

namespace irmcore::app {

/// The largest errors of readings over a whole measuring range, camera at its reference inside
/// temperature. All in °C.
struct Accuracy {
    std::string conditions;
    int range = 0;
    double worst = 0.0;       ///< largest error of a reading
    double worstAt = 0.0;     ///< the object temperature where it occurs
    double calibration = 0.0; ///< largest error that unrounded counts would have: the table's steps
                              ///< and the whole counts of its entries and of the shutter term
    double quantisation = 0.0; ///< largest error from rounding the detector's counts
    double bound = 0.0;        ///< what `worst` has to stay within
    int readings = 0;
};

/// Whether a sweep stayed within its bound.
inline bool keepsBound(const Accuracy& sweep) { return sweep.worst <= sweep.bound; }

/// A scene of 160x120 whose pixels go through a range's temperatures one by one.
irmsim::Scene rampOver(const RangeLimits& limits);

/// Sweeps both ranges, with easy and with hard measurement parameters. On failure the list is empty
/// and `error` says why.
std::vector<Accuracy> sweep(QString& error);

} // namespace irmcore::app
