#include "framefile.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

#include <cstring>

namespace irmcore::app::measuring {

bool writesPng() { return true; }

QByteArray pngOf(const ThermalFrame& frame, const std::vector<quint16>& words, const QString& note,
                 QString& error) {
    QImage image(frame.width, frame.height, QImage::Format_Grayscale16);
    for (int y = 0; y < frame.height; ++y) {
        const auto row = words.begin() + static_cast<std::ptrdiff_t>(frame.index({0, y}));
        std::memcpy(image.scanLine(y), &*row,
                    sizeof(quint16) * static_cast<std::size_t>(frame.width));
    }
    image.setText(QStringLiteral("Description"), note);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    if (!writer.write(image)) {
        error = QStringLiteral("cannot make the picture: %1").arg(writer.errorString());
        return {};
    }
    return bytes;
}

} // namespace irmcore::app::measuring
