#include "../sim/wire.h"
#include "commands.h"
#include "hostprocess.h"
#include "options.h"
#include "recording.h"
#include "simrun.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

namespace irmcore::app {

namespace {

struct Words {
    QString file;
    SimRun run;
};

std::optional<Words> parse(QStringList words, int& exitCode) {
    Words result;
    result.file = takeRecordingName(words);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Serves a recording made by 'irmcore record' to a program, in the place of a camera. The "
        "same\nrequests get the same answers; others get what the recording tells of them, and "
        "fail with EIO\nwhere it tells nothing. The exit code is the program's own; 2 when the "
        "recording cannot be read."));
    parser.addOptions(
        {option("loop", "the recording begins anew when it has ended"),
         option("camera",
                "camera directory, which becomes the host's working directory. Without it: the "
                "present one if it has etc/calc_len*, else a fresh sample directory",
                "dir"),
         option("keep", "the sample directory is not removed afterwards"),
         option("verbose", "say what is run"), option("help", "this text")});
    addHost(parser);
    exitCode = exitUsage;
    if (!parseWords(parser, words, QStringLiteral("replay FILE"), exitCode))
        return std::nullopt;
    SimRun& run = result.run;
    run.host = parser.positionalArguments();
    if (result.file.isEmpty())
        result.file = takeRecordingName(words, run.host);
    run.cameraDirectory = parser.value(QStringLiteral("camera"));
    run.keep = parser.isSet(QStringLiteral("keep"));
    run.verbose = parser.isSet(QStringLiteral("verbose"));
    run.plan.replay.emplace().loop = parser.isSet(QStringLiteral("loop"));
    if (result.file.isEmpty() || run.host.isEmpty()) {
        complain(QStringLiteral("replay needs a recording and a program: "
                                "irmcore replay FILE [OPTIONS] -- HOST"));
        return std::nullopt;
    }
    if (!run.cameraDirectory.isEmpty() && !QFileInfo(run.cameraDirectory).isDir()) {
        complain(QStringLiteral("--camera takes a directory, not '%1'").arg(run.cameraDirectory));
        return std::nullopt;
    }
    return result;
}

/// Writes a recording's calls as the host's side reads them.
class TapeFile {
public:
    TapeFile() : m_file(QDir::tempPath() + QStringLiteral("/irmcore-replay-XXXXXX")) {
        m_file.open();
    }
    ~TapeFile() {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    TapeFile(const TapeFile&) = delete;
    TapeFile& operator=(const TapeFile&) = delete;

    void write(irmsim::WireHeader header, const QByteArray& bytes) {
        static constexpr char zeros[irmsim::wireAlign] = {};
        const auto count = static_cast<std::size_t>(bytes.size());
        const std::size_t filling =
            (irmsim::wireAlign - count % irmsim::wireAlign) % irmsim::wireAlign;
        header.size = static_cast<std::uint32_t>(sizeof header + count + filling);
        if (!m_file.isOpen())
            return;
        m_file.write(reinterpret_cast<const char*>(&header), sizeof header);
        m_file.write(bytes);
        m_file.write(zeros, static_cast<qint64>(filling));
    }
    /// A descriptor that a host inherits. Negative when the file could not be written.
    int descriptor() {
        if (!m_file.isOpen() || !flushed(m_file))
            return -1;
        m_descriptor = inheritable(m_file.handle());
        return m_descriptor;
    }
    QString error() const { return m_file.errorString(); }

private:
    QTemporaryFile m_file;
    int m_descriptor = -1;
};

} // namespace

int runReplay(const QStringList& arguments) {
    int exitCode = exitUsage;
    auto words = parse(arguments, exitCode);
    if (!words)
        return exitCode;
    const QString& name = words->file;
    const auto fail = [&name](const QString& why) {
        complain(QStringLiteral("'%1' cannot be replayed: %2").arg(name, why));
        return exitErrors;
    };
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return fail(file.errorString());
    const uchar* bytes = file.size() > 0 ? file.map(0, file.size()) : nullptr;
    if (bytes == nullptr && file.size() > 0)
        return fail(file.errorString());
    TapeFile tape;
    RecordingHead head;
    const RecordingEnd end =
        readRecording(reinterpret_cast<const char*>(bytes), file.size(),
                      {[&](const RecordingHead& read) { head = read; },
                       [&](const irmsim::WireHeader& header, const QByteArray& transferred) {
                           tape.write(header, transferred);
                       }});
    if (end.broken)
        return fail(end.text);
    if (!end.complete)
        complain(
            QStringLiteral("'%1' was cut short: it ends after %2 calls").arg(name).arg(end.calls));
    irmsim::Plan& plan = words->run.plan;
    plan.replay->tape = tape.descriptor();
    if (plan.replay->tape < 0)
        return fail(tape.error());
    plan.surroundings = head.surroundings;
    plan.range = head.range;
    Watch watch;
    watch.prepared = [&](const QString& directory) {
        if (identityOf(directory).digest != head.directory.digest)
            complain(QStringLiteral("the camera directory is not the one of the recording: "
                                    "readings can differ"));
        return true;
    };
    return runParsed(words->run, watch);
}

} // namespace irmcore::app
