#include "../commands.h"
#include "../optionreader.h"
#include "../options.h"
#include "../results.h"
#include "residuals.h"
#include "simulated.h"

#include <QFile>
#include <QSaveFile>

#include <cstdio>
#include <unistd.h>

namespace irmcore::app::calibration {

namespace {

constexpr double promised = 0.30; // °C that readings with a simulated table may be off

struct CalibratePlan {
    Task task;
    QString input; ///< "-": standard input
    bool simulate = false;
    int seed = 1;
    int trials = 0;
    QString savePoints;
    QString output; ///< empty: standard output
    bool json = false;
};

std::optional<CalibratePlan> parseCalibrate(const QStringList& words, int& exitCode) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Makes a calibration table from black bodies: a CSV file (- for standard input) with the "
        "temperature of each\nand the raw count that the camera showed of it at the range's "
        "reference inside temperature. What each point\nis off goes to standard output, or to "
        "standard error when the table goes there."));
    parser.addPositionalArgument(QStringLiteral("points"), QStringLiteral("the CSV file"),
                                 QStringLiteral("[POINTS.csv]"));
    parser.addOptions(
        {option("simulate", "take points from the simulated detector instead"),
         option("seed", "of --simulate: seed of its noise (1)", "number"),
         option("trials",
                "of --simulate: make tables with so many seeds for both ranges and print how far "
                "the library's readings are off with them",
                "number"),
         option("save-points", "write the points there, as CSV", "file"),
         option("range", "measuring range of the table: 0 (the default) or 1", "index"),
         option("lens", "lens of the table, 0 to 6 (0)", "index"),
         option("emissivity", "emissivity of the source (1)", "fraction"),
         option("reflected", "temperature of what the source reflects (25)", "celsius"),
         option("extrapolate", "how far the table may go beyond the points (30)", "celsius"),
         option("output", "write the table there instead of to standard output", "file"),
         option("json", "what points are off as JSON, one object a line"),
         option("help", "this text")});
    exitCode = exitUsage;
    if (!parseWords(parser, words, QStringLiteral("calibrate"), exitCode))
        return std::nullopt;
    CalibratePlan plan;
    OptionReader options(parser);
    plan.simulate = options.has("simulate");
    plan.json = options.has("json");
    plan.output = options.text("output");
    plan.savePoints = options.text("save-points");
    options.whole("seed", 0, 2147483647, plan.seed);
    if (options.has("trials"))
        options.whole("trials", 1, 100000, plan.trials);
    options.whole("range", 0, 1, plan.task.range);
    options.whole("lens", 0, 6, plan.task.lens);
    options.number("emissivity", 0.1, 1.0, plan.task.source.emissivity);
    options.number("reflected", -40.0, 100.0, plan.task.source.reflected);
    options.number("extrapolate", 0.0, 100.0, plan.task.extrapolate);
    const QStringList files = parser.positionalArguments();
    if (options.wrong.isEmpty() && files.size() != (plan.simulate ? 0 : 1))
        options.wrong = QStringLiteral("calibrate takes one file of points, or --simulate");
    for (const char* own : {"seed", "trials"})
        if (options.wrong.isEmpty() && options.has(own) && !plan.simulate)
            options.wrong = QStringLiteral("--%1 goes with --simulate").arg(QLatin1String(own));
    for (const char* source : {"emissivity", "reflected"})
        if (options.wrong.isEmpty() && options.has(source) && plan.simulate)
            options.wrong =
                QStringLiteral("--%1 does not go with --simulate").arg(QLatin1String(source));
    if (!options.wrong.isEmpty()) {
        complain(options.wrong);
        return std::nullopt;
    }
    plan.input = files.isEmpty() ? QString() : files.constFirst();
    return plan;
}

bool readInput(CalibratePlan& plan, QString& error) {
    constexpr qint64 mostBytes = 1 << 20;
    QFile file(plan.input);
    const bool open = plan.input == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly)
                                                       : file.open(QIODevice::ReadOnly);
    QByteArray bytes;
    while (open && bytes.size() <= mostBytes) { // a pipe gives what it has
        const QByteArray more = file.read(mostBytes);
        if (more.isEmpty())
            break;
        bytes += more;
    }
    if (!open || file.error() != QFileDevice::NoError)
        error = QStringLiteral("cannot read %1: %2").arg(plan.input, file.errorString());
    else if (bytes.size() > mostBytes)
        error = QStringLiteral("%1: more than a megabyte is no list of points").arg(plan.input);
    if (!error.isEmpty())
        return false;
    auto points = readPoints(bytes, error);
    if (!points) {
        error = QStringLiteral("%1:%2").arg(plan.input, error);
        return false;
    }
    plan.task.points = std::move(*points);
    return true;
}

