#include "modify.h"

#include "../core/truncate.h"

namespace irmcore {

int modifyEntry(float inside) {
    constexpr float first = -20.0F;
    constexpr float end = 80.0F;
    if (inside < first)
        return 0;
    if (inside >= end)
        return modifyEntries - 1;
    return truncateToInt(static_cast<double>((inside - first) + (inside - first)));
}

void fillGaps(const ModifyFactors& factors) {
    float below = 0.0F; // the nearest factor below
    for (int k = 0; k < modifyEntries; ++k) {
        float& entry = factors.table[k];
        if (entry == 0.0F) {
            if (modifyTemp(k) < static_cast<double>(factors.minTemp))
                entry = factors.minFactor;
            else if (modifyTemp(k) > static_cast<double>(factors.maxTemp))
                entry = factors.maxFactor;
            else
                entry = below;
        }
        if (entry != 0.0F)
            below = entry;
    }
}

} // namespace irmcore
