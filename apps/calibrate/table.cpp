#include "table.h"

#include "../../core/range.h"
#include "../../core/settings.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace irmcore::app::calibration {

namespace {

constexpr double kelvin = 273.15;
constexpr double anchor = 30.0; // °C, where tables pass mid-scale
constexpr int midScale = 32768;
constexpr double sameTemperature = 0.1; // °C within which points are repetitions
constexpr std::size_t fewestPoints = 5; // temperatures

struct Ends {
    int low;
    int high;
};

/// First and last entry, °C. The lowest bound is corrected twice for the inside temperature and the
/// highest never, so that tables reach beyond the range at both ends.
constexpr Ends endsOf(int range) { return range == 0 ? Ends{-40, 180} : Ends{-20, 420}; }

double fourth(double celsius) { return std::pow(celsius + kelvin, 4); }

/// Points in table temperatures, in rising order.
std::vector<Sample> samplesOf(const Task& task) {
    std::vector<Sample> samples;
    for (const CalibrationPoint& point : task.points)
        samples.push_back({tableTemp(point.celsius, task.source), point.ad});
    std::sort(samples.begin(), samples.end(),
              [](const Sample& a, const Sample& b) { return a.celsius < b.celsius; });
    return samples;
}

/// A source's temperature in °C from its table temperature.
double sourceTemp(double table, const Source& source) {
    const double w = 0.95 * fourth(table) + 0.05 * fourth(25.0);
    return std::pow((w - (1.0 - source.emissivity) * fourth(source.reflected)) / source.emissivity,
                    0.25) -
           kelvin;
}

/// Mean of repeated points. Their scatter is that around the law, so that it does not hold their
/// own differences of temperature.
std::vector<Sample> merged(const std::vector<Sample>& samples, const PlanckLaw& law,
                           std::vector<Residual>& residuals) {
    std::vector<Sample> means;
    for (std::size_t first = 0; first < samples.size();) {
        std::size_t end = first;
        double celsius = 0.0;
        double off = 0.0;
        for (; end < samples.size() &&
               samples[end].celsius - samples[first].celsius <= sameTemperature;
             ++end) {
            celsius += samples[end].celsius;
            off += samples[end].ad - law.ad(samples[end].celsius);
        }
        const auto n = static_cast<double>(end - first);
        celsius /= n;
        off /= n;
        double squares = 0.0;
        for (std::size_t i = first; i < end; ++i)
            squares += std::pow(samples[i].ad - law.ad(samples[i].celsius) - off, 2);
        means.push_back({celsius, law.ad(celsius) + off});
        Residual residual{};
        residual.ad = means.back().ad;
        residual.points = static_cast<int>(end - first);
        residual.scatter = residual.points > 1 ? std::sqrt(squares / (n - 1.0)) : 0.0;
        residual.fromLawAd = off;
        residuals.push_back(residual);
        first = end;
    }
    return means;
}

/// The table's straight line at a count: the table temperature.
double temperatureIn(const std::vector<Entry>& entries, double ad) {
    std::size_t i = 0;
    while (i + 2 < entries.size() && entries[i + 1].ad < ad)
        ++i;
    const Entry& a = entries[i];
    const Entry& b = entries[i + 1];
    return a.celsius + (ad - a.ad) * (b.celsius - a.celsius) / (b.ad - a.ad);
}

double countIn(const std::vector<Entry>& entries, double celsius) {
    std::size_t i = 0;
    while (i + 2 < entries.size() && entries[i + 1].celsius < celsius)
        ++i;
    const Entry& a = entries[i];
    const Entry& b = entries[i + 1];
    return a.ad + (celsius - a.celsius) * (b.ad - a.ad) / (b.celsius - a.celsius);
}

/// What keeps samples from making a table; empty when nothing does.
QString wrongWith(const std::vector<Sample>& samples, const Task& task) {
    for (std::size_t i = 1; i < samples.size(); ++i)
        if (samples[i].ad <= samples[i - 1].ad)
            return QStringLiteral("counts do not rise from %1 to %2 °C")
                .arg(sourceTemp(samples[i - 1].celsius, task.source), 0, 'f', 2)
                .arg(sourceTemp(samples[i].celsius, task.source), 0, 'f', 2);
    const double first = samples.front().celsius;
    const double last = samples.back().celsius;
    if (first > anchor || last < anchor)
        return QStringLiteral("30 °C is not within the points: tables are anchored there");
    const Ends ends = endsOf(task.range);
    for (const auto& [beyond, end, side] : {std::tuple(first - ends.low, ends.low, "lowest"),
                                            std::tuple(ends.high - last, ends.high, "highest")})
        if (beyond > task.extrapolate)
            return QStringLiteral("range %1 takes a table to %2 °C, %3 beyond the %4 point; "
                                  "extrapolated are %5 °C at most")
                .arg(task.range)
                .arg(end)
                .arg(beyond, 0, 'f', 1)
                .arg(QLatin1String(side))
                .arg(task.extrapolate);
    return {};
}

} // namespace

