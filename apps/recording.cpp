#include "recording.h"

#include "../device/registers.h"
#include "../sim/observer.h"
#include "recordingnames.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <algorithm>

namespace irmcore::app {

namespace {

using Call = irmsim::Observation::Call;
using irmsim::WireHeader;

QByteArray bytesOf(const std::uint8_t* bytes, std::size_t count) {
    return count == 0 ? QByteArray()
                      : QByteArray(reinterpret_cast<const char*>(bytes), static_cast<int>(count));
}

bool isFrame(const WireHeader& header, std::size_t count) {
    constexpr std::size_t least = 512;
    return header.address == reg::frame.address && (header.flags & irmsim::wirePort) == 0 &&
           count >= least;
}

} // namespace

QString takeRecordingName(QStringList& words) {
    return words.size() > 1 && !words[1].startsWith(QLatin1Char('-')) ? words.takeAt(1) : QString();
}

QString takeRecordingName(const QStringList& words, QStringList& behindOptions) {
    const QLatin1String end("--");
    if (behindOptions.isEmpty() || words[words.size() - behindOptions.size() - 1] == end)
        return {};
    QString name = behindOptions.takeFirst();
    if (!behindOptions.isEmpty() && behindOptions.constFirst() == end)
        behindOptions.removeFirst();
    return name;
}

DirectoryIdentity identityOf(const QString& directory) {
    const QDir root(directory);
    QStringList names;
    for (const char* folder : {"etc", "Parameter"}) {
        QDirIterator files(root.filePath(QLatin1String(folder)), QDir::Files | QDir::Hidden,
                           QDirIterator::Subdirectories);
        while (files.hasNext())
            names += root.relativeFilePath(files.next());
    }
    std::sort(names.begin(), names.end());
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const QString& name : names) {
        QFile file(root.filePath(name));
        const QByteArray content =
            file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
        const QByteArray title =
            QFile::encodeName(name) + '\0' + QByteArray::number(content.size()) + '\0';
        hash.addData(title);
        hash.addData(content);
    }
    return {hash.result(), static_cast<int>(names.size())};
}

bool flushed(QFileDevice& file) {
    if (file.flush() && file.error() == QFileDevice::NoError)
        return true;
    file.flush(); // what was written in part has no reason: the rest brings it out
    return false;
}

QByteArray packFrame(const std::uint8_t* bytes, std::size_t count) {
    const std::size_t words = count / 2;
    QByteArray planes(static_cast<int>(count), '\0');
    char* low = planes.data();
    char* high = low + words;
    unsigned before = 0;
    for (std::size_t i = 0; i < words; ++i) {
        const unsigned word = bytes[2 * i] | static_cast<unsigned>(bytes[2 * i + 1]) << 8U;
        const unsigned step = word - before;
        before = word;
        low[i] = static_cast<char>(step & 0xFFU);
        high[i] = static_cast<char>(step >> 8U & 0xFFU);
    }
    if (count % 2 != 0)
        planes.back() = static_cast<char>(bytes[count - 1]);
    constexpr int quick = 1;
    return qCompress(planes, quick);
}

QByteArray unpackFrame(const QByteArray& packed, std::size_t count) {
    // The size to come stands before what is packed: no room is made for another one.
    unsigned long long announced = 0;
    for (int i = 0; i < 4 && i < packed.size(); ++i)
        announced = announced << 8U | static_cast<unsigned char>(packed[i]);
    if (announced != count)
        return {};
    const QByteArray planes = qUncompress(packed);
    if (static_cast<std::size_t>(planes.size()) != count)
        return {};
    const std::size_t words = count / 2;
    QByteArray bytes = planes;
    const char* low = planes.constData();
    const char* high = low + words;
    char* out = bytes.data();
    unsigned word = 0;
    for (std::size_t i = 0; i < words; ++i) {
        word += static_cast<unsigned char>(low[i]) |
                static_cast<unsigned>(static_cast<unsigned char>(high[i])) << 8U;
        out[2 * i] = static_cast<char>(word & 0xFFU);
        out[2 * i + 1] = static_cast<char>(word >> 8U & 0xFFU);
    }
    return bytes;
}

void RecordingWriter::put(const char* key, qint64 value) {
    m_out.append(QLatin1String(key));
    m_out.append(value);
}

void RecordingWriter::put(const char* key, const QString& value) {
    m_out.append(QLatin1String(key));
    m_out.append(value);
}

void RecordingWriter::put(const char* key, const QByteArray& value) {
    m_out.append(QLatin1String(key));
    m_out.append(value);
}

void RecordingWriter::begin(const char* key, const QString& value) {
    m_out.startMap();
    put(key, value);
}

void RecordingWriter::head(const RecordingHead& head) {
    m_out.append(QCborKnownTags::Signature);
    begin("format", QLatin1String(recordingFormat));
    put("major", head.major);
    put("minor", head.minor);
    put("program", head.program);
    put("wall", head.wall);
    m_out.append(QLatin1String("host"));
    m_out.startArray(static_cast<quint64>(head.host.size()));
    for (const QString& word : head.host)
        m_out.append(word);
    m_out.endArray();
    m_out.append(QLatin1String("real"));
    m_out.append(head.real);
    put("directoryDigest", head.directory.digest);
    put("directoryFiles", head.directory.files);
    put("range", head.range);
    for (const SurroundingsKey& key : surroundingsKeys) {
        m_out.append(QLatin1String(key.name));
        m_out.append(head.surroundings.*key.field);
    }
    m_out.endMap();
}

void RecordingWriter::call(const WireHeader& header, const std::uint8_t* bytes, std::size_t count) {
    const auto what = static_cast<Call>(header.call);
    if (what == Call::seek && header.result >= 0)
        return; // the transfers tell where they begin
    begin("call", QLatin1String(callNames[header.call]));
    const auto flag = [&](const char* key, unsigned bit) {
        if ((header.flags & bit) == 0)
            return;
        m_out.append(QLatin1String(key));
        m_out.append(true);
    };
    flag("port", irmsim::wirePort);
    flag("real", irmsim::wireReal);
    put("time", header.time);
    put("wall", header.wall);
    put("result", header.result);
    if (what == Call::read || what == Call::write) {
        put("address", static_cast<qint64>(header.address));
        put("length", static_cast<qint64>(header.length));
        if (m_packs && isFrame(header, count))
            put("packed", packFrame(bytes, count));
        else if (count > 0)
            put("bytes", bytesOf(bytes, count));
    }
    m_out.endMap();
    if (isFrame(header, count) && what == Call::read) {
        m_wholeFrames += header.length == reg::frame.length && count == header.length ? 1U : 0U;
        m_frameBytes += header.length == reg::framePart384 ? count : 0U;
    }
    if (m_calls++ == 0)
        m_first = header.time;
    m_last = header.time;
}

void RecordingWriter::end(int exitCode) {
    m_out.startMap();
    put("end", static_cast<qint64>(m_calls));
    put("exitCode", exitCode);
    m_out.endMap();
}

} // namespace irmcore::app
