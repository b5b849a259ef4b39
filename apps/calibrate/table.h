#pragma once

#include "curve.h"
#include "points.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace irmcore::app::calibration {

/// The source of the points.
struct Source {
    double emissivity = 1.0;
    double reflected = 25.0; ///< °C before it
};

/// What a table is to be made of and for.
struct Task {
    std::vector<CalibrationPoint> points;
    Source source;
    int range = 0;
    int lens = 0;
    double extrapolate = 30.0; ///< °C beyond the points, at most
};

/// An entry of a table.
struct Entry {
    int celsius;
    int ad;
    bool extrapolated;
};

/// What came of the points of one temperature.
struct Residual {
    double celsius;   ///< of the source, their mean
    double ad;        ///< raw, their mean
    int points;       ///< how many
    double scatter;   ///< standard deviation of their counts, AD; 0 for one
    double fromLawAd; ///< point less law, AD: an outlier shows here
    double fromLaw;   ///< the same, °C
    double readingAd; ///< point less table, AD
    double reading;   ///< what the library reads there with this table, less the truth, °C
};

struct CalibrationTable {
    std::vector<Entry> entries;
    std::vector<Residual> residuals;
    PlanckLaw law;
};

/// The table temperature of radiation: that of a surface of emissivity 0.95 before 25 °C which
/// radiates as much as this source at `celsius`.
double tableTemp(double celsius, const Source& source);

/// Makes a table. Nothing, and a text in `error`, when the points do not make one.
std::optional<CalibrationTable> makeTable(const Task& task, QString& error);

/// The file that the library loads.
QByteArray fileOf(const CalibrationTable& table, const Task& task);

} // namespace irmcore::app::calibration
