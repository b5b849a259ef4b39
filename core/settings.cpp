#include "settings.h"

#include "plainnumber.h"

#include <QThread>

#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <system_error>
#include <unistd.h>

namespace irmcore::settings {

using namespace std::chrono_literals;

// A number beyond a float's range becomes infinity.
static_assert(std::numeric_limits<float>::is_iec559);

namespace {

/// Whether a file can be read to its end; says why not. QSettings takes one that cannot for an
/// empty one, and remembers that for as long as size and time stamp stay the same. What has been
/// read here lies in memory when QSettings reads it.
bool readable(const char* path) {
    struct Descriptor {
        int fd;
        ~Descriptor() { ::close(fd); }
    };
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        std::perror(path);
        return false;
    }
    const Descriptor file{fd};
    char part[4096];
    ssize_t n = 0;
    do {
        n = ::read(file.fd, part, sizeof part);
    } while (n > 0);
    if (n < 0)
        std::perror(path);
    return n == 0;
}

/// The file's name, once the next write to it is sure to get another time stamp than it has now.
/// The stamp is read without Qt: its local date costs several looks at the time zone's file. None
/// for what is no file, or cannot be read.
QString settled(const char* path) {
    namespace fs = std::filesystem;
    using std::chrono::floor, std::chrono::microseconds;
    constexpr microseconds resolution = 20ms; // time stamps come from a tick of at most 10 ms
    std::error_code missing;
    const auto written = fs::last_write_time(path, missing);
    if (missing == std::errc::no_such_file_or_directory || missing == std::errc::not_a_directory)
        return QString::fromUtf8(path);
    // In microseconds the difference of any two times fits.
    const auto age =
        floor<microseconds>(fs::file_time_type::clock::now()) - floor<microseconds>(written);
    if (!missing && age >= 0ms && age < resolution)
        QThread::usleep(static_cast<unsigned long>((resolution - age).count()));
    return fs::is_regular_file(path, missing) && readable(path) ? QString::fromUtf8(path)
                                                                : QString();
}

/// The low 16 bits of a hexadecimal text.
unsigned short lowHexadecimal(const QVariant& value) {
    return static_cast<unsigned short>(value.toString().toInt(nullptr, 16) & 0xFFFF);
}

} // namespace

File::File(const char* path) : m_settings(settled(path), QSettings::NativeFormat) {}

int File::integer(const QString& key, int fallback) const {
    return m_settings.value(key, fallback).toInt();
}

float File::number(const QString& key, double fallback) const {
    const QVariant value = m_settings.value(key, fallback);
    if (value.userType() == QMetaType::QString) {
        const QString text = value.toString();
        const QStringView view(text);
        if (const auto plain =
                irmcore::plainNumber({view.utf16(), static_cast<std::size_t>(view.size())}))
            return static_cast<float>(*plain);
    }
    const double read = value.toDouble();
    return std::isnan(read) ? 0.0F : static_cast<float>(read);
}

unsigned short File::hexadecimal(const QString& key, const char* fallback) const {
    return lowHexadecimal(m_settings.value(key, QLatin1String(fallback)));
}

std::optional<unsigned short> File::hexadecimal(const QString& key) const {
    const QVariant value = m_settings.value(key);
    return value.isValid() ? std::optional(lowHexadecimal(value)) : std::nullopt;
}

int storedTempRange() {
    File parameters(settings::file);
    parameters->beginGroup(QLatin1String(calibrationGroup));
    return parameters.integer(QLatin1String(tempRange), defaultTempRange);
}

} // namespace irmcore::settings
