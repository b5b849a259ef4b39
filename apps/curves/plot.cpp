#include "../commands.h"
#include "../explain/cameraoptions.h"
#include "../explain/deliver.h"
#include "../options.h"
#include "charts.h"

#include <QFileInfo>

#include <algorithm>

namespace irmcore::app {

namespace {

struct PlotPlan {
    const DiagramKind* kind = nullptr;
    CameraChoice camera;
    QString file; ///< absolute; empty: no picture
    bool csv = false;
    bool verbose = false;
};

/// The kinds, for help (a line each) or for a complaint.
QString kindList(bool help) {
    QStringList lines;
    for (const DiagramKind& kind : diagramKinds())
        lines.append(
            help ? QStringLiteral("%1: %2").arg(QLatin1String(kind.name), QLatin1String(kind.what))
                 : QString::fromLatin1(kind.name));
    return lines.join(QLatin1String(help ? "; " : ", "));
}

QString take(const QCommandLineParser& parser, PlotPlan& plan) {
    const QStringList kinds = parser.positionalArguments();
    const std::vector<DiagramKind>& known = diagramKinds();
    const auto kind = std::find_if(known.begin(), known.end(), [&kinds](const DiagramKind& one) {
        return kinds.size() == 1 && kinds[0] == QLatin1String(one.name);
    });
    if (kind == known.end())
        return QStringLiteral("plot takes one of %1").arg(kindList(false));
    plan.kind = &*kind;
    plan.csv = parser.isSet(QStringLiteral("csv"));
    plan.verbose = parser.isSet(QStringLiteral("verbose"));
    const QString file = parser.value(QStringLiteral("output"));
    if (!file.isEmpty())
        plan.file = QFileInfo(file).absoluteFilePath();
    else if (!plan.csv || parser.isSet(QStringLiteral("output")))
        return QStringLiteral("plot takes --output FILE.svg, --csv or both");
    return takeCamera(parser, plan.camera);
}

std::optional<PlotPlan> parse(const QStringList& words, int& exitCode) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Draws what a camera's directory holds as a diagram, or prints its "
                       "numbers.\nKinds: %1.")
            .arg(kindList(true)));
    parser.addPositionalArgument(QStringLiteral("kind"), QStringLiteral("what to draw"),
                                 QStringLiteral("KIND"));
    parser.addOptions(
        {option("output", "the picture, SVG", "file"), option("csv", "print the curves' numbers")});
    addCameraOptions(parser);
    parser.addOptions({option("verbose", "show the library's own lines on standard error"),
                       option("help", "this text")});
    exitCode = exitUsage;
    if (!parseWords(parser, words, QStringLiteral("plot"), exitCode))
        return std::nullopt;
    PlotPlan plan;
    const QString wrong = take(parser, plan);
    if (!wrong.isEmpty()) {
        complain(wrong);
        return std::nullopt;
    }
    return plan;
}

int carryOut(const PlotPlan& plan, std::FILE* out) {
    if (!plan.file.isEmpty() && !canDraw())
        return exitErrors;
    OpenedCamera camera(plan.camera);
    QString error = camera.error();
    if (error.isEmpty()) {
        const Diagram diagram = plan.kind->make(camera);
        if (plan.csv)
            printCsv(out, diagram);
        if (!plan.file.isEmpty())
            error = drawDiagram(diagram, plan.file);
    }
    if (error.isEmpty())
        return exitClean;
    complain(error);
    return exitErrors;
}

} // namespace

int runPlot(const QStringList& words) {
    int exitCode = exitUsage;
    const std::optional<PlotPlan> plan = parse(words, exitCode);
    if (!plan)
        return exitCode;
    return deliver(plan->verbose, [&plan](std::FILE* out) { return carryOut(*plan, out); });
}

} // namespace irmcore::app
