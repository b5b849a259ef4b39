#include "checks.h"
#include "curve.h"
#include "tableentries.h"

#include "../../core/range.h"
#include "../../measure/tablelookup.h"

#include <algorithm>

namespace irmcore::app::check {

namespace {

void checkTableKeys(Ini& ini) {
    const auto key = [](const char* name, const QString& fallback) {
        return KnownKey{QLatin1String(settings::scalarGroup), QLatin1String(name), fallback};
    };
    const std::vector<KnownKey> extent{key(settings::minTemp, QStringLiteral("0")),
                                       key(settings::maxTemp, QStringLiteral("0")),
                                       key(settings::tempNum, QStringLiteral("0"))};
    const std::vector<KnownKey> others{
        key(settings::maxAd, QLatin1String(settings::defaultMaxAd)),
        key(settings::minAd, QLatin1String(settings::defaultMinAd)),
        key(settings::baseTemp, QString::number(settings::defaultBaseTemp))};
    std::vector<KnownKey> known = others;
    known.insert(known.end(), extent.begin(), extent.end());
    const QStringList meant = checkNames(ini, known, QLatin1String(settings::entryGroup));
    checkMissing(ini, others, meant, Severity::note);
    checkMissing(ini, extent, meant, Severity::error);
}

class TableCheck {
public:
    TableCheck(FPGA& host, Ini& ini, int range) : m_host(host), m_ini(ini), m_range(range) {}

    std::optional<Table> run() {
        checkTableKeys(m_ini);
        const bool limits = checkLimitTexts();
        m_ini.whole(scalarPath(settings::baseTemp), settings::defaultBaseTemp);
        const std::optional<Extent> extent = checkExtent(m_ini);
        if (!extent)
            return std::nullopt;
        m_entries = checkEntries(m_ini, *extent);
        if (m_entries.read.size() < 2) {
            if (m_entries.complete)
                m_ini.add(m_ini.lines().lineOfGroup(QLatin1String(settings::entryGroup)),
                          Severity::error, "too-few-entries",
                          QStringLiteral("a table has two entries at least"),
                          QStringLiteral("a table without entries: readings \"L\""));
            return std::nullopt;
        }
        Table table{m_ini.path(), {}, {}, true};
        m_host.readTable(m_ini.path().toUtf8().constData(), &table.values);
        for (const Entry& entry : m_entries.read)
            table.lines.push_back(entry.line);
        table.sound = checkRise(table.values);
        if (limits)
            checkLimits(table.values);
        if (m_entries.complete)
            checkCover();
        if (table.sound)
            checkCurve(table.values);
        return table;
    }

private:
    int lineOf(const char* key) const { return m_ini.lines().lineOf(scalarPath(key)); }

    bool checkLimitTexts() {
        const auto fine = [this](const char* key, const char* fallback) {
            return m_ini.hexadecimal(scalarPath(key), fallback).has_value() ||
                   m_ini.lines().find(scalarPath(key)) == nullptr;
        };
        const bool high = fine(settings::maxAd, settings::defaultMaxAd);
        return fine(settings::minAd, settings::defaultMinAd) && high;
    }

    /// Whether all counts are sound and rise.
    bool checkRise(const TempInfoTab& table) {
        bool sound = m_entries.read.front().sound;
        for (std::size_t i = 1; i < m_entries.read.size(); ++i) {
            sound = sound && m_entries.read[i].sound;
            if (!m_entries.read[i].sound || !m_entries.read[i - 1].sound ||
                table.ad[i] > table.ad[i - 1])
                continue;
            m_ini.add(m_entries.read[i].line, Severity::error, "table-not-rising",
                      QStringLiteral("%1 °C has the count %2, and %3 °C before it %4")
                          .arg(m_entries.read[i].celsius)
                          .arg(table.ad[i])
                          .arg(m_entries.read[i - 1].celsius)
                          .arg(table.ad[i - 1]),
                      QStringLiteral("the first segment that holds a count"));
            sound = false;
        }
        return sound;
    }

