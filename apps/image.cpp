#include "image.h"

#include <QBuffer>
#include <QFile>
#include <QImageWriter>

namespace irmcore::app {

QImage imageOf(const Picture& picture) {
    QImage image(picture.width, picture.height, QImage::Format_RGB32);
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) {
            const Rgb& pixel = picture.at(x, y);
            image.setPixel(x, y, qRgb(pixel.r, pixel.g, pixel.b));
        }
    return image;
}

bool writePng(const QImage& image, const QString& file, QString& error) {
    // Made in memory first: what then fails is the file, and the system says why.
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    writer.setQuality(0); // the strongest compression
    if (!writer.write(image)) {
        error = QStringLiteral("cannot make the picture: %1").arg(writer.errorString());
        return false;
    }
    QFile out(file);
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.flush()) {
        error = QStringLiteral("cannot write %1: %2").arg(file, out.errorString());
        return false;
    }
    return true;
}

} // namespace irmcore::app
