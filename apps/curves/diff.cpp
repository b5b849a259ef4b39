#include "../commands.h"
#include "../explain/deliver.h"
#include "../options.h"
#include "diffreport.h"

#include <QFileInfo>

#include <algorithm>

namespace irmcore::app {

namespace {

struct DiffPlan {
    QString first; ///< absolute
    QString second;
    std::optional<double> bound; ///< °C
    bool json = false;
    bool csv = false;
    bool verbose = false;
};

std::optional<DiffPlan> parse(const QStringList& words, int& exitCode) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Compares two cameras' directories: what their calibration tables, Modify factors and "
        "parameters make of the same counts, in °C."));
    parser.addPositionalArgument(QStringLiteral("first"), QStringLiteral("a camera's directory"),
                                 QStringLiteral("DIR1"));
    parser.addPositionalArgument(QStringLiteral("second"),
                                 QStringLiteral("the one to hold against it"),
                                 QStringLiteral("DIR2"));
    parser.addOptions({option("bound",
                              "exit code 2 when anything differs by more, or one has a table that "
                              "the other has not",
                              "celsius"),
                       option("json", "one JSON object a line"),
                       option("csv", "the tables' temperatures, count by count"),
                       option("verbose", "show the library's own lines on standard error"),
                       option("help", "this text")});
    exitCode = exitUsage;
    if (!parseWords(parser, words, QStringLiteral("diff"), exitCode))
        return std::nullopt;
    DiffPlan plan;
    plan.json = parser.isSet(QStringLiteral("json"));
    plan.csv = parser.isSet(QStringLiteral("csv"));
    plan.verbose = parser.isSet(QStringLiteral("verbose"));
    const QStringList directories = parser.positionalArguments();
    if (directories.size() != 2 || directories.contains(QString())) {
        complain(QStringLiteral("diff takes two directories"));
        return std::nullopt;
    }
    plan.first = QFileInfo(directories[0]).absoluteFilePath();
    plan.second = QFileInfo(directories[1]).absoluteFilePath();
    if (plan.json && plan.csv) {
        complain(QStringLiteral("--json and --csv exclude each other"));
        return std::nullopt;
    }
    if (parser.isSet(QStringLiteral("bound"))) {
        bool ok = false;
        plan.bound = parser.value(QStringLiteral("bound")).toDouble(&ok);
        if (!ok || !(*plan.bound >= 0.0)) {
            complain(QStringLiteral("--bound takes a number from 0, not '%1'")
                         .arg(parser.value(QStringLiteral("bound"))));
            return std::nullopt;
        }
    }
    return plan;
}

int carryOut(const DiffPlan& plan, std::FILE* out) {
    std::vector<TableKey> keys = tablesIn(plan.first);
    const std::vector<TableKey> others = tablesIn(plan.second);
    keys.insert(keys.end(), others.begin(), others.end());
    QString error;
    const auto first = readDirectory(plan.first, keys, error);
    const auto second = first ? readDirectory(plan.second, keys, error) : std::nullopt;
    if (!second) {
        complain(error);
        return exitErrors;
    }
    const Comparison comparison = compare(*first, *second);
    if (plan.json)
        printComparisonJson(out, comparison);
    else if (plan.csv)
        printComparisonCsv(out, *first, *second);
    else
        printComparison(out, comparison);
    return plan.bound && comparison.exceeds(*plan.bound) ? exitErrors : exitClean;
}

} // namespace

int runDiff(const QStringList& words) {
    int exitCode = exitUsage;
    const std::optional<DiffPlan> plan = parse(words, exitCode);
    if (!plan)
        return exitCode;
    return deliver(plan->verbose, [&plan](std::FILE* out) { return carryOut(*plan, out); });
}

} // namespace irmcore::app
