#pragma once

#include "model.h"
#include "reading.h"
#include "tablelookup.h"
#include "tempinfotab.h"

/// A reading with all that it is made of, for those who want to see why it is what it is. Pure:
/// values in, values out.
namespace irmcore {

/// One reading taken apart. Put together again it gives the reading, bit by bit:
///
///     corrected = ad + shift                              modulo 2^32
///     table     = the table's temperature of `corrected`  outside the table that is the reading
///     seen      = fromTable(table)
///     power     = (observed - reflected) - air            below 0: "L" with the lower limit
///     body      = power^(1/4) - 273.15
///     celsius   = body + offset - deltaTemp
///     reading   = `celsius` against the limits, see `classify`
///
/// The powers and what follows are in double precision. Outside the table they are not numbers, as
/// are `body` and `celsius` where `power` is negative.
struct Breakdown {
    unsigned int ad;
    float shutterDelta;     ///< shutter term, AD
    int shift;              ///< the same cut toward zero
    unsigned int corrected; ///< on the table's scale, AD
    int segment;            ///< of the table, see `findSegment`
    TableTemp table;        ///< black body, °C
    float seen;             ///< surface of 0.95 before 25 °C, °C
    double observed;        ///< seen radiation by emissivity and transmission, K^4
    double reflected;       ///< of it the surroundings', by way of the object, K^4
    double air;             ///< of it the air's, K^4
    double power;           ///< the object's own, K^4
    double body;            ///< °C
    float offset;           ///< °C
    float deltaTemp;        ///< drift correction, °C
    double celsius;         ///< °C, before the limits
    IrTempStru reading;     ///< as `objectTemp` gives it
};

/// Takes the reading of a count apart; arguments as for `objectTemp`.
Breakdown breakDown(const Model& model, const TempInfoTab& table, float shutterDelta,
                    float deltaTemp, unsigned int ad);

} // namespace irmcore
