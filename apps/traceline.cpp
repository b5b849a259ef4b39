#include "traceline.h"

#include "../sim/observer.h"
#include "recordingnames.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace irmcore::app {

namespace {

using Call = irmsim::Observation::Call;
using irmsim::WireHeader;

constexpr double second = 1e9; // ns

struct ErrorName {
    int number;
    const char* name;
};
constexpr std::array errorNames{
    ErrorName{EPERM, "EPERM"},         ErrorName{ENOENT, "ENOENT"},
    ErrorName{EINTR, "EINTR"},         ErrorName{EIO, "EIO"},
    ErrorName{ENXIO, "ENXIO"},         ErrorName{EBADF, "EBADF"},
    ErrorName{EAGAIN, "EAGAIN"},       ErrorName{ENOMEM, "ENOMEM"},
    ErrorName{EACCES, "EACCES"},       ErrorName{EFAULT, "EFAULT"},
    ErrorName{EBUSY, "EBUSY"},         ErrorName{ENODEV, "ENODEV"},
    ErrorName{EINVAL, "EINVAL"},       ErrorName{ENFILE, "ENFILE"},
    ErrorName{EMFILE, "EMFILE"},       ErrorName{ENOTTY, "ENOTTY"},
    ErrorName{ETXTBSY, "ETXTBSY"},     ErrorName{ENOSPC, "ENOSPC"},
    ErrorName{ESPIPE, "ESPIPE"},       ErrorName{EROFS, "EROFS"},
    ErrorName{EPIPE, "EPIPE"},         ErrorName{ENOSYS, "ENOSYS"},
    ErrorName{EOVERFLOW, "EOVERFLOW"}, ErrorName{EPROTO, "EPROTO"},
    ErrorName{ETIME, "ETIME"},         ErrorName{ETIMEDOUT, "ETIMEDOUT"},
    ErrorName{EREMOTEIO, "EREMOTEIO"},
};

QString errorName(std::int64_t number) {
    for (const ErrorName& error : errorNames)
        if (error.number == number)
            return QString::fromLatin1(error.name);
    return QStringLiteral("errno %1").arg(number);
}

Call callOf(const WireHeader& header) { return static_cast<Call>(header.call); }
bool isTransfer(Call call) { return call == Call::read || call == Call::write; }
bool isPort(const WireHeader& header) { return (header.flags & irmsim::wirePort) != 0; }
bool isReal(const WireHeader& header) { return (header.flags & irmsim::wireReal) != 0; }
QString callName(Call call) {
    return QString::fromLatin1(callNames[static_cast<std::size_t>(call)]);
}

QString resultText(const WireHeader& header) {
    if (header.result < 0)
        return errorName(-header.result);
    if (callOf(header) == Call::open)
        return QStringLiteral("descriptor %1").arg(header.result);
    if (isTransfer(callOf(header)) && header.result != header.length)
        return QStringLiteral("%1 of %2 bytes").arg(header.result).arg(header.length);
    return QStringLiteral("ok");
}

/// The name without its slots' number.
QString plain(const QString& name) { return name.left(name.indexOf(QLatin1Char('['))); }

} // namespace

bool isRegisterName(const QString& name) {
    for (const reg::Entry& entry : reg::map) {
        if (plain(name) != QLatin1String(entry.name))
            continue;
        if (plain(name) == name)
            return true;
        for (unsigned slot = 0; entry.slots > 1 && slot < entry.slots; ++slot)
            if (name == QStringLiteral("%1[%2]").arg(plain(name)).arg(slot))
                return true;
    }
    return false;
}

struct Tracer::Line {
    WireHeader header;
    double time = 0.0;
    Decoded decoded;
    QString result;
    unsigned long emptyReads = 0; // more than one call in this line
    double seconds = 0.0;         // that they took
};

Tracer::Tracer(const TraceStyle& style, std::FILE* to) : m_style(style), m_to(to) {}

void Tracer::hear(const Heard& heard) {
    const WireHeader& header = heard.header;
    // A real device's clock counts from anywhere, a camera's from its start.
    if (!m_begin)
        m_begin = isReal(header) ? header.time : 0;
    Line line{};
    line.header = header;
    line.time = static_cast<double>(header.time - *m_begin) / second;
    line.result = resultText(header);
    line.decoded.name = callName(callOf(header));
    if (isPort(header))
        hearPort(heard, line);
    else
        hearDevice(heard, line);
}

void Tracer::hearDevice(const Heard& heard, Line& line) {
    const Call call = callOf(heard.header);
    if (call == Call::seek && heard.header.result >= 0)
        return;
    if (isTransfer(call)) {
        line.decoded = m_registers.decode(call == Call::write, heard.header.address,
                                          heard.header.length, heard.bytes, heard.count());
    }
    if (isShown(line))
        print(line);
}

