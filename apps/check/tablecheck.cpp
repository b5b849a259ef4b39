#include "checks.h"
#include "curve.h"
#include "inichecks.h"

#include "../../core/range.h"
#include "../../measure/tablelookup.h"

#include <QSet>

#include <algorithm>

namespace irmcore::app::check {

namespace {

QString scalar(const char* key) {
    return QLatin1String(settings::scalarGroup) + QLatin1Char('/') + QLatin1String(key);
}

QString entryPath(int celsius) {
    return QLatin1String(settings::entryGroup) + QLatin1Char('/') + QString::number(celsius);
}

/// An entry by its key.
struct Entry {
    int celsius;
    int line;
    bool sound; ///< its value is a count
};

QString span(const std::vector<Entry>& entries) {
    const QString first = QString::number(entries.front().celsius);
    return entries.size() == 1 ? QStringLiteral("%1 °C").arg(first)
                               : QStringLiteral("%1 to %2 °C, %3 entries,")
                                     .arg(first)
                                     .arg(entries.back().celsius)
                                     .arg(entries.size());
}

class TableCheck {
public:
    TableCheck(FPGA& host, Ini& ini, int range) : m_host(host), m_ini(ini), m_range(range) {}

    std::optional<Table> run() {
        checkKeys();
        const bool limits = checkLimitTexts();
        m_ini.whole(scalar(settings::baseTemp), settings::defaultBaseTemp);
        if (!readExtent())
            return std::nullopt;
        sortEntries();
        checkCount();
        const auto read = std::min<std::size_t>(m_used.size(), static_cast<std::size_t>(m_count));
        m_used.resize(read);
        if (read < 2) {
            if (m_complete)
                m_ini.add(m_ini.lines().lineOfGroup(QLatin1String(settings::entryGroup)),
                          Severity::error, "too-few-entries",
                          QStringLiteral("a table has two entries at least"),
                          QStringLiteral("readings \"L\""));
            return std::nullopt;
        }
        Table table{m_ini.path(), {}, {}, true};
        m_host.readTable(m_ini.path().toUtf8().constData(), &table.values);
        for (const Entry& entry : m_used)
            table.lines.push_back(entry.line);
        table.sound = checkRise(table.values);
        if (limits)
            checkLimits(table.values);
        if (m_complete)
            checkCover();
        if (table.sound)
            checkCurve(table.values);
        return table;
    }

private:
    int lineOf(const char* key) const { return m_ini.lines().lineOf(scalar(key)); }

    void checkKeys() {
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
        const QStringList meant = checkNames(m_ini, known, QLatin1String(settings::entryGroup));
        checkMissing(m_ini, others, meant, Severity::note);
        checkMissing(m_ini, extent, meant, Severity::error);
    }

    bool checkLimitTexts() {
        const auto fine = [this](const char* key, const char* fallback) {
            return m_ini.hexadecimal(scalar(key), fallback).has_value() ||
                   m_ini.lines().find(scalar(key)) == nullptr;
        };
        const bool high = fine(settings::maxAd, settings::defaultMaxAd);
        return fine(settings::minAd, settings::defaultMinAd) && high;
    }

    /// What the file says of the entries' extent; false when that is nothing to go by.
    bool readExtent() {
        const auto low = m_ini.whole(scalar(settings::minTemp), settings::defaultMinTemp);
        const auto high = m_ini.whole(scalar(settings::maxTemp), settings::defaultMaxTemp);
        const auto count = m_ini.whole(scalar(settings::tempNum), settings::defaultTempNum);
        if (!low || !high || !count)
            return false;
        m_low = *low;
        m_high = *high;
        m_count = std::clamp(*count, 0, tableCapacity);
        if (m_low > m_high) {
            m_ini.add(lineOf(settings::minTemp), Severity::error, "limits-swapped",
                      QStringLiteral("MinTemp is above MaxTemp"),
                      QStringLiteral("a table without entries"));
            return false;
        }
        if (m_count != *count) {
            m_ini.add(lineOf(settings::tempNum), Severity::error, "out-of-range",
                      QStringLiteral("TempNum is 0 to 60, not %1").arg(*count),
                      QString::number(m_count));
            m_complete = false;
        }
        return true;
    }

    /// Tells the entries that can be read from those that never are.
    void sortEntries() {
        std::vector<Entry> below;
        std::vector<Entry> above;
        std::vector<Entry> between;
        for (const IniEntry& entry : m_ini.lines().entries) {
            if (entry.group != QLatin1String(settings::entryGroup) ||
                m_ini.lines().find(entry.path()) != &entry)
                continue;
            bool ok = false;
            const int celsius = entry.key.toInt(&ok);
            if (!ok || entryPath(celsius) != entry.path()) {
                bool number = false;
                const double degrees = entry.key.toDouble(&number);
                m_ini.add(
                    entry.line, Severity::warning, "never-read",
                    QStringLiteral("entries are named by whole degrees, not '%1'").arg(entry.key),
                    number && degrees == static_cast<int>(degrees)
                        ? QStringLiteral("nothing; write %1").arg(static_cast<int>(degrees))
                        : QStringLiteral("nothing"));
            } else if (celsius < m_low) {
                below.push_back({celsius, entry.line, true});
            } else if (celsius > m_high) {
                above.push_back({celsius, entry.line, true});
            } else if ((celsius - m_low) % settings::entryStep != 0) {
                between.push_back({celsius, entry.line, true});
            } else {
                const bool sound = m_ini.hexadecimal(entry.path(), "0").has_value();
                m_used.push_back({celsius, entry.line, sound});
            }
        }
        std::sort(m_used.begin(), m_used.end(),
                  [](const Entry& a, const Entry& b) { return a.celsius < b.celsius; });
        reportUnread(below, "entry-outside", "below MinTemp");
        reportUnread(above, "entry-outside", "above MaxTemp");
        reportUnread(between, "entry-off-step", "not in steps of 10 from MinTemp");
    }