/// Writes a file whole or not at all.
bool save(const QString& name, const QByteArray& bytes, QString& error) {
    QSaveFile file(name);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    error = QStringLiteral("cannot write %1: %2").arg(name, file.errorString());
    return false;
}

int runTrials(const CalibratePlan& plan, std::FILE* out) {
    int exitCode = exitClean;
    for (const int range : {0, 1}) {
        Trial worst;
        double sum = 0.0;
        for (int i = 0; i < plan.trials; ++i) {
            QString error;
            const auto seed = static_cast<std::uint64_t>(plan.seed) + static_cast<std::uint64_t>(i);
            const std::optional<Trial> trial = tryTable(range, seed, error);
            if (!trial) {
                complain(error);
                return exitErrors;
            }
            sum += trial->worst;
            if (i == 0 || trial->worst > worst.worst)
                worst = *trial;
            if (::isatty(STDERR_FILENO) != 0)
                std::fprintf(stderr, "\rrange %d: %d of %d tables%s", range, i + 1, plan.trials,
                             i + 1 == plan.trials ? "\n" : "");
        }
        if (!(worst.worst <= promised))
            exitCode = exitErrors;
        if (plan.json)
            printLine(out, {{QStringLiteral("range"), range},
                            {QStringLiteral("tables"), plan.trials},
                            {QStringLiteral("readings"), worst.readings},
                            {QStringLiteral("worst"), shortened(worst.worst)},
                            {QStringLiteral("worstAt"), shortened(worst.worstAt)},
                            {QStringLiteral("seed"), static_cast<qint64>(worst.seed)},
                            {QStringLiteral("mean"), shortened(sum / plan.trials)},
                            {QStringLiteral("bound"), promised}});
        else
            std::fprintf(
                out,
                "range %d: %d tables, %d readings each: off by at most %.3f °C, at %.2f °C "
                "with seed %llu; mean of the largest errors %.3f °C; bound %.2f °C%s\n",
                range, plan.trials, worst.readings, worst.worst, worst.worstAt,
                static_cast<unsigned long long>(worst.seed), sum / plan.trials, promised,
                worst.worst <= promised ? "" : "  WRONG");
    }
    return exitCode;
}

int calibrate(CalibratePlan& plan, std::FILE* out) {
    QString error;
    if (plan.simulate)
        plan.task.points =
            simulatedPoints(plan.task.range, plan.task.lens, static_cast<std::uint64_t>(plan.seed));
    else
        readInput(plan, error);
    const QString comment = QStringLiteral("black bodies before range %1, lens %2")
                                .arg(plan.task.range)
                                .arg(plan.task.lens);
    if (error.isEmpty() && !plan.savePoints.isEmpty())
        save(plan.savePoints, writePoints(plan.task.points, comment), error);
    const std::optional<CalibrationTable> table =
        error.isEmpty() ? makeTable(plan.task, error) : std::nullopt;
    if (table) {
        const QByteArray file = fileOf(*table, plan.task);
        if (plan.output.isEmpty())
            std::fputs(file.constData(), out);
        else
            save(plan.output, file, error);
        if (error.isEmpty())
            printResiduals(plan.output.isEmpty() ? stderr : out, *table, plan.json);
    }
    if (!error.isEmpty())
        complain(error);
    return error.isEmpty() ? exitClean : exitErrors;
}

} // namespace

} // namespace irmcore::app::calibration

using namespace irmcore::app::calibration;

int irmcore::app::runCalibrate(const QStringList& words) {
    int exitCode = exitUsage;
    std::optional<CalibratePlan> plan = parseCalibrate(words, exitCode);
    if (!plan)
        return exitCode;
    const Results results(false);
    if (results.stream() == nullptr) {
        complain(QStringLiteral("standard output cannot be kept"));
        return exitErrors;
    }
    exitCode =
        plan->trials > 0 ? runTrials(*plan, results.stream()) : calibrate(*plan, results.stream());
    if (!results.delivered()) {
        complain(QStringLiteral("the results could not be written"));
        return exitErrors;
    }
    return exitCode;
}