double tableTemp(double celsius, const Source& source) {
    const double w =
        source.emissivity * fourth(celsius) + (1.0 - source.emissivity) * fourth(source.reflected);
    return std::pow(std::max(w - 0.05 * fourth(25.0), 0.0) / 0.95, 0.25) - kelvin;
}

std::optional<CalibrationTable> makeTable(const Task& task, QString& error) {
    const std::vector<Sample> all = samplesOf(task);
    CalibrationTable table;
    std::vector<Residual> temperatures;
    if (merged(all, {}, temperatures).size() < fewestPoints) {
        error = QStringLiteral("%1 temperatures are too few: a table takes at least %2")
                    .arg(temperatures.size())
                    .arg(fewestPoints);
        return std::nullopt;
    }
    table.law = fitPlanck(all);
    const std::vector<Sample> samples = merged(all, table.law, table.residuals);
    error = wrongWith(samples, task);
    if (!error.isEmpty())
        return std::nullopt;

    const Curve curve(table.law, samples);
    const Ends ends = endsOf(task.range);
    const double zero = curve.ad(anchor);
    for (int t = ends.low; t <= ends.high; t += settings::entryStep) {
        const auto ad = static_cast<int>(std::lround(curve.ad(t) - zero)) + midScale;
        if (ad < 0 || ad > 65535 || (!table.entries.empty() && ad <= table.entries.back().ad)) {
            error = QStringLiteral("at %1 °C the table would hold %2, which does not rise or is no "
                                   "count")
                        .arg(t)
                        .arg(ad);
            return std::nullopt;
        }
        table.entries.push_back({t, ad, t < samples.front().celsius || t > samples.back().celsius});
    }
    for (std::size_t i = 0; i < samples.size(); ++i) {
        Residual& r = table.residuals[i];
        const double t = samples[i].celsius;
        const double onTable = samples[i].ad - zero + midScale;
        r.celsius = sourceTemp(t, task.source);
        r.fromLaw = r.fromLawAd / ((table.law.ad(t + 0.5) - table.law.ad(t - 0.5)));
        r.readingAd = onTable - countIn(table.entries, t);
        r.reading = sourceTemp(temperatureIn(table.entries, onTable), task.source) - r.celsius;
    }
    return table;
}

QByteArray fileOf(const CalibrationTable& table, const Task& task) {
    const Ends ends = endsOf(task.range);
    const auto number = [](auto value) { return QByteArray::number(value); };
    QByteArray bytes = "; etc/calc_len" + number(task.lens) + "_temp" + number(task.range) +
                       ".conf, from " + number(static_cast<int>(task.points.size())) + " points\n";
    QByteArray guessed;
    for (const Entry& entry : table.entries)
        if (entry.extrapolated)
            guessed += ' ' + number(entry.celsius);
    if (!guessed.isEmpty())
        bytes += "; extrapolated:" + guessed + '\n';
    bytes += "[ParaSet]\nMaxAD=0xFFFF\nMinAD=0\nBaseTemp=30\nMinTemp=" + number(ends.low) +
             "\nMaxTemp=" + number(ends.high) +
             "\nTempNum=" + number(static_cast<int>(table.entries.size())) + "\n\n[Temp2AD]\n";
    for (const Entry& entry : table.entries)
        bytes += number(entry.celsius) + "=0x" + QByteArray::number(entry.ad, 16).toUpper() + '\n';
    return bytes;
}

} // namespace irmcore::app::calibration
