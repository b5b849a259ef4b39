#include "tableentries.h"

#include "../../measure/tempinfotab.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace irmcore::app::check {

namespace {

using Temp = std::numeric_limits<std::int16_t>; // an entry's temperature

QString span(const std::vector<Entry>& entries) {
    const QString first = QString::number(entries.front().celsius);
    return entries.size() == 1 ? QStringLiteral("%1 °C is").arg(first)
                               : QStringLiteral("%1 to %2 °C, %3 entries, are")
                                     .arg(first)
                                     .arg(entries.back().celsius)
                                     .arg(entries.size());
}

void sortByTemperature(std::vector<Entry>& entries) {
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.celsius < b.celsius; });
}

/// Reports entries that are all passed over for the same reason; false when there are some.
bool noneUnread(Ini& ini, std::vector<Entry> entries, const char* code, const char* where) {
    if (entries.empty())
        return true;
    sortByTemperature(entries);
    ini.add(entries.front().line, Severity::error, code,
            QStringLiteral("%1 %2: never read").arg(span(entries), QString::fromLatin1(where)),
            QStringLiteral("nothing"));
    return false;
}

void reportKey(Ini& ini, const IniEntry& entry) {
    bool ok = false;
    const double degrees = entry.key.toDouble(&ok);
    const bool whole = ok && std::abs(degrees) <= Temp::max() && degrees == std::trunc(degrees);
    ini.add(entry.line, Severity::warning, "never-read",
            QStringLiteral("entries are named by whole degrees, not '%1'").arg(entry.key),
            whole ? QStringLiteral("nothing; write %1").arg(degrees) : QStringLiteral("nothing"));
}

/// Tells the entries that the library asks for from those that it never does.
Entries sorted(Ini& ini, const Extent& extent) {
    Entries entries;
    std::vector<Entry> below;
    std::vector<Entry> above;
    std::vector<Entry> between;
    for (const IniEntry& entry : ini.lines().entries) {
        if (entry.group != QLatin1String(settings::entryGroup) ||
            ini.lines().find(entry.path) != &entry)
            continue;
        bool ok = false;
        const int celsius = entry.key.toInt(&ok);
        if (!ok || QString::number(celsius) != entry.key)
            reportKey(ini, entry);
        else if (celsius < extent.low)
            below.push_back({celsius, entry.line, true});
        else if (celsius > extent.high)
            above.push_back({celsius, entry.line, true});
        else if ((celsius - extent.low) % settings::entryStep != 0)
            between.push_back({celsius, entry.line, true});
        else
            entries.read.push_back(
                {celsius, entry.line, ini.hexadecimal(entry.path, "0").has_value()});
    }
    sortByTemperature(entries.read);
    const bool low = noneUnread(ini, below, "entry-outside", "below MinTemp");
    const bool high = noneUnread(ini, above, "entry-outside", "above MaxTemp");
    const bool step = noneUnread(ini, between, "entry-off-step", "not in steps of 10 from MinTemp");
    entries.complete = low && high && step;
    return entries;
}

/// Reports temperatures without an entry.
void checkGaps(Ini& ini, const Extent& extent, Entries& entries) {
    int next = extent.low;
    for (const Entry& entry : entries.read) {
        const int last = entry.celsius - settings::entryStep;
        if (next <= last)
            ini.add(entry.line, Severity::warning, "missing-entry",
                    next == last
                        ? QStringLiteral("%1 °C is missing before this").arg(next)
                        : QStringLiteral("%1 to %2 °C are missing before this").arg(next).arg(last),
                    next == extent.low ? QStringLiteral("a table from %1 °C on").arg(entry.celsius)
                                       : QStringLiteral("a straight line across"));
        next = entry.celsius + settings::entryStep;
    }
    if (entries.complete && next <= extent.high) {
        ini.add(ini.lines().lineOf(scalarPath(settings::maxTemp)), Severity::warning,
                "missing-entry",
                QStringLiteral("the entries end at %1 °C, before MaxTemp")
                    .arg(entries.read.back().celsius),
                QStringLiteral("a table up to there"));
        entries.complete = false;
    }
}

void checkCount(Ini& ini, const Extent& extent, Entries& entries) {
    const int there = static_cast<int>(entries.read.size());
    const auto report = [&](const char* code, const QString& taken) {
        ini.add(ini.lines().lineOf(scalarPath(settings::tempNum)), Severity::error, code,
                QStringLiteral("TempNum is %1, but %2 entries can be read")
                    .arg(extent.count)
                    .arg(there),
                taken);
        entries.complete = false;
    };
    if (extent.count > there) {
        report("count-too-high", QStringLiteral("a table with %1 of count 0 at 0 °C at its end")
                                     .arg(extent.count - there));
    } else if (extent.count < there) {
        entries.read.resize(static_cast<std::size_t>(extent.count));
        report("count-too-low",
               entries.read.empty()
                   ? QStringLiteral("a table without entries")
                   : QStringLiteral("the entries up to %1 °C").arg(entries.read.back().celsius));
    }
}

} // namespace

QString scalarPath(const char* key) {
    return QLatin1String(settings::scalarGroup) + QLatin1Char('/') + QLatin1String(key);
}

std::optional<Extent> checkExtent(Ini& ini) {
    const auto low = ini.whole(scalarPath(settings::minTemp), settings::defaultMinTemp);
    const auto high = ini.whole(scalarPath(settings::maxTemp), settings::defaultMaxTemp);
    const auto count = ini.whole(scalarPath(settings::tempNum), settings::defaultTempNum);
    if (!low || !high || !count)
        return std::nullopt;
    const auto report = [&](const char* key, const char* code, const QString& message,
                            const QString& taken) {
        ini.add(ini.lines().lineOf(scalarPath(key)), Severity::error, code, message, taken);
    };
    if (*low > *high) {
        report(settings::minTemp, "limits-swapped", QStringLiteral("MinTemp is above MaxTemp"),
               QStringLiteral("a table without entries"));
        return std::nullopt;
    }
    for (const auto& [key, value] :
         {std::pair(settings::minTemp, *low), {settings::maxTemp, *high}})
        if (value < Temp::min() || value > Temp::max()) {
            report(key, "out-of-range",
                   QStringLiteral("%1 is no temperature").arg(QLatin1String(key)),
                   QStringLiteral("the entries that 16 bits hold"));
            return std::nullopt;
        }
    const Extent extent{*low, *high, std::clamp(*count, 0, tableCapacity)};
    if (extent.count != *count)
        report(settings::tempNum, "out-of-range",
               QStringLiteral("TempNum is 0 to 60, not %1").arg(*count),
               QString::number(extent.count));
    return extent;
}

Entries checkEntries(Ini& ini, const Extent& extent) {
    Entries entries = sorted(ini, extent);
    if (entries.read.empty() && entries.complete)
        return entries; // nothing there at all
    checkGaps(ini, extent, entries);
    checkCount(ini, extent, entries);
    return entries;
}

} // namespace irmcore::app::check
