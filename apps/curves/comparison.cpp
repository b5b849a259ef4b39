#include "comparison.h"

#include "../../measure/literal.h"
#include "../../measure/radiometry.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace irmcore::app {

namespace {

constexpr unsigned counts = 65536;
constexpr double none = std::numeric_limits<double>::quiet_NaN();

TableDifference compareTables(TableKey key, const std::optional<TempInfoTab>& first,
                              const std::optional<TempInfoTab>& second) {
    TableDifference result{key, first.has_value(), second.has_value(), 0, 0, 0, 0, 0, 0, 0, 0};
    double sum = 0.0;
    for (unsigned ad = 0; ad < counts; ++ad) {
        const double a = reportedTemp(first, ad);
        const double b = reportedTemp(second, ad);
        result.onlyFirst += static_cast<int>(!std::isnan(a) && std::isnan(b));
        result.onlySecond += static_cast<int>(std::isnan(a) && !std::isnan(b));
        const double difference = std::abs(b - a);
        if (std::isnan(difference))
            continue;
        ++result.counts;
        sum += difference;
        if (difference > result.largest || result.counts == 1) {
            result.largest = difference;
            result.at = ad;
            result.firstThere = a;
            result.secondThere = b;
        }
    }
    result.mean = result.counts == 0 ? 0.0 : sum / result.counts;
    return result;
}

/// The corrected shutter temperature at an inside temperature, °C.
double shutterTemp(const ModifyTable& factors, double inside) {
    const auto single = static_cast<float>(inside);
    return static_cast<double>(factors[static_cast<std::size_t>(modifyEntry(single))] * single);
}

ModifyDifference compareFactors(TableKey key, const ModifyTable& first, const ModifyTable& second) {
    const auto effect = [&](double inside) {
        return shutterTemp(second, inside) - shutterTemp(first, inside);
    };
    ModifyDifference result{key, {}, 0.0, modifyStart};
    std::transform(result.insides.begin(), result.insides.end(), result.effects.begin(), effect);
    for (int k = 0; k < modifyEntries; ++k)
        if (std::abs(effect(modifyTemp(k))) > result.largest) {
            result.largest = std::abs(effect(modifyTemp(k)));
            result.at = modifyTemp(k);
        }
    return result;
}

/// `parameters` with the one that entry `i` of `settingNames` is taken from another set.
Parameters withSetting(Parameters parameters, std::size_t i, const Parameters& other) {
    switch (i) {
    case 0:
        parameters.setup.emiss = other.setup.emiss;
        break;
    case 1:
        parameters.setup.dist = other.setup.dist;
        break;
    case 2:
        parameters.setup.offset = other.setup.offset;
        break;
    case 3:
        parameters.envTemp = other.envTemp;
        break;
    case 4:
        parameters.humid = other.humid;
        break;
    case 5:
        parameters.reflecTemp = other.reflecTemp;
        break;
    default: // no parameter of the model
        break;
    }
    return parameters;
}

/// What replacing one parameter does to readings over a range.
void takeEffect(const Parameters& first, const Parameters& moved, const RangeLimits& limits,
                SettingDifference& result) {
    constexpr int step = 10; // °C
    const Model before = modelOf(first, limits);
    const Model after = modelOf(moved, limits);
    for (int celsius = limits.min; celsius <= limits.max; celsius += step) {
        const float seen = seenTemp(before, static_cast<float>(celsius));
        const auto read = [seen](const Model& model) {
            return literal::objectCelsius(model, literal::objectPower(model, seen));
        };
        const double effect = std::abs(read(after) - read(before));
        if (effect > result.largest || std::isnan(result.largest)) {
            result.largest = effect;
            result.at = celsius;
        }
    }
}

std::vector<SettingDifference> compareSettings(const DirectoryContent& first,
                                               const DirectoryContent& second) {
    constexpr std::size_t modelParameters = 6;
    constexpr std::size_t rangeAt = 6;
    std::vector<SettingDifference> result;
    for (std::size_t i = 0; i < settingNames().size(); ++i) {
        if (first.settings[i] == second.settings[i])
            continue;
        SettingDifference difference{&settingNames()[i], first.settings[i], second.settings[i],
                                     none, none};
        if (i < modelParameters)
            takeEffect(first.parameters, withSetting(first.parameters, i, second.parameters),
                       limitsOfRange(static_cast<int>(first.settings[rangeAt])), difference);
        result.push_back(difference);
    }
    return result;
}

/// Largest first, what is no number last.
template <typename Difference>
void sort(std::vector<Difference>& all) {
    std::stable_sort(all.begin(), all.end(), [](const Difference& a, const Difference& b) {
        return std::isnan(b.largest) ? !std::isnan(a.largest) : a.largest > b.largest;
    });
}

} // namespace

double reportedTemp(const std::optional<TempInfoTab>& table, unsigned ad) {
    const IrTempStru reading = table ? adToTableTemp(*table, ad) : IrTempStru{};
    return isOk(reading) ? static_cast<double>(reading.temp) : none;
}

Comparison compare(const DirectoryContent& first, const DirectoryContent& second) {
    Comparison result;
    for (const auto& [key, entry] : first.tables) {
        const DirectoryContent::Entry& other = second.tables.at(key);
        result.tables.push_back(compareTables(key, entry.table, other.table));
        const ModifyDifference factors = compareFactors(key, entry.factors, other.factors);
        if (factors.largest > 0.0)
            result.factors.push_back(factors);
    }
    result.settings = compareSettings(first, second);
    sort(result.tables);
    // A table that is missing differs most.
    std::stable_partition(result.tables.begin(), result.tables.end(),
                          [](const TableDifference& t) { return t.first != t.second; });
    sort(result.factors);
    sort(result.settings);
    return result;
}

bool Comparison::exceeds(double bound) const {
    const auto larger = [bound](const auto& difference) { return difference.largest > bound; };
    return std::any_of(tables.begin(), tables.end(), larger) ||
           std::any_of(tables.begin(), tables.end(),
                       [](const TableDifference& t) { return t.first != t.second; }) ||
           std::any_of(factors.begin(), factors.end(), larger) ||
           std::any_of(settings.begin(), settings.end(), larger);
}

} // namespace irmcore::app
