#pragma once

#include "../sim/detector.h"
#include "../sim/wire.h"

#include <QByteArray>
#include <QCborStreamWriter>
#include <QFileDevice>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>

namespace irmcore::app {

/// The version of recordings: this program reads those of the same major one, and of older ones.
inline constexpr int recordingMajor = 1;
inline constexpr int recordingMinor = 0;

/// Takes the recording's name out of a command's words, if it is the first of them.
QString takeRecordingName(QStringList& words);
/// The same out of the words behind the options, and a `--` after it. Empty when these begin with
/// a `--`: the first word is the host then, and is not to be written over.
QString takeRecordingName(const QStringList& words, QStringList& behindOptions);

/// What the files of a camera directory are known by: `etc` and `Parameter` with all their files.
struct DirectoryIdentity {
    QByteArray digest; ///< SHA-256 over names and contents
    int files = 0;
};
DirectoryIdentity identityOf(const QString& directory);

/// What stands at the beginning of a recording.
struct RecordingHead {
    int major = recordingMajor;
    int minor = recordingMinor;
    QString program; ///< that made it, with its version
    qint64 wall = 0; ///< ns since the epoch, at the start
    QStringList host;
    bool real = false; ///< on a real board
    DirectoryIdentity directory;
    irmsim::Surroundings surroundings; ///< of the simulated camera: of its sample directory
    int range = 0;                     ///< the same
};

/// Writes a recording: a sequence of CBOR items, as docs/recording.md has it. Whether all could be
/// written, the device knows.
class RecordingWriter {
public:
    /// The device, open, outlives the writer. With `packs` frames are compressed.
    RecordingWriter(QIODevice& device, bool packs) : m_out(&device), m_packs(packs) {}

    void head(const RecordingHead& head);
    /// A call, with the bytes that it transferred.
    void call(const irmsim::WireHeader& header, const std::uint8_t* bytes, std::size_t count);
    void end(int exitCode);

    std::uint64_t calls() const { return m_calls; }
    /// Whole frames, of one read or of eight.
    std::uint64_t frames() const { return m_frameBytes / frameBytes + m_wholeFrames; }
    /// From the first call to the last, ns of the camera's time.
    qint64 duration() const { return m_calls == 0 ? 0 : m_last - m_first; }

private:
    static constexpr std::uint64_t frameBytes = std::uint64_t{2} * 384 * 288;
    void put(const char* key, qint64 value);
    void put(const char* key, const QString& value);
    void put(const char* key, const QByteArray& value);
    void begin(const char* key, const QString& value);

    QCborStreamWriter m_out;
    bool m_packs;
    std::uint64_t m_calls = 0;
    std::uint64_t m_wholeFrames = 0;
    std::uint64_t m_frameBytes = 0;
    qint64 m_first = 0;
    qint64 m_last = 0;
};

/// How a recording ended.
struct RecordingEnd {
    bool broken = false;   ///< not a recording, or damaged: `text` says what
    bool complete = false; ///< its last item is there
    std::uint64_t calls = 0;
    QString text;
};

/// What a reader is told. `bytes` are those transferred.
struct RecordingHearer {
    std::function<void(const RecordingHead&)> head;
    std::function<void(const irmsim::WireHeader&, const QByteArray& bytes)> call;
};

/// Reads a recording. Items and keys that are not known are passed over; one that was cut short is
/// read to its last whole item.
RecordingEnd readRecording(const char* bytes, qint64 size, const RecordingHearer& hearer);

/// Writes what a file has buffered. False when that or something before it could not be written;
/// its errorString() has the reason then.
bool flushed(QFileDevice& file);

/// Frame bytes for qCompress and back: differences from pixel to pixel, low bytes first, then high
/// ones. Of the bytes packed the size is known.
QByteArray packFrame(const std::uint8_t* bytes, std::size_t count);
QByteArray unpackFrame(const QByteArray& packed, std::size_t count);

} // namespace irmcore::app
