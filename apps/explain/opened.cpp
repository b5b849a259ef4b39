#include "opened.h"

#include "../../core/settings.h"

namespace irmcore::app {

Parameters readParameters(FPGA& host) {
    const settings::File file(settings::file);
    const auto number = [&file](const char* key, double fallback) {
        return file.number(QString::fromLatin1(settings::parameterGroup) + QLatin1Char('/') +
                               QLatin1String(key),
                           fallback);
    };
    return {host.getSystemTempSetup(), number(settings::humid, settings::defaultHumid),
            number(settings::envTemp, settings::defaultEnvTemp),
            number(settings::reflecTemp, settings::defaultReflecTemp)};
}

OpenedCamera::OpenedCamera(const CameraChoice& choice) : m_lens(choice.lens) {
    const irmsim::Scene scene = irmsim::Scene::uniform(160, 120, 25.0);
    if (choice.directory.isEmpty())
        m_bench.emplace(scene, irmsim::Surroundings{}, choice.range.value_or(0));
    else
        m_bench.emplace(choice.directory, scene, irmsim::Surroundings{}, 0);
    m_error = m_bench->error();
    if (!m_error.isEmpty())
        return;
    m_range = choice.range.value_or(settings::storedTempRange());
    irmsim::Camera& camera = m_bench->camera();
    camera.range(m_range).lens(m_lens);
    const double reference = camera.detector().referenceTemp();
    camera.temperatures(choice.shutter.value_or(reference), choice.sensor.value_or(reference));
    host().setTempRange(m_range);
    host().get_set_lenIndex();
    host().updateSensorTemp(false);
    host().updateShutterTemp(true);
    if (host().getTempInfoTab().tempNum < 2)
        m_error = QStringLiteral("%1 has no calibration table for lens %2, range %3")
                      .arg(choice.directory.isEmpty() ? QStringLiteral("the sample directory")
                                                      : choice.directory)
                      .arg(m_lens)
                      .arg(m_range);
}

Basis OpenedCamera::basis() {
    IRPara& para = host().getIRPara();
    return {para.table(), para.readShutterDeltaAD(), 0.0F, limitsOfRange(m_range)};
}

TempInfoTab OpenedCamera::stored() {
    host().setSystemAdToTempTab(host().getLenIndex(), m_range);
    return host().getTempInfoTab();
}

TempInfoTab OpenedCamera::warmedTo(double inside) {
    m_bench->camera().temperatures(inside, inside);
    host().updateShutterTemp(true);
    return host().getTempInfoTab();
}

} // namespace irmcore::app
