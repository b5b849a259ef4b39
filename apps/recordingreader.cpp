#include "../sim/observer.h"
#include "recording.h"
#include "recordingnames.h"

#include <QCborStreamReader>
#include <QHash>
#include <QVariant>

#include <algorithm>
#include <limits>

namespace irmcore::app {

namespace {

using irmsim::WireHeader;
using Item = QHash<QString, QVariant>;

/// The longest transfer that is believed.
constexpr qint64 longest = qint64{1} << 30;

template <typename Result, typename Read>
Result readString(QCborStreamReader& in, Read read) {
    Result all;
    auto part = read(in);
    for (; part.status == QCborStreamReader::Ok; part = read(in))
        all += part.data;
    return all;
}

/// The value at hand; invalid for one of a kind that no recording has, which is passed over.
QVariant readValue(QCborStreamReader& in) {
    QVariant value;
    if (in.isUnsignedInteger() || in.isNegativeInteger()) {
        value = in.toInteger();
    } else if (in.isBool()) {
        value = in.toBool();
    } else if (in.isDouble()) {
        value = in.toDouble();
    } else if (in.isFloat()) {
        value = static_cast<double>(in.toFloat());
    } else if (in.isFloat16()) {
        value = static_cast<double>(static_cast<float>(in.toFloat16()));
    } else if (in.isString()) {
        return readString<QString>(in, [](auto& from) { return from.readString(); });
    } else if (in.isByteArray()) {
        return readString<QByteArray>(in, [](auto& from) { return from.readByteArray(); });
    }
    in.next();
    return value;
}

/// A map's keys and values. Empty for another item, which is passed over.
Item readItem(QCborStreamReader& in) {
    Item item;
    while (in.isTag() && in.lastError() == QCborError::NoError)
        in.next();
    if (!in.isMap()) {
        in.next();
        return item;
    }
    in.enterContainer();
    while (in.lastError() == QCborError::NoError && in.hasNext()) {
        const QVariant key = readValue(in);
        if (in.lastError() != QCborError::NoError)
            break;
        const QVariant value = readValue(in);
        if (key.userType() == QMetaType::QString && in.lastError() == QCborError::NoError)
            item.insert(key.toString(), value);
    }
    if (in.lastError() == QCborError::NoError)
        in.leaveContainer();
    return item;
}

/// A whole number of an item, or `otherwise`.
qint64 number(const Item& item, const char* key, qint64 otherwise = 0) {
    bool ok = false;
    const qint64 value = item.value(QLatin1String(key)).toLongLong(&ok);
    return ok ? value : otherwise;
}

/// What is wrong with the head; empty when nothing is.
QString readHead(const Item& item, RecordingHead& head) {
    if (item.value(QStringLiteral("format")).toString() != QLatin1String(recordingFormat))
        return QStringLiteral("it is not a recording of irmcore");
    head.major = static_cast<int>(number(item, "major"));
    head.minor = static_cast<int>(number(item, "minor"));
    head.program = item.value(QStringLiteral("program")).toString();
    if (head.major != recordingMajor)
        return QStringLiteral("it is of version %1, made by %2; this program reads version %3")
            .arg(head.major)
            .arg(head.program)
            .arg(recordingMajor);
    head.wall = number(item, "wall");
    head.real = item.value(QStringLiteral("real")).toBool();
    head.directory.digest = item.value(QStringLiteral("directoryDigest")).toByteArray();
    head.directory.files = static_cast<int>(number(item, "directoryFiles"));
    head.range = number(item, "range") == 1 ? 1 : 0;
    for (const SurroundingsKey& key : surroundingsKeys)
        if (const QVariant value = item.value(QLatin1String(key.name)); value.isValid())
            head.surroundings.*key.field = value.toDouble();
    return {};
}

enum class Read { call, other, wrong };

Read readCall(const Item& item, WireHeader& header, QByteArray& bytes) {
    const QString name = item.value(QStringLiteral("call")).toString();
    std::size_t call = 0;
    while (call < callNames.size() && name != QLatin1String(callNames[call]))
        ++call;
    if (call == callNames.size())
        return Read::other;
    header = WireHeader{};
    header.call = static_cast<std::uint8_t>(call);
    header.flags = static_cast<std::uint8_t>(
        (item.value(QStringLiteral("port")).toBool() ? irmsim::wirePort : 0) |
        (item.value(QStringLiteral("real")).toBool() ? irmsim::wireReal : 0));
    header.time = number(item, "time");
    header.wall = number(item, "wall");
    header.result = number(item, "result");
    const qint64 length = number(item, "length");
    const qint64 address = number(item, "address");
    const bool transfers = name == QLatin1String("read") || name == QLatin1String("write");
    constexpr qint64 last = std::numeric_limits<std::uint32_t>::max();
    constexpr qint64 latest = 1'000'000'000'000'000'000; // ns: 31 years
    if (header.time < 0 || header.time > latest)
        return Read::wrong;
    if (address < 0 || address > last || length < 0 || length > last || header.result < -longest ||
        header.result > longest || (transfers && header.result > length))
        return Read::wrong;
    header.length = static_cast<std::uint32_t>(length);
    header.address = static_cast<std::uint32_t>(address);
    bytes = item.value(QStringLiteral("bytes")).toByteArray();
    const auto count = static_cast<std::size_t>(transfers ? std::max<qint64>(header.result, 0) : 0);
    if (const QVariant packed = item.value(QStringLiteral("packed")); packed.isValid())
        bytes = unpackFrame(packed.toByteArray(), count);
    return static_cast<std::size_t>(bytes.size()) == count ? Read::call : Read::wrong;
}

} // namespace

RecordingEnd readRecording(const char* bytes, qint64 size, const RecordingHearer& hearer) {
    RecordingEnd end;
    const auto fail = [&end](const QString& text) {
        end.broken = true;
        end.text = text;
        return end;
    };
    if (size == 0)
        return fail(QStringLiteral("it is empty"));
    for (qint64 at = 0; at < size;) {
        QCborStreamReader in(bytes + at, static_cast<qsizetype>(size - at)); // reads one item
        const Item item = readItem(in);
        const QCborError error = in.lastError();
        if (error == QCborError::EndOfFile && at > 0)
            return end;
        if (at == 0) {
            RecordingHead head;
            const QString wrong = error == QCborError::EndOfFile
                                      ? QStringLiteral("its head is not complete")
                                      : readHead(item, head);
            if (!wrong.isEmpty())
                return fail(wrong);
            hearer.head(head);
        } else if (error != QCborError::NoError) {
            return fail(
                QStringLiteral("it is damaged at byte %1: %2").arg(at).arg(error.toString()));
        } else if (item.contains(QStringLiteral("end"))) {
            end.complete = true;
        } else {
            WireHeader header{};
            QByteArray transferred;
            const Read read = readCall(item, header, transferred);
            if (read == Read::wrong)
                return fail(QStringLiteral("the item at byte %1 is damaged").arg(at));
            if (read == Read::call) {
                ++end.calls;
                hearer.call(header, transferred);
            }
        }
        at += in.currentOffset();
    }
    return end;
}

} // namespace irmcore::app
