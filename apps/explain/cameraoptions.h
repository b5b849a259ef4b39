#pragma once

#include "opened.h"

class QCommandLineParser;

namespace irmcore::app {

/// Adds --directory, --range and --lens.
void addCameraOptions(QCommandLineParser& parser);
/// Takes them; a text on what is wrong with one.
QString takeCamera(const QCommandLineParser& parser, CameraChoice& choice);

} // namespace irmcore::app