void Tracer::hearPort(const Heard& heard, Line& line) {
    const Call call = callOf(heard.header);
    const std::int64_t result = heard.header.result;
    if (call == Call::read && (result == 0 || result == -EAGAIN)) {
        ++m_emptyReads;
        m_lastEmpty = heard.header;
        return;
    }
    tellEmptyReads();
    m_portTime = heard.header.time;
    if (call == Call::write)
        line.decoded = m_port.wrote(heard.bytes, heard.count());
    else if (call == Call::read)
        line.decoded = m_port.read(heard.bytes, heard.count(), isReal(heard.header));
    else if (call == Call::flush)
        m_port.flush();
    if (isTransfer(call) && result < 0)
        line.decoded = {callName(call), {}};
    // Most replies come in fewer bytes than there is room for: that is no shortage.
    if (call == Call::read && result > 0)
        line.result = QStringLiteral("ok");
    if (isShown(line))
        print(line);
}

void Tracer::tellEmptyReads() {
    if (m_emptyReads == 0)
        return;
    Line line{};
    line.header = m_lastEmpty;
    line.time = static_cast<double>(m_lastEmpty.time - m_begin.value_or(0)) / second;
    line.emptyReads = std::exchange(m_emptyReads, 0);
    line.seconds = static_cast<double>(m_lastEmpty.time - m_portTime) / second;
    line.decoded.name = QStringLiteral("%1 empty read%2, %3 s")
                            .arg(line.emptyReads)
                            .arg(line.emptyReads == 1 ? QString() : QStringLiteral("s"))
                            .arg(line.seconds, 0, 'f', 1);
    m_portTime = m_lastEmpty.time;
    if (isShown(line))
        print(line);
}

void Tracer::finish() {
    tellEmptyReads();
    if (m_error == 0 && std::fflush(m_to) != 0)
        m_error = errno;
}

bool Tracer::isShown(const Line& line) const {
    if (!(isPort(line.header) ? m_style.port : m_style.device))
        return false;
    if (m_style.registers.isEmpty())
        return true;
    if (isPort(line.header) || !isTransfer(callOf(line.header)))
        return false;
    const auto wanted = [&](const QString& name) {
        const QString whole = name.left(name.indexOf(QLatin1Char('.')));
        return m_style.registers.contains(whole) || m_style.registers.contains(plain(whole));
    };
    const std::vector<Value>& values = line.decoded.values;
    return wanted(line.decoded.name) ||
           std::any_of(values.begin(), values.end(),
                       [&](const Value& value) { return wanted(value.name); });
}

void Tracer::print(const Line& line) {
    if (m_error != 0)
        return;
    const WireHeader& header = line.header;
    const Call call = callOf(header);
    const bool port = isPort(header);
    QByteArray text;
    if (m_style.json) {
        QJsonObject object{
            {QStringLiteral("time"), line.time},
            {QStringLiteral("wall"), QDateTime::fromMSecsSinceEpoch(header.wall / 1000000, Qt::UTC)
                                         .toString(Qt::ISODateWithMs)},
            {QStringLiteral("device"), port ? QStringLiteral("port") : QStringLiteral("fpga")},
            {QStringLiteral("real"), isReal(header)},
            {QStringLiteral("call"), callName(call)},
        };
        if (header.result < 0)
            object[QStringLiteral("error")] = errorName(-header.result);
        else
            object[QStringLiteral("result")] = static_cast<double>(header.result);
        if (isTransfer(call)) {
            object[QStringLiteral("length")] = static_cast<double>(header.length);
            if (!port)
                object[QStringLiteral("address")] = static_cast<double>(header.address);
        }
        if (line.emptyReads > 0) {
            object[QStringLiteral("emptyReads")] = static_cast<double>(line.emptyReads);
            object[QStringLiteral("seconds")] = line.seconds;
        } else if (isTransfer(call)) {
            object[QStringLiteral("name")] = line.decoded.name;
            QJsonArray values;
            for (const Value& value : line.decoded.values) {
                QJsonObject one{{QStringLiteral("name"), value.name},
                                {QStringLiteral("value"), value.value}};
                if (!value.unit.isEmpty())
                    one[QStringLiteral("unit")] = value.unit;
                values.append(one);
            }
            object[QStringLiteral("values")] = values;
        }
        text = QJsonDocument(object).toJson(QJsonDocument::Compact);
    } else {
        const QString mark = call == Call::read    ? QStringLiteral("R")
                             : call == Call::write ? QStringLiteral("W")
                                                   : QStringLiteral("-");
        const QString place =
            port ? QStringLiteral("port")
            : isTransfer(call) || call == Call::seek
                ? QStringLiteral("0x%1").arg(header.address, 4, 16, QLatin1Char('0'))
                : QStringLiteral("fpga");
        QString values = textOf(line.decoded);
        QString row = QStringLiteral("%1  %2  %3  ")
                          .arg(line.time, 12, 'f', 6)
                          .arg(mark, place.leftJustified(6));
        row += line.emptyReads > 0
                   ? line.decoded.name
                   : line.decoded.name.leftJustified(24) + QStringLiteral("  ") +
                         values.leftJustified(36) + QStringLiteral("  ") + line.result;
        text = row.toUtf8();
    }
    text += '\n';
    if (std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), m_to) !=
        static_cast<std::size_t>(text.size()))
        m_error = errno;
}

} // namespace irmcore::app
