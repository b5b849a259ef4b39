#pragma once

#include "table.h"

#include <QJsonObject>

#include <cstdio>

namespace irmcore::app::calibration {

/// Prints what every point is off, as a table for people or as JSON, one object a line:
/// temperature, ad, points, scatter, lawAd, law, tableAd, table.
void printResiduals(std::FILE* to, const CalibrationTable& table, bool json);

/// One object a line.
void printLine(std::FILE* to, const QJsonObject& object);
/// Four decimals.
double shortened(double value);

} // namespace irmcore::app::calibration
