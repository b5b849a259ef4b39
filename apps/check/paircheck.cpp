#include "checks.h"
#include "curve.h"

#include "../../core/settings.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <set>

namespace irmcore::app::check {

namespace {

/// The table file that the library takes for a pair, as long as it is there.
QString takenTable(const LensRange& pair) {
    const QString primary = tablePath(pair.first, pair.second);
    return QFileInfo::exists(primary) && hasEntries(primary)
               ? primary
               : tableFallbackPath(pair.first, pair.second);
}

void checkTableFiles(const LensRange& pair, Findings& findings) {
    const QString primary = tablePath(pair.first, pair.second);
    const QString fallback = tableFallbackPath(pair.first, pair.second);
    if (takenTable(pair) == primary)
        return;
    const bool there = QFileInfo::exists(fallback);
    if (QFileInfo::exists(primary))
        findings.push_back({primary, 0, there ? Severity::warning : Severity::error,
                            "fallback-taken", QStringLiteral("fewer than two keys in [Temp2AD]"),
                            there ? fallback : QStringLiteral("a table without entries")});
    else if (there)
        findings.push_back({primary, 0, Severity::warning, "fallback-taken",
                            QStringLiteral("there is no such file"), fallback});
    else
        findings.push_back({primary, 0, Severity::error, "missing-table",
                            QStringLiteral("there is no such file, nor %1").arg(fallback),
                            QStringLiteral("a table without entries: readings \"L\"")});
}

void checkModifyFile(const LensRange& pair, const CameraFiles& files, Findings& findings) {
    const QString path = modifyPath(pair.first, pair.second);
    if (files.modifies.empty() || QFileInfo::exists(path))
        return;
    const bool shared = files.modifies.contains(modifyPath(0, 0));
    if (shared && files.modifies.size() == 1)
        return; // one for all
    findings.push_back(
        {path, 0, Severity::warning, "fallback-taken",
         QStringLiteral("others have a Modify file of their own, this lens and range "
                        "has none"),
         shared ? modifyPath(0, 0) : QStringLiteral("factors of 1")});
}

/// The temperatures that two tables share, and the counts of each.
struct Shared {
    std::vector<double> low;
    std::vector<double> high;
    std::vector<int> highEntry;
};

Shared sharedOf(const Table& low, const Table& high) {
    Shared shared;
    for (int i = 0; i < high.count(); ++i) {
        const auto* const end = low.values.temp + low.count();
        const auto* const at = std::find(low.values.temp, end, high.values.temp[i]);
        if (at == end)
            continue;
        shared.low.push_back(low.values.ad[at - low.values.temp]);
        shared.high.push_back(high.values.ad[i]);
        shared.highEntry.push_back(i);
    }
    return shared;
}

/// Whether a black body reads the same through both tables. Range and range differ by how long the
/// detector integrates, so the counts of one are a straight line over those of the other.
void checkJump(const Table& low, const Table& high, Findings& findings) {
    constexpr double most = 2.0; // °C
    constexpr std::size_t fewest = 4;
    const Shared shared = sharedOf(low, high);
    if (shared.low.size() < fewest)
        return;
    const Line line = fitLine(shared.low, shared.high);
    double worst = 0;
    std::size_t worstAt = 0;
    for (std::size_t i = 0; i < shared.low.size(); ++i) {
        const int entry = shared.highEntry[i];
        const int next = entry + 1 < high.count() ? entry + 1 : entry - 1;
        const double countsPerDegree =
            static_cast<double>(high.values.ad[next] - high.values.ad[entry]) /
            (high.values.temp[next] - high.values.temp[entry]);
        const double off =
            (line.offset + line.slope * shared.low[i] - shared.high[i]) / countsPerDegree;
        if (std::abs(off) > std::abs(worst)) {
            worst = off;
            worstAt = i;
        }
    }
    if (std::abs(worst) <= most)
        return;
    const auto entry = static_cast<std::size_t>(shared.highEntry[worstAt]);
    findings.push_back({high.path,
                        high.lines[entry],
                        Severity::warning,
                        "range-jump",
                        QStringLiteral("a black body of %1 °C by %2 is about %3 °C by this table")
                            .arg(high.values.temp[entry])
                            .arg(low.path)
                            .arg(high.values.temp[entry] + worst, 0, 'f', 1),
                        {}});
}

void checkRanges(int lens, const LensRange& pair, const std::map<QString, Table>& tables,
                 Findings& findings) {
    const auto low = tables.find(takenTable({lens, 0}));
    const auto high = tables.find(takenTable(pair));
    if (low == tables.end() || high == tables.end())
        return;
    const Table& cold = low->second;
    const Table& hot = high->second;
    const int coldEnd = cold.values.temp[cold.count() - 1];
    const int hotStart = hot.values.temp[0];
    if (hotStart > coldEnd)
        findings.push_back({hot.path,
                            hot.lines.front(),
                            Severity::error,
                            "ranges-apart",
                            QStringLiteral("begins at %1 °C, where %2 has ended at %3 °C")
                                .arg(hotStart)
                                .arg(cold.path)
                                .arg(coldEnd),
                            {}});
    else if (cold.sound && hot.sound)
        checkJump(cold, hot, findings);
}

} // namespace

void checkPairs(const CameraFiles& files, const std::map<QString, Table>& tables, int storedRange,
                Findings& findings) {
    std::set<int> lenses{0};
    std::set<int> ranges{0, storedRange};
    for (const auto& [lens, range] : files.paired) {
        lenses.insert(lens);
        ranges.insert(range);
    }
    for (const int lens : lenses)
        for (const int range : ranges) {
            checkTableFiles({lens, range}, findings);
            checkModifyFile({lens, range}, files, findings);
            if (range != 0)
                checkRanges(lens, {lens, range}, tables, findings);
        }
}

} // namespace irmcore::app::check