    void reportUnread(std::vector<Entry>& entries, const char* code, const char* what) {
        if (entries.empty())
            return;
        std::sort(entries.begin(), entries.end(),
                  [](const Entry& a, const Entry& b) { return a.celsius < b.celsius; });
        m_ini.add(
            entries.front().line, Severity::error, code,
            QStringLiteral("%1 is %2: never read").arg(span(entries), QString::fromLatin1(what)));
        m_complete = false;
    }

    /// Temperatures without an entry, and whether TempNum is right.
    void checkCount() {
        int next = m_low;
        const auto missingUpTo = [&](int end, int line) {
            if (next >= end)
                return;
            const int last = end - settings::entryStep;
            m_ini.add(
                line, Severity::warning, "missing-entry",
                next == last
                    ? QStringLiteral("%1 °C is missing before this").arg(next)
                    : QStringLiteral("%1 to %2 °C are missing before this").arg(next).arg(last),
                QStringLiteral("a straight line across"));
        };
        for (const Entry& entry : m_used) {
            missingUpTo(entry.celsius, entry.line);
            next = entry.celsius + settings::entryStep;
        }
        if (m_complete && !m_used.empty() && next <= m_high) {
            m_ini.add(lineOf(settings::maxTemp), Severity::warning, "missing-entry",
                      QStringLiteral("the entries end at %1 °C, before MaxTemp")
                          .arg(m_used.back().celsius));
            m_complete = false;
        }
        const int there = static_cast<int>(m_used.size());
        if (m_count > there) {
            m_ini.add(
                lineOf(settings::tempNum), Severity::error, "count-too-high",
                QStringLiteral("TempNum is %1, but %2 entries can be read").arg(m_count).arg(there),
                QStringLiteral("%1 more entries of count 0 at 0 °C").arg(m_count - there));
            m_complete = false;
        } else if (m_count < there && m_complete) {
            m_ini.add(
                lineOf(settings::tempNum), Severity::error, "count-too-low",
                QStringLiteral("TempNum is %1, but %2 entries can be read").arg(m_count).arg(there),
                m_count == 0 ? QStringLiteral("a table without entries")
                             : QStringLiteral("the entries up to %1 °C")
                                   .arg(m_used[static_cast<std::size_t>(m_count) - 1].celsius));
            m_complete = false;
        }
    }

    /// Whether all counts are sound and rise.
    bool checkRise(const TempInfoTab& table) {
        bool sound = m_used.front().sound;
        for (std::size_t i = 1; i < m_used.size(); ++i) {
            sound = sound && m_used[i].sound;
            if (!m_used[i].sound || !m_used[i - 1].sound || table.ad[i] > table.ad[i - 1])
                continue;
            m_ini.add(m_used[i].line, Severity::error, "table-not-rising",
                      QStringLiteral("%1 °C has the count %2, and %3 °C before it %4")
                          .arg(m_used[i].celsius)
                          .arg(table.ad[i])
                          .arg(m_used[i - 1].celsius)
                          .arg(table.ad[i - 1]),
                      QStringLiteral("the first segment that holds a count"));
            sound = false;
        }
        return sound;
    }

    /// The counts between which the library converts.
    void checkLimits(const TempInfoTab& table) {
        const std::size_t last = m_used.size() - 1;
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
        if (m_used.front().sound && table.minAD > table.ad[0])
            cut(settings::minAd, table.minAD, "below");
        if (m_used[last].sound && table.maxAD < table.ad[last])
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
        if (static_cast<float>(m_used.front().celsius) > toTable(static_cast<float>(limits.min)))
            report(settings::minTemp, limits.min);
        if (static_cast<float>(m_used.back().celsius) < toTable(static_cast<float>(limits.max)))
            report(settings::maxTemp, limits.max);
    }

    /// Single entries that stand out of the curve.
    void checkCurve(const TempInfoTab& table) {
        constexpr double share = 0.1; // of a step, 1 °C
        constexpr int most = 5;
        const bool even = m_used.back().celsius - m_used.front().celsius ==
                          settings::entryStep * (static_cast<int>(m_used.size()) - 1);
        if (!even)
            return;
        const std::vector<double> counts(table.ad, table.ad + m_used.size());
        for (const Outlier& outlier : offCurve(counts, share, most)) {
            const Entry& entry = m_used[static_cast<std::size_t>(outlier.index)];
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
    int m_low = 0;
    int m_high = 0;
    int m_count = 0;
    bool m_complete = true;    // nothing was said yet of entries that are not read
    std::vector<Entry> m_used; // that the library finds, rising
};

} // namespace

std::optional<Table> checkTable(FPGA& host, const QString& path, int range, Findings& findings) {
    if (stateOf(path, "a table without entries", findings) != FileState::file)
        return std::nullopt;
    Ini ini(path, findings);
    if (!ini.checkFormat())
        return std::nullopt;
    return TableCheck(host, ini, range).run();
}

bool hasEntries(const QString& path) {
    settings::File file(path.toUtf8().constData());
    file->beginGroup(QLatin1String(settings::entryGroup));
    return file->allKeys().size() >= 2;
}

} // namespace irmcore::app::check
