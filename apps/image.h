#pragma once

#include "picture.h"

#include <QImage>

namespace irmcore::app {

/// The picture as Qt draws on it: 32 bits a pixel, opaque.
QImage imageOf(const Picture& picture);

/// Writes `image` as PNG, as small as it gets. False when that fails: `error` says why and names
/// the file.
bool writePng(const QImage& image, const QString& file, QString& error);

} // namespace irmcore::app
