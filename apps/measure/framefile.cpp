#include "framefile.h"

#include <QRegularExpression>
#include <QSaveFile>

#include <algorithm>
#include <cmath>
#include <utility>

namespace irmcore::app::measuring {

namespace {

constexpr double kelvin = 273.15;

QByteArray pgmOf(const ThermalFrame& frame, const std::vector<quint16>& words,
                 const QString& note) {
    QByteArray bytes("P5\n");
    for (const QString& line : note.split(QLatin1Char('\n')))
        bytes += "# " + line.toUtf8() + '\n';
    bytes += QByteArray::number(frame.width) + ' ' + QByteArray::number(frame.height) + "\n65535\n";
    for (const quint16 word : words) {
        bytes += static_cast<char>(static_cast<unsigned char>(word >> 8));
        bytes += static_cast<char>(static_cast<unsigned char>(word & 0xFF));
    }
    return bytes;
}

/// A line a row; degrees with two decimals, or the status where a pixel is not "OK".
QByteArray csvOf(const ThermalFrame& frame, Scale scale) {
    QByteArray bytes;
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < frame.width; ++x) {
            const Measured pixel = frame.at({x, y});
            if (scale == Scale::counts)
                bytes += QByteArray::number(pixel.ad.value_or(0));
            else if (pixel.status == QLatin1String("OK"))
                bytes += QByteArray::number(pixel.celsius, 'f', 2);
            else
                bytes += pixel.status.toLatin1();
            bytes += x + 1 < frame.width ? ',' : '\n';
        }
    return bytes;
}

} // namespace

Words wordsOf(const ThermalFrame& frame, Scale scale) {
    if (scale == Scale::counts)
        return {frame.counts, 0};
    Words result;
    result.words.reserve(frame.celsius.size());
    const double perKelvin = scale == Scale::centikelvin ? 100.0 : 10.0;
    for (const float celsius : frame.celsius) {
        const double value = std::round((static_cast<double>(celsius) + kelvin) * perKelvin);
        const double kept = std::clamp(value, 0.0, 65535.0);
        result.cut += kept != value ? 1 : 0;
        result.words.push_back(static_cast<quint16>(kept));
    }
    return result;
}

QString meaningOf(Scale scale) {
    switch (scale) {
    case Scale::centikelvin:
        return QStringLiteral("hundredths of a kelvin: celsius = value / 100 - 273.15");
    case Scale::decikelvin:
        return QStringLiteral("tenths of a kelvin: celsius = value / 10 - 273.15");
    case Scale::counts:
        break;
    }
    return QStringLiteral("raw counts (AD)");
}

QString numberedName(const QString& name, int number) {
    static const QRegularExpression place(QStringLiteral("%(?:0([1-9]))?d"));
    const QRegularExpressionMatch found = place.match(name);
    const auto padded = [&](int width) {
        return QStringLiteral("%1").arg(number, width, 10, QLatin1Char('0'));
    };
    if (!found.hasMatch()) {
        const auto ending = name.lastIndexOf(QLatin1Char('.'));
        return name.left(ending) + QLatin1Char('-') + padded(4) + name.mid(ending);
    }
    return name.left(found.capturedStart()) + padded(found.captured(1).toInt()) +
           name.mid(found.capturedEnd());
}

bool writeFrame(const ThermalFrame& frame, Scale scale, const QString& note, const QString& file,
                QString& error) {
    QByteArray bytes;
    if (file.endsWith(QLatin1String(".csv")))
        bytes = csvOf(frame, scale);
    else if (const std::vector<quint16> words = wordsOf(frame, scale).words;
             file.endsWith(QLatin1String(".pgm")))
        bytes = pgmOf(frame, words, note);
    else
        bytes = pngOf(frame, words, note, error);
    if (bytes.isEmpty())
        return false;
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.commit()) {
        error = QStringLiteral("cannot write %1: %2").arg(file, out.errorString());
        return false;
    }
    return true;
}

} // namespace irmcore::app::measuring
