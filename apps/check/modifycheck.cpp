#include "checks.h"
#include "inichecks.h"
#include "names.h"

#include "../../calib/modify.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace irmcore::app::check {

namespace {

constexpr float lowest = 0.1F;  // factors have to be above
constexpr float highest = 3.0F; // and below

QString keyOf(int k) { return QString::fromLatin1(modifyKey(k).text.data()); }

/// A key that names a factor's temperature, if not as the library writes it; the temperature.
std::optional<double> temperatureOf(const QString& key) {
    const QString prefix = QStringLiteral("Averg_");
    bool ok = false;
    const double celsius = key.mid(prefix.size()).toDouble(&ok);
    return ok && key.startsWith(prefix) ? std::optional(celsius) : std::nullopt;
}

class ModifyCheck {
public:
    explicit ModifyCheck(Ini& ini) : m_ini(ini) {
        for (int k = 0; k < modifyEntries; ++k)
            if (m_ini.lines().find(keyOf(k)) != nullptr)
                m_given.push_back(k);
    }

    void run() {
        checkNamesHere();
        std::vector<int> usable;
        for (const int k : m_given)
            if (checkFactor(k))
                usable.push_back(k);
        checkZeros();
        checkGaps();
        checkSteps(usable);
    }

private:
    int lineOf(int k) const { return m_ini.lines().lineOf(keyOf(k)); }

    void checkNamesHere() {
        for (const IniEntry& entry : m_ini.lines().entries) {
            const std::optional<double> celsius = temperatureOf(entry.key);
            if (!entry.group.isEmpty() && celsius) {
                m_ini.add(entry.line, Severity::error, "wrong-group",
                          QStringLiteral("%1 stands in [%2]; factors stand above every group")
                              .arg(entry.key, entry.group),
                          QStringLiteral("nothing"));
                return; // the others there are the same
            }
            if (entry.group.isEmpty())
                checkKey(entry, celsius);
        }
    }

    void checkKey(const IniEntry& entry, const std::optional<double>& celsius) {
        constexpr double last = modifyStart + (modifyEntries - 1) * modifyStep;
        const auto report = [&](Severity severity, const char* code, const QString& message) {
            m_ini.add(entry.line, severity, code, message,
                      severity == Severity::note ? QString() : QStringLiteral("nothing"));
        };
        if (!celsius) {
            const QString right =
                nearest(entry.key.section(QLatin1Char('_'), 0, 0), {QStringLiteral("Averg")});
            if (right.isEmpty())
                report(Severity::note, "unknown-key",
                       QStringLiteral("%1 is not read").arg(entry.key));
            else
                report(
                    Severity::error, "misspelt-key",
                    QStringLiteral("%1 is not read; factors are named Averg_ and a temperature, as "
                                   "in Averg_25 and Averg_25.5")
                        .arg(entry.key));
        } else if (!(*celsius >= modifyStart && *celsius <= last)) {
            report(Severity::warning, "entry-outside",
                   QStringLiteral("%1 is not read; factors are for -20 to 79.5 °C").arg(entry.key));
        } else if (*celsius / modifyStep != std::floor(*celsius / modifyStep)) {
            report(Severity::warning, "entry-off-step",
                   QStringLiteral("%1 is not read; factors are for half degrees").arg(entry.key));
        } else if (const QString right =
                       keyOf(static_cast<int>((*celsius - modifyStart) / modifyStep));
                   right != entry.key) {
            report(Severity::warning, "never-read",
                   QStringLiteral("%1 is never asked for; write %2").arg(entry.key, right));
        }
    }

    static QString takenAt(int k) { return QString::number(static_cast<double>(s_modify[k])); }

