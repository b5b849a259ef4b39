#include "breakdown.h"

#include "../core/truncate.h"
#include "literal.h"
#include "radiometry.h"

#include <limits>

namespace irmcore {

Breakdown breakDown(const Model& model, const TempInfoTab& table, float shutterDelta,
                    float deltaTemp, unsigned int ad) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    Breakdown b{};
    b.ad = ad;
    b.shutterDelta = shutterDelta;
    b.shift = truncateToInt(static_cast<double>(shutterDelta));
    b.corrected = ad + static_cast<unsigned int>(b.shift);
    b.segment = findSegment(table, b.corrected);
    b.table = tempIn(table, b.segment, b.corrected);
    b.offset = model.offset;
    b.deltaTemp = deltaTemp;
    b.reading = objectTemp(termsOf(model), table, shutterDelta, deltaTemp, ad);
    b.seen = std::numeric_limits<float>::quiet_NaN();
    b.observed = b.reflected = b.air = b.power = b.body = b.celsius = none;
    if (b.table.place != Place::inside)
        return b;
    b.seen = fromTable(b.table.celsius);
    b.observed = literal::observedPower(model, b.seen);
    b.reflected = literal::reflectedPower(model);
    b.air = literal::airPower(model);
    b.power = literal::objectPower(model, b.seen);
    if (b.power < 0.0)
        return b;
    b.body = literal::bodyCelsius(b.power);
    b.celsius = literal::objectCelsius(model, b.power) - static_cast<double>(deltaTemp);
    return b;
}

} // namespace irmcore
