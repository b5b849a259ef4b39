// `irmcore trace`.
#include "commands.h"
#include "observedhost.h"
#include "options.h"
#include "traceline.h"

#include <QCommandLineParser>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace irmcore::app {

namespace {

struct TraceWords {
    TraceStyle style;
    QString output;
};

/// Takes the command's own options; returns what is wrong with them.
QString take(const QCommandLineParser& parser, TraceWords& words) {
    words.output = parser.value(QStringLiteral("output"));
    words.style.json = parser.isSet(QStringLiteral("json"));
    const QString only = parser.value(QStringLiteral("only"));
    if (parser.isSet(QStringLiteral("only")) && only != QLatin1String("device") &&
        only != QLatin1String("port"))
        return QStringLiteral("--only takes device or port, not '%1'").arg(only);
    words.style.device = only != QLatin1String("port");
    words.style.port = only != QLatin1String("device");
    if (!parser.isSet(QStringLiteral("registers")))
        return {};
    if (!words.style.device)
        return QStringLiteral("--registers goes without --only port");
    for (const QString& list : parser.values(QStringLiteral("registers")))
        words.style.registers += list.split(QLatin1Char(','));
    for (const QString& name : words.style.registers)
        if (!isRegisterName(name))
            return QStringLiteral("--registers: there is no register '%1'").arg(name);
    return {};
}

RunCommand traceCommand() {
    RunCommand command;
    command.name = QStringLiteral("trace");
    command.description = QStringLiteral(
        "Runs a program and logs every transfer that it makes on the camera's devices: registers "
        "by name, commands\nof the serial port, values with their units. On the simulated camera, "
        "or on the machine's own devices.\nThe program's children are not logged. The exit code "
        "is the program's own, as with sim run; 2 as well when\nthe log cannot be written, 3 for "
        "wrong usage.");
    command.options = {
        option("output", "the log goes there instead of to standard error", "file"),
        option("json", "one JSON object a line"),
        option("only", "the FPGA device's transfers, or the serial port's", "device|port"),
        option("registers", "only transfers of these registers: level,pointAd,areaMax[2]", "names"),
    };
    return command;
}

} // namespace

int runTrace(const QStringList& words) {
    TraceWords trace;
    RunCommand command = traceCommand();
    command.take = [&](const QCommandLineParser& parser, const SimRun&) {
        return take(parser, trace);
    };
    int exitCode = exitUsage;
    const auto observed = parseObserved(command, words, exitCode);
    if (!observed)
        return exitCode;

    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Close> file;
    const auto cannotWrite = [&](int error) {
        complain(QStringLiteral("the trace cannot be written to %1: %2")
                     .arg(trace.output.isEmpty() ? QStringLiteral("standard error") : trace.output,
                          QString::fromLocal8Bit(std::strerror(error))));
        return exitErrors;
    };
    if (!trace.output.isEmpty()) {
        file.reset(std::fopen(QFile::encodeName(trace.output).constData(), "we"));
        if (file == nullptr)
            return cannotWrite(errno);
        std::setvbuf(file.get(), nullptr, _IOLBF, BUFSIZ);
    } else {
        std::setvbuf(stderr, nullptr, _IOLBF, BUFSIZ); // whole lines between the host's own
    }
    Tracer tracer(trace.style, file != nullptr ? file.get() : stderr);
    exitCode = runObserved(*observed, [&](const Heard& heard) { tracer.hear(heard); });
    tracer.finish();
    const int error = tracer.error();
    if (error == 0)
        return exitCode;
    const int failed = cannotWrite(error);
    return exitCode == exitClean ? failed : exitCode;
}

} // namespace irmcore::app
