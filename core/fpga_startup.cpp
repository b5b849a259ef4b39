#include "fpga.h"
#include "fpga_private.h"
#include "range.h"
#include "settings.h"
#include "vsk.h"

namespace settings = irmcore::settings;

FPGA::FPGA()
    : m_sysTempHandler(nullptr), m_queryTempHandler(nullptr),
      m_paletteIndex(COLOR_IRON), m_colorTable{}, m_saturation(false),
      m_isoSwitch(false), m_isoMinStru{}, m_isoMaxStru{}, m_level(0), m_span(0), m_sysTempSetup{},
      m_serial(nullptr), m_levelSpanMode(LEVELSPAN_AUTO), m_fileTempSetup{}, m_lenTemp(0.0F),
      m_shutterTemp(0.0F), m_sensorTemp(0.0F), m_lenIndex(0), m_tempRange(0), m_tempInfoTab{},
      m_coreVersionNum(1), m_modifyValue(0.0F), m_deltaTemp(0.0F), m_freeze(false),
      m_modifyShutterTemp(0.0F), m_private(new Private) {
    readReferenceSensorTemp();
    m_freeze = fpga_get_freeze_status() != 0;
    m_serial = new Serial(this, "/dev/ttyS1");
    m_coreCpuVersionStr = QLatin1String("");
    m_coreFPGAVersionStr = QLatin1String("");
    m_sysTempHandler = new TempHandler(this);
    m_queryTempHandler = new TempHandler(this);
    m_tempRange = settings::storedTempRange();
    m_lenIndex = readLens();
    setSystemAdToTempTab(m_lenIndex, m_tempRange);
    updateShutterTemp(true);
    setSystemTempPara();
    m_level = fpga_get_fpga_level();
    m_span = fpga_get_fpga_span();
    const irmcore::RangeLimits limits = irmcore::limitsOfRange(m_tempRange);
    setTempRangeMinMax(limits.min, limits.max);
}

void FPGA::init() {
    settings::File file(settings::file);
    file.beginGroup(settings::calibrationGroup);
    const int intTime =
        file.integer(QString::fromLatin1(settings::intTime).arg(m_tempRange),
                     m_tempRange == 0 ? settings::defaultIntTimeLow : settings::defaultIntTimeHigh);
    file.endGroup();
    const unsigned short sentTime = irmcore::low16(static_cast<unsigned int>(intTime));

    if (m_coreVersionNum == 1) {
        fpga_set_arm_lcd_jingDu(1);
        m_serial->changeTempRange(sentTime, 0);
        return;
    }
    if (m_coreVersionNum != 0 && m_coreVersionNum != -1)
        return;
    m_vskTemp = file.number(settings::vskTemp, settings::defaultVskTemp);
    m_vskValue0 = irmcore::low16(static_cast<unsigned int>(
        file.integer(QLatin1String(settings::vskValueLow), settings::defaultVskLow)));
    m_vskValue1 = irmcore::low16(static_cast<unsigned int>(
        file.integer(QLatin1String(settings::vskValueHigh), settings::defaultVskHigh)));
    readReferenceSensorTemp();
    const unsigned short vsk = compensatedVsk(m_tempRange);
    if (m_coreVersionNum == 0) {
        m_serial->changeTempRange(sentTime, vsk);
        return;
    }
    m_serial->setIntTime(m_tempRange, sentTime);
    m_serial->setVSK(vsk);
    insideShutter();
}

int FPGA::readLens() {
    // 8 bits taken as signed: 255 is -1, also where `char` is unsigned.
    return static_cast<signed char>(fpga_read_lenIndex());
}
