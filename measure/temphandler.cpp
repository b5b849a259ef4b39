#include "temphandler.h"

#include "../core/fpga.h"
#include "../core/truncate.h"
#include "quickreading.h"

#include <cstdio>

namespace {

IrTempStru noOwner() {
    IrTempStru reading{};
    irmcore::setStatus(reading, "NULL");
    return reading;
}

} // namespace

TempHandler::TempHandler(FPGA* owner)
    : m_biaoDing(false), m_emiss(0.95F), m_dist(5.0F), m_offset(0.0F), m_envTemp(25.0F),
      m_humid(0.6F), m_reflecTemp(25.0F), m_trans(1.0F), m_dewpoint(0.0F), m_fpga(owner),
      m_tempRangeMin(-20), m_tempRangeMax(150), m_terms{} {
    setHumid(m_humid);
}

int TempHandler::setTempSetup(TempSetup setup) {
    const auto within = [](double value, double low, double high) {
        return value >= low && value <= high; // NaN is not
    };
    const auto emiss = static_cast<double>(setup.emiss);
    if (!within(emiss, 0.001, 1.001)) {
        std::printf("%s %s %d emiss para error emiss:%f\n", __FILE__, __func__, __LINE__, emiss);
        return 0;
    }
    if (!within(static_cast<double>(setup.dist), 0.0, 100000.0)) {
        std::printf("%s %s %d dist para error\n", __FILE__, __func__, __LINE__);
        return 0;
    }
    if (!within(static_cast<double>(setup.offset), -100.001, 100.001)) {
        std::printf("%s %s %d offset para error\n", __FILE__, __func__, __LINE__);
        return 0;
    }
    if (setup.emiss == m_emiss && setup.dist == m_dist && setup.offset == m_offset)
        return 1;
    m_emiss = setup.emiss;
    m_dist = setup.dist;
    m_offset = setup.offset;
    calcTrans();
    return 1;
}

TempSetup TempHandler::getTempSetup() { return {m_emiss, m_dist, m_offset, 0}; }

irmcore::Model TempHandler::model() const {
    return {m_emiss, m_offset,       m_envTemp,      m_reflecTemp,
            m_trans, m_tempRangeMin, m_tempRangeMax, m_biaoDing};
}

const irmcore::Terms& TempHandler::terms() {
    const irmcore::Model now = model();
    if (!irmcore::sameModel(m_terms.of, now))
        m_terms = irmcore::termsOf(now);
    return m_terms;
}

IrTempStru TempHandler::irAD2Temp(unsigned int ad) {
    if (m_fpga == nullptr)
        return noOwner();
    IRPara& para = m_fpga->getIRPara();
    // The drift costs a register read.
    return irmcore::quickReading(terms(), para.table(), para.readShutterDeltaAD(), ad,
                                 [this] { return m_fpga->getDeltaTemp(); });
}

IrTempStru TempHandler::irTemp2AD(float temp) {
    if (m_fpga == nullptr)
        return noOwner();
    IRPara& para = m_fpga->getIRPara();
    return irmcore::objectAd(model(), para.table(), para.readShutterDeltaAD(), temp);
}

void TempHandler::setHumid(float humid) {
    m_humid = humid;
    calcTrans();
    m_dewpoint = irmcore::dewPoint(m_envTemp, m_humid);
}

float TempHandler::getDewpoint() { return m_dewpoint; }

void TempHandler::setEnvTemp(float t) {
    m_envTemp = t;
    calcTrans();
}

void TempHandler::setReflecTemp(float t) { m_reflecTemp = t; }

void TempHandler::calcTrans() {
    const int metres = irmcore::truncateToInt(static_cast<double>(m_dist));
    m_trans = m_calcTrans.getTrans(m_envTemp, m_humid, metres);
}

float TempHandler::getTrans() { return m_trans; }

void TempHandler::setTempRangeMinMax(int min, int max) {
    m_tempRangeMin = min;
    m_tempRangeMax = max;
}
