#pragma once

#include "detector.h"

#include <string>

namespace irmsim {

/// The files that a camera carries: its settings and the calibration tables measured on the
/// simulated detector.
struct CameraDirectory {
    Surroundings believed;    ///< what the host is to believe of object and air
    int tempRange = 0;        ///< the range that the camera starts in
    bool modifyFiles = false; ///< with Modify files, which belong to the detector's modify slope
};

/// Writes `Parameter/Setting` and, for lenses 0 and 1 and ranges 0 and 1, the tables
/// `etc/calc_len<lens>_temp<range>.conf` and `..._default.conf` into `directory`, which is made
/// with its parents when missing; also, when asked for, the four `Parameter/Modify...` of these
/// lenses and ranges, all alike. False, with a text in `error`, when a file is there already
/// (then nothing is written) or cannot be written (what was written before stays).
bool writeCameraDirectory(const std::string& directory, const CameraDirectory& content,
                          std::string& error);

/// The same for range 0.
bool writeCameraDirectory(const std::string& directory, const Surroundings& believed,
                          std::string& error);

} // namespace irmsim
