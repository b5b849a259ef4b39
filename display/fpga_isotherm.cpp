#include "../core/fpga.h"
#include "isoband.h"
#include "window.h"

namespace {

/// What gives the limits of an isotherm.
constexpr int byTemperature = 0;
constexpr int byPalette = 1;
constexpr int byWindow = 2;
constexpr int byDewPoint = 3;

} // namespace

unsigned char FPGA::setIsoSwitch(bool on) {
    fpga_set_iso_enable(on);
    m_isoSwitch = on;
    return palette_cal(nullptr);
}

bool FPGA::getIsoSwitch() { return m_isoSwitch; }

Isotherm FPGA::getIsoPara() { return m_isoHandler.getIsoInfo(); }

void FPGA::setIsoPara(Isotherm iso) {
    m_isoHandler.setIsoInfo(iso);
    fpga_set_iso_type(static_cast<unsigned char>(iso.type & 0xFF));
    const irmcore::BandTemps temps = irmcore::bandTemps(iso);
    getIsoTempStru(temps.low, temps.high);
}

void FPGA::getIsoTempStru(float minTemp, float maxTemp) {
    m_sysTempHandler->setTempSetup(m_sysTempSetup);
    m_isoMinStru = m_sysTempHandler->irTemp2AD(minTemp);
    m_isoMaxStru = m_sysTempHandler->irTemp2AD(maxTemp);
}

void FPGA::setIsoIndex() {
    const Isotherm iso = m_isoHandler.getIsoInfo();
    const irmcore::Window window{m_level, m_span};
    const bool byHand = m_levelSpanMode == LEVELSPAN_HAND;
    if (iso.reference == byPalette || (iso.reference == byWindow && !byHand)) {
        if (iso.reference == byWindow) {
            irmcore::setStatus(m_isoMinStru, "OK");
            m_isoMinStru.ad = irmcore::adInWindow(iso.lowRatio, window);
            irmcore::setStatus(m_isoMaxStru, "OK");
            m_isoMaxStru.ad = irmcore::adInWindow(iso.highRatio, window);
        }
        m_isoHandler.setIsoPosition(irmcore::paletteIndexOf(iso.highRatio),
                                    irmcore::paletteIndexOf(iso.lowRatio));
        return; // the FPGA keeps its limits
    }
    if (iso.reference == byTemperature) {
        const irmcore::BandTemps temps = irmcore::bandTemps(iso);
        getIsoTempStru(temps.low, temps.high);
    } else if (iso.reference == byWindow) {
        getIsoTempStru(iso.minTemp, iso.maxTemp);
    } else if (iso.reference == byDewPoint) {
        const float dewPoint = m_sysTempHandler->getDewpoint();
        getIsoTempStru(dewPoint, dewPoint);
    }
    m_isoHandler.setIsoPosition(irmcore::paletteIndexOf(m_isoMaxStru, window),
                                irmcore::paletteIndexOf(m_isoMinStru, window));
    fpga_set_iso_min(m_isoMinStru.ad);
    fpga_set_iso_max(m_isoMaxStru.ad);
}
