#include "../bench.h"
#include "../commands.h"
#include "../options.h"
#include "../results.h"
#include "checks.h"

#include "../../core/settings.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <algorithm>

namespace irmcore::app {

namespace check {

namespace {

/// The range index in a table's or Modify file's name; 0 where it names none.
LensRange pairIn(const QString& path) {
    static const QRegularExpression numbers(QStringLiteral("(-?\\d+)"));
    std::vector<int> found;
    for (auto match = numbers.globalMatch(path); match.hasNext();)
        found.push_back(match.next().captured(1).toInt());
    if (found.empty())
        return {0, 0};
    return found.size() == 1 ? LensRange{0, found[0]} : LensRange{found[0], found[1]};
}

} // namespace

Findings checkAll(FPGA& host) {
    Findings findings;
    const int storedRange = settings::storedTempRange();
    checkSettings(host, storedRange, findings);
    const CameraFiles files = listFiles(storedRange, findings);
    std::map<QString, Table> tables;
    for (const QString& path : files.tables)
        if (const auto table = checkTable(host, path, pairIn(path).second, findings))
            tables.emplace(path, *table);
    for (const QString& path : files.modifies)
        checkModify(host, path, pairIn(path), findings);
    checkPairs(files, tables, storedRange, findings);
    std::stable_sort(findings.begin(), findings.end(), [](const Finding& a, const Finding& b) {
        return a.file != b.file ? a.file < b.file : a.line < b.line;
    });
    return findings;
}

} // namespace check

namespace {

using check::Finding;
using check::Severity;

const char* nameOf(Severity severity) {
    switch (severity) {
    case Severity::note:
        return "note";
    case Severity::warning:
        return "warning";
    case Severity::error:
        break;
    }
    return "error";
}

/// On one line, whatever a file's values hold.
QString oneLine(QString text) {
    for (QChar& c : text)
        if (!c.isPrint())
            c = QLatin1Char(' ');
    return text;
}

void printLine(std::FILE* to, const Finding& finding) {
    QString text = finding.file;
    if (finding.line > 0)
        text += QStringLiteral(":%1").arg(finding.line);
    text +=
        QStringLiteral(": %1: %2").arg(QLatin1String(nameOf(finding.severity)), finding.message);
    if (!finding.taken.isEmpty())
        text += QStringLiteral("; taken as %1").arg(finding.taken);
    std::fprintf(to, "%s [%s]\n", oneLine(text).toUtf8().constData(), finding.code);
}

void printJson(std::FILE* to, const Finding& finding) {
    const QJsonObject object{
        {QStringLiteral("file"), finding.file},
        {QStringLiteral("line"), finding.line > 0 ? QJsonValue(finding.line) : QJsonValue()},
        {QStringLiteral("severity"), QLatin1String(nameOf(finding.severity))},
        {QStringLiteral("code"), QLatin1String(finding.code)},
        {QStringLiteral("message"), finding.message},
        {QStringLiteral("taken"),
         finding.taken.isEmpty() ? QJsonValue() : QJsonValue(finding.taken)}};
    std::fprintf(to, "%s\n", QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
}

/// Checks a directory that is there, and prints what there is to say.
int report(const QString& directory, bool json, std::FILE* out) {
    check::Findings findings;
    {
        Bench bench(directory, irmsim::Scene::bench(160, 120), {}, 0);
        if (!bench.error().isEmpty()) {
            complain(bench.error());
            return exitErrors;
        }
        findings = check::checkAll(bench.host());
    }
    int counts[3] = {};
    const QString prefix =
        directory.endsWith(QLatin1Char('/')) ? directory : directory + QLatin1Char('/');
    for (Finding& finding : findings) {
        finding.file.prepend(prefix);
        ++counts[static_cast<int>(finding.severity)];
        if (json)
            printJson(out, finding);
        else
            printLine(out, finding);
    }
    const auto& [notes, warnings, errors] = counts;
    if (!json)
        std::fprintf(out, "errors: %d, warnings: %d, notes: %d\n", errors, warnings, notes);
    return errors + warnings == 0 ? exitClean : exitErrors;
}

} // namespace

int runCheck(const QStringList& words) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Says what the library would take for granted in the files of a camera directory, by file "
        "and line.\nExit code 0 when there is nothing above a note, 2 when there is."));
    parser.addOptions({option("json", "one JSON object a line"),
                       option("verbose", "show the library's own lines on standard error"),
                       option("help", "this text")});
    parser.addPositionalArgument(QStringLiteral("DIR"),
                                 QStringLiteral("the folder that holds Parameter/ and etc/"));
    int exitCode = exitUsage;
    if (!parseWords(parser, words, QStringLiteral("check"), exitCode))
        return exitCode;
    const QStringList directories = parser.positionalArguments();
    if (directories.size() != 1) {
        complain(QStringLiteral("usage: irmcore check [OPTIONS] DIR"));
        return exitUsage;
    }
    if (!QFileInfo(directories.constFirst()).isDir()) {
        complain(QStringLiteral("%1 is no folder").arg(directories.constFirst()));
        return exitUsage;
    }
    const Results results(parser.isSet(QStringLiteral("verbose")));
    if (results.stream() == nullptr) {
        complain(QStringLiteral("standard output cannot be kept"));
        return exitErrors;
    }
    exitCode =
        report(directories.constFirst(), parser.isSet(QStringLiteral("json")), results.stream());
    if (!results.delivered()) {
        complain(QStringLiteral("the results could not be written"));
        return exitErrors;
    }
    return exitCode;
}

} // namespace irmcore::app
