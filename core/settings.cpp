#include "settings.h"

#include <QDateTime>
#include <QFileInfo>
#include <QThread>

#include <cmath>
#include <limits>

namespace irmcore::settings {

// A number beyond a float's range becomes infinity.
static_assert(std::numeric_limits<float>::is_iec559);

namespace {

/// The file's name, once the next write to it is sure to get another time stamp than it has now.
QString settled(const char* path) {
    constexpr qint64 resolution = 20; // ms; time stamps come from a tick of at most 10 ms
    QString name = QString::fromUtf8(path);
    const QFileInfo info(name);
    if (!info.exists())
        return name;
    const qint64 age = info.lastModified().msecsTo(QDateTime::currentDateTime());
    if (age >= 0 && age < resolution)
        QThread::msleep(static_cast<unsigned long>(resolution - age));
    return name;
}

} // namespace

File::File(const char* path) : m_settings(settled(path), QSettings::NativeFormat) {}

int File::integer(const QString& key, int fallback) const {
    return m_settings.value(key, fallback).toInt();
}

float File::number(const QString& key, double fallback) const {
    const double value = m_settings.value(key, fallback).toDouble();
    return std::isnan(value) ? 0.0F : static_cast<float>(value);
}

unsigned short File::hexadecimal(const QString& key, const char* fallback) const {
    const QString text = m_settings.value(key, QLatin1String(fallback)).toString();
    return static_cast<unsigned short>(text.toInt(nullptr, 16) & 0xFFFF);
}

int storedTempRange() {
    File parameters(settings::file);
    parameters->beginGroup(QLatin1String(calibrationGroup));
    return parameters.integer(QLatin1String(tempRange), defaultTempRange);
}

} // namespace irmcore::settings
