#include "settings.h"

#include "plainnumber.h"

#include <QThread>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <new>
#include <system_error>
#include <unistd.h>

namespace irmcore::settings {

using namespace std::chrono_literals;

// A number beyond a float's range becomes infinity.
static_assert(std::numeric_limits<float>::is_iec559);

namespace {

/// Says why a file counts as one without keys.
void report(const char* path, int error) {
    errno = error;
    std::perror(path);
}

/// Whether a file can be read to its end, and has not more than `largestFile` bytes; says why not.
/// QSettings takes one that cannot for an empty one, and remembers that for as long as size and
/// time stamp stay the same. What has been read here lies in memory when QSettings reads it.
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
    ssize_t size = 0;
    do {
        n = ::read(file.fd, part, sizeof part);
        size += n;
    } while (n > 0 && size <= largestFile);
    if (n != 0)
        report(path, n < 0 ? errno : EFBIG);
    return n == 0;
}

/// The file's name, once the next write to it is sure to get another time stamp than it has now.
/// The stamp is read without Qt: its local date costs several looks at the time zone's file. None
/// for what is no file, or cannot be read.
QString settled(const char* path) {
    namespace fs = std::filesystem;
    using std::chrono::floor, std::chrono::microseconds;
    constexpr microseconds resolution = 20ms; // time stamps come from a tick of at most 10 ms
    std::error_code error, undated;
    const fs::file_type type = fs::status(path, error).type();
    if (type == fs::file_type::not_found)
        return QString::fromUtf8(path);
    if (error) {
        report(path, error.value());
        return {};
    }
    const auto written = fs::last_write_time(path, undated); // none from 2262 on
    // In microseconds the difference of any two times fits.
    const auto age =
        floor<microseconds>(fs::file_time_type::clock::now()) - floor<microseconds>(written);
    if (!undated && age >= 0ms && age < resolution)
        QThread::usleep(static_cast<unsigned long>((resolution - age).count()));
    return type == fs::file_type::regular && readable(path) ? QString::fromUtf8(path) : QString();
}

/// The low 16 bits of a hexadecimal text.
unsigned short lowHexadecimal(const QVariant& value) {
    return static_cast<unsigned short>(value.toString().toInt(nullptr, 16) & 0xFFFF);
}

} // namespace

File::File(const char* path) : m_settings(settled(path), QSettings::NativeFormat) {}

template <typename Read, typename Result>
Result File::orElse(Read read, Result otherwise) const {
    try {
        return read();
    } catch (const std::bad_alloc&) {
        if (!m_tooLong)
            report(m_settings.fileName().toLocal8Bit().constData(), ENOMEM);
        m_tooLong = true;
        return otherwise;
    }
}

QVariant File::value(const QString& key, const QVariant& fallback) const {
    return orElse([&] { return m_settings.value(key, fallback); }, fallback);
}

QStringList File::keys() const {
    return orElse([&] { return m_settings.allKeys(); }, QStringList());
}

int File::integer(const QString& key, int fallback) const { return value(key, fallback).toInt(); }

float File::number(const QString& key, double fallback) const {
    const QVariant found = value(key, fallback);
    if (found.userType() == QMetaType::QString) {
        const QString text = found.toString();
        const QStringView view(text);
        if (const auto plain =
                irmcore::plainNumber({view.utf16(), static_cast<std::size_t>(view.size())}))
            return static_cast<float>(*plain);
    }
    const double read = found.toDouble();
    return std::isnan(read) ? 0.0F : static_cast<float>(read);
}

unsigned short File::hexadecimal(const QString& key, const char* fallback) const {
    return lowHexadecimal(value(key, QLatin1String(fallback)));
}

std::optional<unsigned short> File::hexadecimal(const QString& key) const {
    const QVariant found = value(key);
    return found.isValid() ? std::optional(lowHexadecimal(found)) : std::nullopt;
}

int storedTempRange() {
    File parameters(settings::file);
    parameters.beginGroup(calibrationGroup);
    return parameters.integer(QLatin1String(tempRange), defaultTempRange);
}

} // namespace irmcore::settings
