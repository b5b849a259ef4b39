#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace irmcore::app::calibration {

/// A black body as the camera saw it.
struct CalibrationPoint {
    double celsius; ///< its temperature
    double ad;      ///< raw count, mean of frames
};

/// Reads points from CSV: temperature and raw count, in this order or in the one that a header
/// names. Columns are parted by commas, semicolons or tabs; empty lines and those that begin with #
/// are passed over. Any bytes may be given. Nothing, and in `error` the line and what is wrong with
/// it, for anything else.
std::optional<std::vector<CalibrationPoint>> readPoints(const QByteArray& bytes, QString& error);

/// The points as `readPoints` takes them, `comment` in the first line.
QByteArray writePoints(const std::vector<CalibrationPoint>& points, const QString& comment);

} // namespace irmcore::app::calibration
