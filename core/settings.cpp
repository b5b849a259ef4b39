#include "settings.h"

#include <QDateTime>
#include <QFileInfo>
#include <QThread>

#include <cmath>

namespace irmcore::settings {

namespace {

/// Makes sure that the next write to the file gets another time stamp than the one it has.
void letStampSettle(const char* path) {
    constexpr qint64 resolution = 10; // ms, longer than the tick that file time stamps come from
    const QFileInfo info(QString::fromUtf8(path));
    if (!info.exists())
        return;
    const qint64 age = info.lastModified().msecsTo(QDateTime::currentDateTime());
    if (age >= 0 && age < resolution)
        QThread::msleep(static_cast<unsigned long>(resolution - age));
}

} // namespace

File::File(const char* path)
    : m_settings((letStampSettle(path), QString::fromUtf8(path)), QSettings::NativeFormat) {}

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

} // namespace irmcore::settings
