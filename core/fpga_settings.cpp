#include "fpga.h"
#include "settings.h"

namespace settings = irmcore::settings;

TempSetup m_tempsetup{};

namespace {

/// Reads the three parameters that travel in a `TempSetup`; the fourth word is left.
void readSetup(const settings::File& file, TempSetup& setup) {
    setup.emiss = file.number(settings::emiss, settings::defaultEmiss);
    setup.dist = file.number(settings::distance, settings::defaultDistance);
    setup.offset = file.number(settings::offset, settings::defaultOffset);
}

} // namespace

void FPGA::setSystemTempPara() {
    settings::File file(settings::file);
    file.beginGroup(settings::parameterGroup);
    readSetup(file, m_sysTempSetup);
    setEnvTemp(file.number(settings::envTemp, settings::defaultEnvTemp));
    setHumid(file.number(settings::humid, settings::defaultHumid));
    setReflecTemp(file.number(settings::reflecTemp, settings::defaultReflecTemp));
    setSystemTempSetup(m_sysTempSetup);
}

void FPGA::readTempSetup() {
    settings::File file(settings::file);
    file.beginGroup(settings::parameterGroup);
    readSetup(file, m_sysTempSetup);
    m_fileTempSetup = m_sysTempSetup;
}
