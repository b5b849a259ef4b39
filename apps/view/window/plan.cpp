#include "plan.h"

#include "../../commands.h"
#include "../../optionreader.h"
#include "../../options.h"
#include "../../simplan.h"
#include "wording.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace irmcore::view {

namespace {

using app::option;
using app::OptionReader;

void addOptions(QCommandLineParser& parser) {
    parser.addOptions(
        {option("real", "the machine's own camera instead of a simulated one"),
         option("recording", "a recorded session instead of a camera", "file"),
         option("camera",
                "camera directory with Parameter/ and etc/ (with --real the present one, else a "
                "sample)",
                "dir"),
         option("fresh", "start with the defaults, and remember nothing"),
         option("screenshot", "write a picture of the window at work as PNG, and end", "file"),
         option("verbose", "show the library's own lines on standard output"),
         option("version", "say which version this is"), option("help", "this text")});
    parser.addOptions(app::cameraOptions());
}

/// The options that only a simulated camera has.
void refuseOthers(OptionReader& options, const char* instead) {
    for (const QCommandLineOption& own : app::cameraOptions()) {
        const QByteArray name = own.names().constFirst().toLatin1();
        const bool shared = name == "size" && qstrcmp(instead, "real") == 0;
        if (!shared && options.has(name.constData()) && options.wrong.isEmpty())
            options.wrong = QStringLiteral("--%1 goes with the simulated camera, not with --%2")
                                .arg(QString::fromLatin1(name), QString::fromLatin1(instead));
    }
}

void takeSource(OptionReader& options, Source& source) {
    if (options.has("real") && options.has("recording"))
        options.wrong = QStringLiteral("--real and --recording do not go together");
    if (options.has("camera")) {
        const QFileInfo directory(options.text("camera"));
        if (!directory.isDir())
            options.refuse("camera", QStringLiteral("a directory"));
        source.directory = toLocal(directory.absoluteFilePath());
    }
    app::SimRun run;
    takeCamera(options, run);
    // A picture that somebody looks at goes with the clock on the wall.
    if (!options.has("clock"))
        run.plan.wallFactor = 1.0;
    source.plan = run.plan;
    source.framesASecond = run.plan.frameRate;
    if (options.has("real")) {
        refuseOthers(options, "real");
        source.kind = SourceKind::real;
        source.width = run.plan.scene.width;
    }
    if (options.has("recording")) {
        refuseOthers(options, "recording");
        source.kind = SourceKind::recording;
        const QFileInfo file(options.text("recording"));
        if (!file.isFile())
            options.refuse("recording", QStringLiteral("a file"));
        source.recording = toLocal(file.absoluteFilePath());
    }
}

} // namespace

std::optional<ViewPlan> parsePlan(const QStringList& words, int& exitCode) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Shows a thermal camera live, and measures in its picture.\nThe exit code "
                       "is 0, 2 after an error, 3 for wrong usage."));
    addOptions(parser);
    exitCode = app::exitUsage;
    if (!parser.parse(words)) {
        app::complain(parser.errorText());
        return std::nullopt;
    }
    OptionReader options(parser);
    if (options.has("help") || options.has("version")) {
        const QString text = options.has("help")
                                 ? parser.helpText()
                                 : QStringLiteral("irmcore-view " IRMCORE_VERSION "\n");
        std::fputs(text.toLocal8Bit().constData(), stdout);
        exitCode = app::exitClean;
        return std::nullopt;
    }
    ViewPlan plan;
    if (!parser.positionalArguments().isEmpty())
        options.wrong = QStringLiteral("irmcore-view takes options only, not '%1'")
                            .arg(parser.positionalArguments().constFirst());
    takeSource(options, plan.window.source);
    plan.verbose = options.has("verbose");
    plan.window.rangeGiven = options.has("range");
    plan.window.folder = QDir::currentPath();
    if (options.has("screenshot"))
        plan.screenshot = QFileInfo(options.text("screenshot")).absoluteFilePath();
    plan.window.fresh = options.has("fresh") || options.has("screenshot");
    if (!options.wrong.isEmpty()) {
        app::complain(options.wrong);
        return std::nullopt;
    }
    return plan;
}

} // namespace irmcore::view
