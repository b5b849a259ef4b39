#include "storedsettings.h"

#include "../../core/settings.h"

namespace irmcore::app::measuring {

namespace {

/// A group of the camera's settings as they are now.
class Settings {
public:
    explicit Settings(const char* group)
        : m_file(QString::fromLatin1(settings::file), QSettings::NativeFormat) {
        m_file.beginGroup(QString::fromLatin1(group));
    }
    double number(const char* key, double fallback) const {
        return m_file.value(QString::fromLatin1(key), fallback).toDouble();
    }
    int whole(const QString& key, int fallback) const {
        return m_file.value(key, fallback).toInt();
    }

private:
    QSettings m_file;
};

} // namespace

int storedRange() {
    return Settings(settings::calibrationGroup)
        .whole(QString::fromLatin1(settings::tempRange), settings::defaultTempRange);
}

unsigned short storedIntTime(int range) {
    const int intTime =
        Settings(settings::calibrationGroup)
            .whole(QString::fromLatin1(settings::intTime).arg(range),
                   range == 0 ? settings::defaultIntTimeLow : settings::defaultIntTimeHigh);
    return static_cast<unsigned short>(intTime & 0xFFFF);
}

irmsim::Surroundings truthOf(const GivenParameters& given) {
    const Settings file(settings::parameterGroup);
    const auto or_ = [&](std::optional<double> value, const char* key, double fallback) {
        return value ? *value : file.number(key, fallback);
    };
    return {or_(given.emissivity, settings::emiss, settings::defaultEmiss),
            or_(given.distance, settings::distance, settings::defaultDistance),
            or_(given.humidity, settings::humid, settings::defaultHumid),
            or_(given.air, settings::envTemp, settings::defaultEnvTemp),
            or_(given.reflected, settings::reflecTemp, settings::defaultReflecTemp)};
}

} // namespace irmcore::app::measuring
