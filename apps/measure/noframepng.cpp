// In place of PNG files in a build without Qt's Gui.
#include "framefile.h"

namespace irmcore::app::measuring {

bool writesPng() { return false; }

QByteArray pngOf(const ThermalFrame& /*frame*/, const std::vector<quint16>& /*words*/,
                 const QString& /*note*/, QString& error) {
    error = QStringLiteral("this build has no pictures (Qt Gui was missing)");
    return {};
}

} // namespace irmcore::app::measuring
