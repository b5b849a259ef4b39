#pragma once

#include "diagram.h"

#include <QCoreApplication>

#include <memory>

/// What takes Qt Charts and Qt Svg. A build without them has these too, and they say so.
namespace irmcore::app {

/// The application object that drawing takes, see `makeOffscreen`.
std::unique_ptr<QCoreApplication> makeChartApplication(int& argc, char** argv);

/// Whether this build can draw; says so if not.
bool canDraw();

/// Draws a diagram into `file` as SVG; an absolute name. A text on what went wrong.
QString drawDiagram(const Diagram& diagram, const QString& file);

} // namespace irmcore::app
