#include "diffreport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace irmcore::app {

namespace {

void printLine(std::FILE* to, const QJsonObject& object) {
    std::fprintf(to, "%s\n", QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
}

QJsonValue number(double value) { return std::isfinite(value) ? QJsonValue(value) : QJsonValue(); }

QString nameOf(const SettingName& name) {
    const QString key = QString::fromLatin1(name.key);
    return *name.group == '\0' ? key : QString::fromLatin1(name.group) + QLatin1Char('/') + key;
}

/// A setting as a file has it: the library keeps singles, whose further digits are not the file's.
double asWritten(double setting) { return QString::number(setting, 'g', 6).toDouble(); }

/// Six decimals, or nothing.
QByteArray field(double value) {
    return std::isnan(value) ? QByteArray() : QByteArray::number(value, 'f', 6);
}

void printTables(std::FILE* to, const std::vector<TableDifference>& tables) {
    std::fprintf(to,
                 "Calibration tables, second less first, in °C\n%4s %5s %9s %7s %10s %10s %9s\n",
                 "lens", "range", "largest", "at AD", "first", "second", "mean");
    for (const TableDifference& t : tables) {
        std::fprintf(to, "%4d %5d ", t.key.lens, t.key.range);
        if (!t.first || !t.second) {
            std::fprintf(to, "%s\n",
                         t.first    ? "only the first has it"
                         : t.second ? "only the second has it"
                                    : "neither has one that can be read");
            continue;
        }
        if (t.largest == 0.0 && t.onlyFirst + t.onlySecond == 0) {
            std::fputs("the same\n", to);
            continue;
        }
        std::fprintf(to, "%9.3f %7u %10.3f %10.3f %9.3f", t.largest, t.at, t.firstThere,
                     t.secondThere, t.mean);
        if (t.onlyFirst + t.onlySecond > 0)
            std::fprintf(to, "  counts converted by one alone: %d, %d", t.onlyFirst, t.onlySecond);
        std::fputc('\n', to);
    }
}

void printFactors(std::FILE* to, const std::vector<ModifyDifference>& factors) {
    if (factors.empty()) {
        std::fputs("\nModify factors: the same\n", to);
        return;
    }
    std::fprintf(to,
                 "\nModify factors: what a scene as warm as the shutter reads, second less first, "
                 "in °C\n%4s %5s %9s %7s  inside",
                 "lens", "range", "largest", "inside");
    for (const double inside : ModifyDifference::insides)
        std::fprintf(to, " %7.0f", inside);
    std::fputc('\n', to);
    for (const ModifyDifference& f : factors) {
        std::fprintf(to, "%4d %5d %9.3f %7.1f        ", f.key.lens, f.key.range, f.largest, f.at);
        for (const double effect : f.effects)
            std::fprintf(to, " %+7.3f", effect);
        std::fputc('\n', to);
    }
}

void printSettings(std::FILE* to, const std::vector<SettingDifference>& settings) {
    if (settings.empty()) {
        std::fputs("\nParameters: the same\n", to);
        return;
    }
    std::fprintf(to, "\nParameters\n%-24s %10s %10s  effect on readings\n", "", "first", "second");
    for (const SettingDifference& s : settings) {
        std::fprintf(to, "%-24s %10.6g %10.6g", nameOf(*s.name).toUtf8().constData(), s.first,
                     s.second);
        if (std::isfinite(s.largest))
            std::fprintf(to, "  up to %.3f °C, at %.0f °C", s.largest, s.at);
        else
            std::fputs("  none by itself", to);
        std::fputc('\n', to);
    }
}

} // namespace

void printComparison(std::FILE* to, const Comparison& comparison) {
    printTables(to, comparison.tables);
    printFactors(to, comparison.factors);
    printSettings(to, comparison.settings);
}

void printComparisonJson(std::FILE* to, const Comparison& comparison) {
    for (const TableDifference& t : comparison.tables) {
        const bool both = t.counts > 0;
        printLine(to,
                  {{QStringLiteral("kind"), QStringLiteral("table")},
                   {QStringLiteral("lens"), t.key.lens},
                   {QStringLiteral("range"), t.key.range},
                   {QStringLiteral("inFirst"), t.first},
                   {QStringLiteral("inSecond"), t.second},
                   {QStringLiteral("counts"), t.counts},
                   {QStringLiteral("onlyFirst"), t.onlyFirst},
                   {QStringLiteral("onlySecond"), t.onlySecond},
                   {QStringLiteral("largest"), both ? QJsonValue(t.largest) : QJsonValue()},
                   {QStringLiteral("at"), both ? QJsonValue(static_cast<int>(t.at)) : QJsonValue()},
                   {QStringLiteral("first"), both ? QJsonValue(t.firstThere) : QJsonValue()},
                   {QStringLiteral("second"), both ? QJsonValue(t.secondThere) : QJsonValue()},
                   {QStringLiteral("mean"), both ? QJsonValue(t.mean) : QJsonValue()}});
    }
    for (const ModifyDifference& f : comparison.factors) {
        QJsonArray effects;
        for (std::size_t i = 0; i < f.insides.size(); ++i)
            effects.append(QJsonObject{{QStringLiteral("inside"), f.insides[i]},
                                       {QStringLiteral("effect"), f.effects[i]}});
        printLine(to, {{QStringLiteral("kind"), QStringLiteral("modify")},
                       {QStringLiteral("lens"), f.key.lens},
                       {QStringLiteral("range"), f.key.range},
                       {QStringLiteral("largest"), f.largest},
                       {QStringLiteral("at"), f.at},
                       {QStringLiteral("effects"), effects}});
    }
    for (const SettingDifference& s : comparison.settings)
        printLine(to, {{QStringLiteral("kind"), QStringLiteral("parameter")},
                       {QStringLiteral("name"), nameOf(*s.name)},
                       {QStringLiteral("unit"), QString::fromUtf8(s.name->unit)},
                       {QStringLiteral("first"), asWritten(s.first)},
                       {QStringLiteral("second"), asWritten(s.second)},
                       {QStringLiteral("largest"), number(s.largest)},
                       {QStringLiteral("at"), number(s.at)}});
}

void printComparisonCsv(std::FILE* to, const DirectoryContent& first,
                        const DirectoryContent& second) {
    std::fputs("lens,range,ad,first,second,difference\n", to);
    for (const auto& [key, entry] : first.tables)
        for (unsigned ad = 0; ad < 65536; ++ad) {
            const double a = reportedTemp(entry.table, ad);
            const double b = reportedTemp(second.tables.at(key).table, ad);
            if (!std::isnan(a) || !std::isnan(b))
                std::fprintf(to, "%d,%d,%u,%s,%s,%s\n", key.lens, key.range, ad,
                             field(a).constData(), field(b).constData(), field(b - a).constData());
        }
}

} // namespace irmcore::app
