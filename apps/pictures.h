#pragma once

#include "demoplan.h"

#include <QCoreApplication>

#include <cstdio>
#include <memory>

/// What takes Qt's Gui. A build without it has these too, and they say so.
namespace irmcore::app {

/// The application object: one that can draw, without a display, for `draws`. The environment
/// is changed for that. `argc` and `argv` outlive the object and stay as they are.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool draws);

/// Writes the picture that `plan` asks for and prints a line about it. Returns the exit code.
int drawDemo(const DemoPlan& plan, std::FILE* out);

/// Writes the sheet of all palettes into `file`, an absolute name. Returns the exit code.
int drawPalettes(const QString& file);

} // namespace irmcore::app
