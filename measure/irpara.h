#pragma once

#include "reading.h"
#include "tempinfotab.h"

/// The calibration table in force, and the two drift terms that follow from it:
///
/// - the shutter term moves the FPGA's counts onto the table's scale. The FPGA delivers counts
///   relative to its closed shutter, which reads 32768; the term is what the table gives for the
///   shutter's temperature, less 32768.
/// - the sensor term is the change of the detector's own temperature since the table was
///   installed, in counts. It is kept for the host; no conversion uses it.
///
/// The conversions are `irmcore::adToTableTemp`, `tempToTableAd` and `tableDeltaAd`.
///
/// Reentrant; the façade's own object is thread-bound with it.
class [[gnu::visibility("default")]] IRPara {
public:
    /// A table of two entries, -20 °C at 28672 and 400 °C at 45056; lens, sensor and shutter at
    /// 30 °C; both terms 0.
    IRPara();

    /// Count to reported temperature.
    IrTempStru calTemp(unsigned int ad);
    /// Reported temperature in °C to count.
    IrTempStru calAD(float temp);
    /// Count of a reported temperature in °C, relative to 32768.
    float calDeltaAD(float temp);

    /// Recomputes the shutter term. Returns 1.
    int calShutterDeltaAD();
    /// Recomputes the sensor term. Returns 1.
    int calSensorDeltaAD();
    /// Takes the shutter temperature in °C and recomputes the shutter term. Returns 1.
    int setShutterTemp(float t);
    /// Takes the sensor temperature in °C. With `reset` the sensor term becomes 0 and counts from
    /// here, otherwise it is recomputed.
    void setSensorTemp(float t, bool reset);
    /// Takes the lens temperature in °C; nothing is recomputed.
    void setLenTemp(float t);

    /// Shutter temperature in use, °C.
    float getShutterTemp();
    /// Shutter term, AD.
    float readShutterDeltaAD();
    /// Sensor term, AD.
    float readSensorDeltaAD();

    /// Installs a table. Lens, sensor and shutter temperature stay as they are, whatever the record
    /// says; the shutter term is recomputed, the sensor term becomes 0. Returns 1.
    int setADToTempTab(TempInfoTab tab);
    /// A copy of the table, with the temperatures in use.
    TempInfoTab getADToTempTab();
    /// The same without a copy, valid as long as the object.
    const TempInfoTab& table() const { return m_tab; }

protected:
    TempInfoTab m_tab;      ///< with the temperatures in use
    float m_shutterDeltaAD; ///< AD
    float m_sensorDeltaAD;  ///< AD
    float m_baseSensorTemp; ///< °C at which the sensor term is 0
};
