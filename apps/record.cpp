#include "commands.h"
#include "observedhost.h"
#include "recording.h"

#include <QCommandLineParser>
#include <QFile>

#include <chrono>

namespace irmcore::app {

namespace {

constexpr char description[] =
    "Records what a program does on the simulated camera, or on the real one, into FILE: its\n"
    "transfers on the FPGA device and on the serial port, with what they brought and when. The\n"
    "program is not changed; 'irmcore replay' serves the recording again. The exit code is the\n"
    "program's own, or 2 when the recording could not be written.";

qint64 wallTime() {
    using namespace std::chrono;
    return duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
}

} // namespace

int runRecord(const QStringList& arguments) {
    QStringList words = arguments;
    QString name = takeRecordingName(words);
    const QString unpacked = QStringLiteral("uncompressed");
    bool packs = true;
    RunCommand command;
    command.name = QStringLiteral("record FILE");
    command.description = QString::fromLatin1(description);
    command.options = {{unpacked, QStringLiteral("frames as they are: for a slow computer")}};
    command.take = [&](const QCommandLineParser& parser, const SimRun&) {
        packs = !parser.isSet(unpacked);
        return QString();
    };
    int exitCode = exitUsage;
    auto observed = parseObserved(command, words, exitCode);
    if (!observed)
        return exitCode;
    if (name.isEmpty())
        name = takeRecordingName(words, observed->run.host);
    if (name.isEmpty() || observed->run.host.isEmpty()) {
        complain(QStringLiteral("record needs a file and a program: "
                                "irmcore record FILE [OPTIONS] -- HOST"));
        return exitUsage;
    }
    QFile file(name);
    RecordingWriter writer(file, packs);
    bool complete = true;
    const auto flush = [&] {
        complete = flushed(file);
        if (!complete)
            complain(QStringLiteral("'%1' is not complete: %2").arg(name, file.errorString()));
    };
    observed->prepared = [&](const QString& directory) {
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            complain(QStringLiteral("'%1' cannot be written: %2").arg(name, file.errorString()));
            return false;
        }
        RecordingHead head;
        head.program = QStringLiteral("irmcore " IRMCORE_VERSION);
        head.wall = wallTime();
        head.host = observed->run.host;
        head.real = observed->real;
        head.directory = identityOf(directory);
        head.surroundings = observed->run.plan.surroundings;
        head.range = observed->run.plan.range;
        writer.head(head);
        flush();
        return complete;
    };
    // Nothing stays here for long: this process may be killed, or the power go.
    constexpr qint64 patience = 1000000000; // ns
    qint64 lastFlush = 0;
    const auto hear = [&](const Heard& heard) {
        if (!complete)
            return;
        writer.call(heard.header, heard.bytes, heard.count());
        const qint64 passed = heard.header.wall - lastFlush;
        if (passed < 0 || passed > patience || file.error() != QFileDevice::NoError) {
            lastFlush = heard.header.wall;
            flush();
        }
    };
    const auto idle = [&] {
        if (complete)
            flush();
    };
    exitCode = runObserved(*observed, hear, idle);
    if (!file.isOpen())
        return exitCode;
    if (complete) {
        writer.end(exitCode);
        flush();
    }
    if (!complete)
        return exitCode == exitClean ? exitErrors : exitCode;
    complain(QStringLiteral("%1: %2 frames, %3 calls, %4 s, %5 kB")
                 .arg(name)
                 .arg(writer.frames())
                 .arg(writer.calls())
                 .arg(static_cast<double>(writer.duration()) * 1e-9, 0, 'f', 2)
                 .arg((file.size() + 999) / 1000));
    return exitCode;
}

} // namespace irmcore::app
