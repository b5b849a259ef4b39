#include "storedsettings.h"

#include "../../core/settings.h"

namespace irmcore::app::measuring {

namespace {

/// A group of the camera's settings as they are now.
struct Settings : settings::File {
    explicit Settings(const char* group) : File(settings::file) { beginGroup(group); }
};

} // namespace

unsigned short storedIntTime(int range) {
    const int intTime =
        Settings(settings::calibrationGroup)
            .integer(QString::fromLatin1(settings::intTime).arg(range),
                     range == 0 ? settings::defaultIntTimeLow : settings::defaultIntTimeHigh);
    return static_cast<unsigned short>(intTime & 0xFFFF);
}

irmsim::Surroundings truthOf(const GivenParameters& given) {
    const Settings file(settings::parameterGroup);
    const auto or_ = [&](std::optional<double> value, const char* key, double fallback) {
        return value ? *value : file.value(QString::fromLatin1(key), fallback).toDouble();
    };
    return {or_(given.emissivity, settings::emiss, settings::defaultEmiss),
            or_(given.distance, settings::distance, settings::defaultDistance),
            or_(given.humidity, settings::humid, settings::defaultHumid),
            or_(given.air, settings::envTemp, settings::defaultEnvTemp),
            or_(given.reflected, settings::reflecTemp, settings::defaultReflecTemp)};
}

} // namespace irmcore::app::measuring
