#pragma once

#include "../../measure/reading.h"
#include "places.h"

#include <QDateTime>
#include <QString>

#include <optional>
#include <vector>

class FPGA;

namespace irmcore::app::measuring {

/// One temperature.
struct Measured {
    std::optional<Pixel> at;
    std::optional<int> ad; ///< raw count
    QString status;        ///< "OK", "L", "LE", "HE" or "H"
    double celsius = 0.0;  ///< with "L" and "H" the range's limit
};

/// A whole frame in degrees, row by row from the top.
struct ThermalFrame {
    int width = 0;
    int height = 0;
    std::vector<unsigned short> counts;
    std::vector<float> celsius;
    std::vector<unsigned char> status; ///< 0 is "OK"; the others as `statusName`

    std::size_t index(Pixel at) const {
        return static_cast<std::size_t>(at.y) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(at.x);
    }
    Measured at(Pixel pixel) const;
    /// Pixels that are not "OK".
    int notOk() const;
};

/// Reads the present frame and its temperatures by the camera's own parameters: 384x288 if `big`,
/// else 160x120. Nothing when it does not come whole.
std::optional<ThermalFrame> readThermalFrame(FPGA& host, bool big);

/// The word for a status of `FPGA::getFrameTemp`.
QString statusName(unsigned char status);

/// What was measured at one of the places asked for.
struct Finding {
    enum class Kind { spot, hottest, coldest, area, line, frame };
    Kind kind;
    int number = 0;               ///< from 1 among its kind; 0 where there is but one
    std::optional<Span> span;     ///< of an area or line
    std::vector<Measured> values; ///< one; a line's profile; maximum, minimum, mean of the others
};

/// Everything measured at one time.
struct Batch {
    int number = 1;                      ///< counts the times, from 1
    QDateTime time;                      ///< with the offset from UTC
    std::optional<double> cameraSeconds; ///< since power-up, of a simulated camera
    std::vector<Finding> findings;
    std::optional<ThermalFrame> frame;
};

} // namespace irmcore::app::measuring
