#include "directory.h"

#include "../../core/settings.h"
#include "../explain/opened.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace irmcore::app {

namespace {

/// Value of a name in the working directory.
double settingOf(const SettingName& name) {
    const settings::File file(settings::file);
    const QString group = QString::fromLatin1(name.group);
    const QString key = QString::fromLatin1(name.key);
    return static_cast<double>(
        file.number(group.isEmpty() ? key : group + QLatin1Char('/') + key, name.fallback));
}

} // namespace

const std::vector<SettingName>& settingNames() {
    static const std::vector<SettingName> names{
        {settings::parameterGroup, settings::emiss, "", settings::defaultEmiss},
        {settings::parameterGroup, settings::distance, "m", settings::defaultDistance},
        {settings::parameterGroup, settings::offset, "°C", settings::defaultOffset},
        {settings::parameterGroup, settings::envTemp, "°C", settings::defaultEnvTemp},
        {settings::parameterGroup, settings::humid, "", settings::defaultHumid},
        {settings::parameterGroup, settings::reflecTemp, "°C", settings::defaultReflecTemp},
        {settings::calibrationGroup, settings::tempRange, "", settings::defaultTempRange},
        {settings::calibrationGroup, "IntTime0", "", settings::defaultIntTimeLow},
        {settings::calibrationGroup, "IntTime1", "", settings::defaultIntTimeHigh},
        {settings::calibrationGroup, settings::vskTemp, "°C", settings::defaultVskTemp},
        {"", settings::vskTemp, "°C", settings::defaultVskTemp},
        {"", settings::vskValueLow, "", settings::defaultVskLow},
        {"", settings::vskValueHigh, "", settings::defaultVskHigh}};
    return names;
}

std::vector<TableKey> tablesIn(const QString& directory) {
    static const QRegularExpression name(
        QStringLiteral("^calc_len(-?\\d{1,3})_temp(\\d{1,3})(_default)?\\.conf$"));
    std::vector<TableKey> keys;
    const QDir etc(directory + QStringLiteral("/etc"));
    for (const QString& file : etc.entryList(QDir::Files, QDir::Name)) {
        const QRegularExpressionMatch match = name.match(file);
        if (match.hasMatch())
            keys.push_back({match.captured(1).toInt(), match.captured(2).toInt()});
    }
    return keys;
}

std::optional<DirectoryContent> readDirectory(const QString& directory,
                                              const std::vector<TableKey>& keys, QString& error) {
    if (tablesIn(directory).empty() &&
        !QFileInfo::exists(directory + QStringLiteral("/Parameter/Setting"))) {
        error = QStringLiteral("%1 is no camera's directory: it has neither Parameter/Setting nor "
                               "etc/calc_len*_temp*.conf")
                    .arg(directory);
        return std::nullopt;
    }
    Bench bench(directory, irmsim::Scene::uniform(160, 120, 25.0), irmsim::Surroundings{}, 0);
    error = bench.error();
    if (!error.isEmpty())
        return std::nullopt;
    DirectoryContent content;
    for (const SettingName& name : settingNames())
        content.settings.push_back(settingOf(name));
    content.parameters = readParameters(bench.host());
    for (const TableKey& key : keys) {
        bench.host().setSystemAdToTempTab(key.lens, key.range);
        DirectoryContent::Entry& entry = content.tables[key];
        const TempInfoTab table = bench.host().getTempInfoTab();
        if (table.tempNum >= 2)
            entry.table = table;
        std::copy(std::begin(s_modify), std::end(s_modify), entry.factors.begin());
    }
    return content;
}

} // namespace irmcore::app
