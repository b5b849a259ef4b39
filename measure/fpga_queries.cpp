#include "../core/fpga.h"
#include "../core/fpga_private.h"
#include "../display/window.h"

namespace {

/// Kinds of spot that `FPGA::getSpotTemp` knows.
constexpr int spotAtPosition = 0;
constexpr int spotHottest = 1;
constexpr int spotColdest = 2;

constexpr unsigned char lineSlot(int line) {
    return static_cast<unsigned char>(line == 1 ? 4 : line == 2 ? 5 : 0);
}

} // namespace

TempHandler& FPGA::handlerFor(ParaMode_t mode, TempSetup const& setup) {
    if (mode != PARA_CUSTOM)
        return *m_sysTempHandler;
    m_queryTempHandler->setTempSetup(setup);
    return *m_queryTempHandler;
}

unsigned int FPGA::getSpotAD(int index, _fpga_point& pt) {
    const auto slot = static_cast<unsigned char>(index & 0xFF);
    unsigned short ad = 0;
    if (fpga_point_position_set(slot, &pt) == 0)
        fpga_point_ad_get(slot, &ad);
    return ad;
}

int FPGA::getSpotTemp(int index, int type, ParaMode_t mode, TempSetup const& setup, _fpga_point& pt,
                      IrTempStru& out) {
    if (index < 0 || type < spotAtPosition || type > spotColdest)
        return -1;
    unsigned short ad = 0; // until delivered
    bool delivered = false;
    if (type == spotAtPosition) {
        const auto slot = static_cast<unsigned char>(index & 0xFF);
        delivered = fpga_point_position_set(slot, &pt) == 0;
        if (delivered)
            fpga_point_ad_get(slot, &ad);
    } else {
        const auto takeOver = [&](unsigned char result, const auto& point) {
            delivered = result == 0;
            pt = delivered ? _fpga_point{point.x, point.y} : _fpga_point{0, 0};
            ad = point.ad;
        };
        if (type == spotHottest) {
            _point_max point{};
            takeOver(fpga_point_max_get(&point), point);
        } else {
            _point_min point{};
            takeOver(fpga_point_min_get(&point), point);
        }
    }
    if (!delivered) {
        irmcore::setStatus(out, "NULL");
        return -1;
    }
    out = handlerFor(mode, setup).irAD2Temp(ad);
    return 0;
}

int FPGA::getLineTemp(int line, ParaMode_t mode, TempSetup const& setup, _fpga_point& pt,
                      IrTempStru& out) {
    return getSpotTemp(lineSlot(line), spotAtPosition, mode, setup, pt, out);
}

int FPGA::getAreaTemp(int index, _area& area, ParaMode_t mode, TempSetup const& setup,
                      _area_val& val, Area_Temp& out) {
    const auto slot = static_cast<unsigned char>(index & 0xFF);
    if (fpga_area_set(slot, &area) != 0)
        return -1;
    val = _area_val{};
    fpga_area_val_get(slot, &val);
    TempHandler& handler = handlerFor(mode, setup);
    out.tempMax = handler.irAD2Temp(val.maxAD);
    out.tempMin = handler.irAD2Temp(val.minAD);
    out.tempAvg = handler.irAD2Temp(val.avgAD);
    return 0;
}

int FPGA::getFrameTemp(const unsigned short* ad, int count, ParaMode_t mode, TempSetup const& setup,
                       float* temp, unsigned char* status) {
    if (ad == nullptr || (temp == nullptr && status == nullptr) || count < 0)
        return -1;
    TempHandler& handler = handlerFor(mode, setup);
    irmcore::FrameTable& frames =
        &handler == m_sysTempHandler ? m_private->system : m_private->queries;
    frames.convert(
        {handler.terms(), m_irPara.table(), m_irPara.readShutterDeltaAD(), getDeltaTemp()}, ad,
        static_cast<std::size_t>(count), temp, status);
    return 0;
}

void FPGA::getMinMaxTemp(IrTempStru* minOut, IrTempStru* maxOut) {
    m_sysTempHandler->setTempSetup(m_sysTempSetup);
    const unsigned int top = static_cast<unsigned int>(m_level) + m_span; // may pass 65535
    if (maxOut != nullptr)
        *maxOut = m_sysTempHandler->irAD2Temp(top);
    if (minOut != nullptr)
        *minOut = m_sysTempHandler->irAD2Temp(m_level);
}

void FPGA::getAutoMinMaxTemp(IrTempStru* minOut, IrTempStru* maxOut) {
    placeWindow(frameWindow(m_tempRange == 0 ? 255 : 128));
    getMinMaxTemp(minOut, maxOut);
}
