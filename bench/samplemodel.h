#pragma once

#include "measure/model.h"
#include "measure/tempinfotab.h"

/// A camera's ordinary conditions, for benchmarks.
namespace irmbench {

inline constexpr float sampleShutterTerm = -312.25F; // AD, a shutter at 27 °C
inline constexpr float sampleDrift = 0.37F;          // °C

constexpr irmcore::Model sampleModel() {
    return {0.95F, 0.5F, 23.0F, 21.0F, 0.98F, -20, 150, false};
}

/// 18 entries from -20 to 150 °C, 10 °C apart, mid-scale at 30 °C, steeper as it gets warmer.
constexpr TempInfoTab sampleTable() {
    constexpr std::uint16_t counts[] = {27400, 28370, 29390, 30460, 31590, 32768,
                                        34000, 35280, 36620, 38010, 39460, 40960,
                                        42510, 44120, 45780, 47490, 49250, 51060};
    TempInfoTab tab{};
    tab.lenTemp = tab.sensorTemp = tab.shutterTemp = 30.0F;
    tab.maxAD = 65535;
    tab.baseTemp = 30;
    for (const std::uint16_t count : counts) {
        tab.ad[tab.tempNum] = count;
        tab.temp[tab.tempNum] = static_cast<std::int16_t>(-20 + 10 * tab.tempNum);
        ++tab.tempNum;
    }
    return tab;
}

} // namespace irmbench
