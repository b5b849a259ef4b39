#pragma once

#include "calctrans.h"
#include "model.h"
#include "reading.h"

class FPGA;

/// The object temperature model with one set of measurement parameters. The conversions are
/// `irmcore::objectTemp` and `objectAd`, over the table and the shutter term of the owner. Without
/// an owner (a null pointer) there is no table, and readings are marked "NULL".
///
/// Thread-bound.
class [[gnu::visibility("default")]] TempHandler {
public:
    /// Emissivity 0.95, 5 m, no offset, air and surroundings at 25 °C, humidity 0.6, range -20 to
    /// 150 °C, with the transmission and dew point that follow. `owner` must outlive the object.
    explicit TempHandler(FPGA * owner);

    /// Checks and stores emissivity, distance and offset; NaN is out of range. Returns 1, or 0
    /// when one is out of range: then a line names it and nothing is stored.
    int setTempSetup(TempSetup setup);
    /// Emissivity, distance and offset in use; the fourth word is 0.
    TempSetup getTempSetup();

    /// Count to object temperature.
    IrTempStru irAD2Temp(unsigned int ad);
    /// Object temperature in °C to count.
    IrTempStru irTemp2AD(float temp);

    /// Takes the relative humidity (a fraction) and recomputes transmission and dew point.
    void setHumid(float humid);
    /// Dew point in °C, as of the last `setHumid`.
    float getDewpoint();
    /// Takes the air temperature in °C and recomputes the transmission, not the dew point.
    void setEnvTemp(float t);
    /// Takes the temperature of the reflected surroundings in °C.
    void setReflecTemp(float t);
    /// Recomputes the transmission.
    void calcTrans();
    /// Transmission of the air in use.
    float getTrans();
    /// Sets the limits of the measuring range in °C.
    void setTempRangeMinMax(int min, int max);

protected:
    friend class FPGA; // calibration mode is switched on both models at once

    bool m_biaoDing;       ///< calibration mode
    float m_emiss;         ///< fraction
    float m_dist;          ///< m
    float m_offset;        ///< °C
    float m_envTemp;       ///< °C
    float m_humid;         ///< fraction
    float m_reflecTemp;    ///< °C
    float m_trans;         ///< 0 to 1
    float m_dewpoint;      ///< °C
    FPGA* m_fpga;          ///< not owned
    CalcTrans m_calcTrans; ///< has no data
    int m_tempRangeMin;    ///< °C
    int m_tempRangeMax;    ///< °C

private:
    [[gnu::visibility("hidden")]] irmcore::Model model() const;
    [[gnu::visibility("hidden")]] const irmcore::Terms& terms();

    irmcore::Terms m_terms; ///< of the model that was last used
};
