#include "fpga.h"
#include "range.h"
#include "settings.h"

namespace {

/// An 8-bit number taken as signed: 255 is -1, also where `char` is unsigned.
int asSigned(unsigned char value) { return static_cast<signed char>(value); }

} // namespace

FPGA::FPGA()
    : m_sysTempHandler(nullptr), m_queryTempHandler(nullptr), m_level(0),
      m_span(0), m_sysTempSetup{}, m_levelSpanMode(LEVELSPAN_AUTO), m_fileTempSetup{},
      m_lenTemp(0.0F), m_shutterTemp(0.0F), m_sensorTemp(0.0F), m_lenIndex(0),
      m_tempRange(0), m_tempInfoTab{}, m_coreVersionNum(1), m_deltaTemp(0.0F), m_freeze(false),
      m_modifyShutterTemp(0.0F), m_private(nullptr) {
    float sensor = 0.0F;
    fpga_read_sensorTemp(&sensor);
    setSensorTemp(sensor, true);
    m_freeze = fpga_get_freeze_status() != 0;
    m_coreCpuVersionStr = QLatin1String("");
    m_coreFPGAVersionStr = QLatin1String("");
    m_sysTempHandler = new TempHandler(this);
    m_queryTempHandler = new TempHandler(this);
    m_tempRange = irmcore::settings::storedTempRange();
    m_lenIndex = asSigned(fpga_read_lenIndex());
    setSystemAdToTempTab(m_lenIndex, m_tempRange);
    updateShutterTemp(true);
    setSystemTempPara();
    m_level = fpga_get_fpga_level();
    m_span = fpga_get_fpga_span();
    const irmcore::RangeLimits limits = irmcore::limitsOfRange(m_tempRange);
    setTempRangeMinMax(limits.min, limits.max);
}
