#pragma once

#include "camera.h"
#include "check.h"

#include <vector>

namespace irmfuzz {

/// Readings and counts of a model over the whole scale: all are marked and finite.
inline void sweep(TempHandler& model, Digest& out) {
    for (unsigned ad = 0; ad <= 0x10000; ad += 0x1000) {
        const IrTempStru reading = model.irAD2Temp(ad);
        requireReading(reading);
        out.add(reading);
    }
    for (float celsius = -70.0F; celsius < 500.0F; celsius += 40.0F) {
        const IrTempStru count = model.irTemp2AD(celsius);
        requireCount(count);
        out.add(count.ad);
    }
}

/// What the library derives from its files is in range.
inline void requireDerived() {
    require(m_levelSpanMaxAD >= 0 && m_levelSpanMaxAD <= 65535 && m_levelSpanMinAD >= 0 &&
                m_levelSpanMinAD <= 65535,
            "the limits are counts");
    require(m_vskTemp == m_vskTemp, "the VSK's reference is a number");
}

} // namespace irmfuzz
