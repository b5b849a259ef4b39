#include "checks.h"
#include "inichecks.h"

#include <QRegularExpression>

namespace irmcore::app::check {

namespace {

constexpr double anything = 1e300;

/// A number of the settings and what it may be. Outside `low` to `high` the library does not work
/// as it should, outside `likelyLow` to `likelyHigh` no camera is.
struct Number {
    const char* group;
    const char* key;
    double fallback;
    double low, high;
    double likelyLow, likelyHigh;
    const char* rule; ///< what is right
};

constexpr Number numbers[] = {
    {settings::calibrationGroup, settings::vskTemp, settings::defaultVskTemp, -anything, anything,
     -40, 100, "°C of the detector"},
    {"", settings::vskTemp, settings::defaultVskTemp, -anything, anything, -40, 100,
     "°C of the detector"},
    {settings::parameterGroup, settings::envTemp, settings::defaultEnvTemp, -273.15, anything, -49,
     50, "°C of the air"},
    {settings::parameterGroup, settings::reflecTemp, settings::defaultReflecTemp, -273.15, anything,
     -100, 1000, "°C"},
};

/// Those that the library checks: all three are refused when one is.
struct Checked {
    const char* key;
    float TempSetup::*field;
    double fallback;
    double likelyLow;
    const char* rule;
};

constexpr Checked checkedNumbers[] = {
    {settings::emiss, &TempSetup::emiss, settings::defaultEmiss, 0.1, "a fraction, 0.001 to 1"},
    {settings::distance, &TempSetup::dist, settings::defaultDistance, -anything, "0 to 100000 m"},
    {settings::offset, &TempSetup::offset, settings::defaultOffset, -anything, "-100 to 100 °C"},
};

QString pathOf(const char* group, const char* key) {
    return KnownKey{QLatin1String(group), QLatin1String(key), {}}.path();
}

std::vector<KnownKey> knownKeys(int storedRange) {
    const auto one = [](const char* group, const QString& key, double fallback) {
        return KnownKey{QLatin1String(group), key, QString::number(fallback)};
    };
    std::vector<KnownKey> keys;
    for (const Number& n : numbers)
        keys.push_back(one(n.group, QLatin1String(n.key), n.fallback));
    for (const Checked& c : checkedNumbers)
        keys.push_back(one(settings::parameterGroup, QLatin1String(c.key), c.fallback));
    keys.push_back(
        one(settings::parameterGroup, QLatin1String(settings::humid), settings::defaultHumid));
    keys.push_back(one(settings::calibrationGroup, QLatin1String(settings::tempRange),
                       settings::defaultTempRange));
    keys.push_back(one("", QLatin1String(settings::vskValueLow), settings::defaultVskLow));
    keys.push_back(one("", QLatin1String(settings::vskValueHigh), settings::defaultVskHigh));
    const auto intTime = [&](int range) {
        return one(settings::calibrationGroup, QString::fromLatin1(settings::intTime).arg(range),
                   range == 0 ? settings::defaultIntTimeLow : settings::defaultIntTimeHigh);
    };
    for (int range = 0; range < rangeEnd; ++range)
        keys.push_back(intTime(range));
    if (storedRange < 0 || storedRange >= rangeEnd)
        keys.push_back(intTime(storedRange));
    return keys;
}

/// The keys whose default is worth a word: those that hosts of today read, of the ranges that
/// tables are usual for.
std::vector<KnownKey> expectedKeys(const std::vector<KnownKey>& known, int storedRange) {
    std::vector<KnownKey> keys;
    for (const KnownKey& key : known) {
        const bool vsk = key.key.startsWith(QLatin1String("VSK"));
        const bool unusedRange = storedRange != 2 && key.key == QLatin1String("IntTime2");
        if (!vsk && !unusedRange)
            keys.push_back(key);
    }
    return keys;
}

void outOfRange(Ini& ini, const QString& path, const char* rule, const QString& taken) {
    ini.add(ini.lines().lineOf(path), Severity::error, "out-of-range",
            QStringLiteral("%1 is %2, not '%3'")
                .arg(path.mid(path.lastIndexOf(QLatin1Char('/')) + 1), QString::fromUtf8(rule),
                     ini.values().value(path).toString()),
            taken);
}

void unlikely(Ini& ini, const QString& path, const char* rule, const QString& taken = {}) {
    ini.add(ini.lines().lineOf(path), Severity::warning, "unlikely",
            QStringLiteral("%1: '%2' is hardly %3")
                .arg(path.mid(path.lastIndexOf(QLatin1Char('/')) + 1),
                     ini.values().value(path).toString(), QString::fromUtf8(rule)),
            taken);
}

/// Air beyond the table of vapour pressures has that of its end.
QString takenUnlikely(const QLatin1String& key, double value) {
    return key == QLatin1String(settings::envTemp)
               ? QStringLiteral("%1, with the vapour of %2 °C").arg(value).arg(value > 0 ? 49 : -49)
               : QString();
}

void checkNumbers(Ini& ini) {
    for (const Number& n : numbers) {
        const QString path = pathOf(n.group, n.key);
        const std::optional<double> value = ini.number(path, n.fallback);
        if (!value)
            continue;
        if (*value < n.low || *value > n.high)
            outOfRange(ini, path, n.rule, QString::number(*value));
        else if (*value < n.likelyLow || *value > n.likelyHigh)
            unlikely(ini, path, n.rule, takenUnlikely(QLatin1String(n.key), *value));
    }
}

/// Emissivity, distance and offset, by the model's own check.
void checkSetup(Ini& ini, FPGA& host) {
    const TempSetup held = host.getSystemTempSetup();
    for (const Checked& c : checkedNumbers) {
        const QString path = pathOf(settings::parameterGroup, c.key);
        const auto value = ini.number(path, c.fallback);
        if (!ini.examinable(path))
            continue;
        TempSetup setup{0.95F, 5.0F, 0.0F, 0};
        setup.*(c.field) = ini.values().number(path, c.fallback);
        const bool refused = TempHandler(nullptr).setTempSetup(setup) == 0;
        const QString kept =
            QStringLiteral("%1; emissivity, distance and offset of the file are all refused")
                .arg(static_cast<double>(held.*(c.field)));
        if (!value && refused)
            ini.amendTaken(QStringLiteral(" and refused, then ") + kept);
        else if (refused)
            outOfRange(ini, path, c.rule, kept);
        else if (value && *value < c.likelyLow)
            unlikely(ini, path, c.rule);
        if (value && c.field == &TempSetup::dist && *value > 0 && *value < 1)
            unlikely(ini, path, "a distance: the air of whole metres counts");
    }
}

void checkHumidity(Ini& ini) {
    constexpr double percent = 100.0;
    const QString path = pathOf(settings::parameterGroup, settings::humid);
    const std::optional<double> value = ini.number(path, settings::defaultHumid);
    if (!value)
        return;
    const QString taken = QStringLiteral("%1 %").arg(*value * percent);
    if (*value > 1 && *value <= percent)
        ini.add(ini.lines().lineOf(path), Severity::error, "humidity-in-percent",
                QStringLiteral("Humid is a fraction, not percent: write %1").arg(*value / percent),
                taken);
    else if (!(*value > 0) || *value > 1)
        outOfRange(ini, path, "a fraction above 0, up to 1", taken);
}

void checkWords(Ini& ini, int storedRange) {
    const QString rangePath = pathOf(settings::calibrationGroup, settings::tempRange);
    if (const auto range = ini.whole(rangePath, settings::defaultTempRange);
        range && (*range < 0 || *range >= rangeEnd))
        outOfRange(ini, rangePath, "0, 1 or 2",
                   QStringLiteral("%1, a range that the detector core does not know").arg(*range));
    ini.word(QLatin1String(settings::vskValueLow), settings::defaultVskLow);
    ini.word(QLatin1String(settings::vskValueHigh), settings::defaultVskHigh);
    static const QRegularExpression intTime(QStringLiteral("\\AIntTime(\\d{1,9})\\z"));
    for (const IniEntry& entry : ini.lines().entries)
        if (const auto match = intTime.match(entry.key);
            match.hasMatch() && entry.group == QLatin1String(settings::calibrationGroup) &&
            ini.lines().find(entry.path) == &entry) {
            const int range = match.captured(1).toInt();
            if (entry.key != QString::fromLatin1(settings::intTime).arg(range) ||
                (range >= rangeEnd && range != storedRange))
                continue; // said with the names
            ini.word(entry.path,
                     range == 0 ? settings::defaultIntTimeLow : settings::defaultIntTimeHigh);
        }
}

} // namespace

void checkSettings(FPGA& host, int storedRange, Findings& findings) {
    const QString path = QLatin1String(settings::file);
    switch (stateOf(path, "a file without keys", findings)) {
    case FileState::missing:
        findings.push_back({path, 0, Severity::warning, "missing-file",
                            QStringLiteral("there is no such file"),
                            QStringLiteral("a file without keys: every default")});
        return;
    case FileState::unusable:
        return;
    case FileState::file:
        break;
    }
    Ini ini(path, findings);
    if (!ini.checkFormat())
        return;
    const std::vector<KnownKey> known = knownKeys(storedRange);
    checkMissing(ini, expectedKeys(known, storedRange), checkNames(ini, known), Severity::note);
    checkWords(ini, storedRange);
    checkNumbers(ini);
    checkSetup(ini, host);
    checkHumidity(ini);
}

} // namespace irmcore::app::check