    /// The counts between which the library converts.
    void checkLimits(const TempInfoTab& table) {
        const std::size_t last = m_entries.read.size() - 1;
        if (table.minAD >= table.maxAD) {
            m_ini.add(lineOf(settings::minAd), Severity::error, "limits-swapped",
                      QStringLiteral("MinAD is not below MaxAD"),
                      QStringLiteral("no count that can be converted"));
            return;
        }
        const auto cut = [&](const char* key, std::uint16_t limit, const char* side) {
            const TableTemp at = findTemp(table, limit);
            m_ini.add(lineOf(key), Severity::warning, "limit-cuts-table",
                      QStringLiteral("%1 cuts entries off").arg(QLatin1String(key)),
                      at.place != Place::inside
                          ? QStringLiteral("no count of the table that can be converted")
                          : QStringLiteral("a table that ends %1 %2 °C")
                                .arg(QLatin1String(side))
                                .arg(static_cast<double>(at.celsius), 0, 'f', 1));
        };
        if (m_entries.read.front().sound && table.minAD > table.ad[0])
            cut(settings::minAd, table.minAD, "below");
        if (m_entries.read[last].sound && table.maxAD < table.ad[last])
            cut(settings::maxAd, table.maxAD, "above");
    }

    /// Whether the entries reach over the range that is measured in.
    void checkCover() {
        const RangeLimits limits = limitsOfRange(m_range);
        const auto report = [&](const char* key, int limit) {
            m_ini.add(lineOf(key), Severity::warning, "range-not-covered",
                      QStringLiteral("range %1 measures %2 to %3 °C, which takes entries beyond %4")
                          .arg(m_range)
                          .arg(limits.min)
                          .arg(limits.max)
                          .arg(limit));
        };
        if (static_cast<float>(m_entries.read.front().celsius) >
            toTable(static_cast<float>(limits.min)))
            report(settings::minTemp, limits.min);
        if (static_cast<float>(m_entries.read.back().celsius) <
            toTable(static_cast<float>(limits.max)))
            report(settings::maxTemp, limits.max);
    }

    /// Single entries that stand out of the curve.
    void checkCurve(const TempInfoTab& table) {
        constexpr double share = 0.1; // of a step, 1 °C
        constexpr int most = 5;
        const bool even = m_entries.read.back().celsius - m_entries.read.front().celsius ==
                          settings::entryStep * (static_cast<int>(m_entries.read.size()) - 1);
        if (!even)
            return;
        const std::vector<double> counts(table.ad, table.ad + m_entries.read.size());
        for (const Outlier& outlier : offCurve(counts, share, most)) {
            const Entry& entry = m_entries.read[static_cast<std::size_t>(outlier.index)];
            m_ini.add(entry.line, Severity::warning, "entry-off-curve",
                      QStringLiteral("the count of %1 °C is about %2 too %3 for its neighbours")
                          .arg(entry.celsius)
                          .arg(std::abs(outlier.by), 0, 'f', 0)
                          .arg(outlier.by > 0 ? QStringLiteral("high") : QStringLiteral("low")));
        }
    }

    FPGA& m_host;
    Ini& m_ini;
    int m_range;
    Entries m_entries;
};

} // namespace

std::optional<Table> checkTable(FPGA& host, const QString& path, int range, Findings& findings) {
    const bool last = path.endsWith(QLatin1String("_default.conf"));
    if (stateOf(path,
                last ? "a table without entries" : "a file without keys: the fallback is next",
                findings) != FileState::file)
        return std::nullopt;
    Ini ini(path, findings);
    if (!ini.checkFormat())
        return std::nullopt;
    if (!last && !hasEntries(path)) {
        checkTableKeys(ini);
        return std::nullopt; // that the fallback is taken, the pair says
    }
    return TableCheck(host, ini, range).run();
}

bool hasEntries(const QString& path) {
    settings::File file(path.toUtf8().constData());
    file.beginGroup(settings::entryGroup);
    return file.keys().size() >= 2;
}

} // namespace irmcore::app::check