    /// Whether the file gives a factor for entry `k`.
    bool checkFactor(int k) {
        const QString key = keyOf(k);
        const std::optional<double> value = m_ini.number(key, 0.0);
        if (!value) {
            if (m_ini.examinable(key))
                m_ini.amendTaken(QStringLiteral(", that is none: %1").arg(takenAt(k)));
            return false;
        }
        const auto factor = static_cast<float>(*value);
        if (factor == 0.0F) {
            m_ini.add(lineOf(k), Severity::warning, "factor-zero",
                      QStringLiteral("%1 is 0, which counts as missing").arg(key), takenAt(k));
            return false;
        }
        if (!(factor > lowest && factor < highest))
            m_ini.add(lineOf(k), Severity::error, "factor-out-of-bounds",
                      QStringLiteral("%1 is above 0.1 and below 3, not %2")
                          .arg(key, m_ini.values().value(key).toString()),
                      takenAt(k));
        return true;
    }

    /// Factors of 0 that filling the gaps leaves.
    void checkZeros() {
        const auto zeros = std::count(std::begin(s_modify), std::end(s_modify), 0.0F);
        if (zeros == 0)
            return;
        const auto first = std::find(std::begin(s_modify), std::end(s_modify), 0.0F);
        const double celsius = modifyTemp(static_cast<int>(first - std::begin(s_modify)));
        m_ini.add(
            m_given.empty() ? 0 : lineOf(m_given.front()), Severity::error, "factor-stays-zero",
            QStringLiteral("no factor is given that could stand in for a 0: %1 factors stay 0, "
                           "from %2 °C inside on")
                .arg(zeros)
                .arg(celsius),
            QStringLiteral("a shutter of 0 °C there"));
    }

    /// Keys that are left out where their like are not.
    void checkGaps() {
        std::vector<int> spaces;
        for (std::size_t i = 1; i < m_given.size(); ++i)
            spaces.push_back(m_given[i] - m_given[i - 1]);
        if (spaces.empty())
            return;
        std::vector<int> sorted = spaces;
        std::nth_element(sorted.begin(),
                         sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2),
                         sorted.end());
        const int usual = sorted[sorted.size() / 2];
        for (std::size_t i = 0; i < spaces.size(); ++i)
            if (spaces[i] > usual)
                m_ini.add(lineOf(m_given[i + 1]), Severity::note, "factor-gap",
                          QStringLiteral("no factor between %1 and %2 °C inside")
                              .arg(modifyTemp(m_given[i]))
                              .arg(modifyTemp(m_given[i + 1])),
                          takenAt(m_given[i]));
    }

    /// Steps of the shutter temperature from factor to factor.
    void checkSteps(const std::vector<int>& usable) {
        constexpr double most = 0.5; // °C
        const auto jump = [&](std::size_t from, std::size_t to) {
            return static_cast<double>(s_modify[usable[to]] - s_modify[usable[from]]) *
                   modifyTemp(usable[to]);
        };
        for (std::size_t i = 1; i < usable.size(); ++i) {
            if (!(std::abs(jump(i - 1, i)) > most))
                continue;
            m_ini.add(lineOf(usable[i]), Severity::warning, "factor-step",
                      QStringLiteral("the shutter temperature jumps by %1 °C at %2 °C inside, the "
                                     "factor from %3 to %4")
                          .arg(jump(i - 1, i), 0, 'f', 2)
                          .arg(modifyTemp(usable[i]))
                          .arg(takenAt(usable[i - 1]), takenAt(usable[i])));
            // One that stands out alone is said once.
            if (i + 1 < usable.size() && std::abs(jump(i - 1, i + 1)) <= most)
                ++i;
        }
    }

    Ini& m_ini;
    std::vector<int> m_given; // entries with a key, rising
};

} // namespace

void checkModify(FPGA& host, const QString& path, const LensRange& pair, Findings& findings) {
    if (stateOf(path, "a file without factors: all are 1", findings) != FileState::file)
        return;
    Ini ini(path, findings);
    if (!ini.checkFormat())
        return;
    host.updateModify(pair.first, pair.second);
    ModifyCheck(ini).run();
}

} // namespace irmcore::app::check
