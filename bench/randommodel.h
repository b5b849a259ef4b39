#pragma once

#include "core/truncate.h"
#include "measure/model.h"
#include "measure/tablelookup.h"
#include "measure/tempinfotab.h"
#include "measure/transmission.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

/// Conditions of a measurement drawn at random, the same on every processor and with every
/// standard library.
namespace irmbench {

/// All that a conversion depends on.
struct Conditions {
    irmcore::Model model;
    TempInfoTab table;
    float shutterDelta; ///< AD
    float deltaTemp;    ///< °C
};

/// Random numbers (splitmix64), and what is made of them.
class Random {
public:
    explicit Random(std::uint64_t seed) : m_state(seed) {}

    std::uint32_t bits() {
        m_state += 0x9E3779B97F4A7C15;
        std::uint64_t z = m_state;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
        return static_cast<std::uint32_t>((z ^ (z >> 31)) >> 32);
    }
    /// A whole number from `low` to `high`.
    int whole(int low, int high) {
        return low + static_cast<int>(bits() % static_cast<std::uint32_t>(high - low + 1));
    }
    /// A number from `low` up to `high`.
    float number(float low, float high) {
        return low + (high - low) * static_cast<float>(bits() >> 8) / 16777216.0F;
    }
    /// An object's temperature, now and then far from any.
    float celsius() {
        return whole(0, 15) == 0 ? number(-300.0F, 5000.0F) : number(-60.0F, 600.0F);
    }
    /// A drift correction.
    float drift() { return whole(0, 3) == 0 ? 0.0F : number(-20.0F, 20.0F); }

    /// A rising table of the low or the high range.
    TempInfoTab table(bool high) {
        TempInfoTab tab{};
        tab.minAD = static_cast<std::uint16_t>(whole(0, 3000));
        tab.maxAD = static_cast<std::uint16_t>(whole(62000, 65535));
        const int entries = high ? whole(20, 43) : whole(12, 19);
        tab.tempNum = static_cast<std::uint16_t>(entries);
        const int first = high ? -10 : -30;
        const int step = (65000 - 8000) / entries;
        int count = whole(3000, 8000);
        for (int i = 0; i < entries; ++i) {
            tab.temp[i] = static_cast<std::int16_t>(first + 10 * i);
            tab.ad[i] = static_cast<std::uint16_t>(count);
            count += whole(step / 2, step);
        }
        return tab;
    }

    /// Any one of some values.
    template <typename T, std::size_t N>
    T any(const T (&values)[N]) {
        return values[bits() % N];
    }

    /// Conditions that no careful host makes.
    Conditions hostile() {
        constexpr float odd[] = {0.0F, 1024.0F, -1024.0F, 1025.0F, 1e9F, INFINITY, NAN};
        constexpr float parts[] = {0.0F, 1e-40F, 0.5F, 1.0F, NAN};
        constexpr float temps[] = {-273.15F, -300.0F, 25.0F, 1e6F, INFINITY, NAN};
        constexpr int limits[] = {-2147483647 - 1, -20, 150, 150, 16777217, 2147483647};
        Conditions now{};
        now.model = {any({0.001F, 0.95F, 1.0F, 1.001F, -0.5F}),
                     any(odd),
                     any(temps),
                     any(temps),
                     any(parts),
                     any(limits),
                     any(limits),
                     whole(0, 1) == 1};
        now.table.tempNum = static_cast<std::uint16_t>(any({0, 1, 2, 3, 20, 60, 63, 65535}));
        now.table.minAD = static_cast<std::uint16_t>(any({0, 0, 20000, 65535}));
        now.table.maxAD = static_cast<std::uint16_t>(any({0, 40000, 65535, 65535}));
        const int kinds = whole(1, 3); // the fewer, the more counts are equal
        for (int i = 0; i < irmcore::tableCapacity; ++i) {
            now.table.ad[i] = static_cast<std::uint16_t>(bits() % 65536 >> 4 * (kinds - 1));
            now.table.temp[i] = static_cast<std::int16_t>(whole(-300, 2000));
        }
        now.shutterDelta = any({0.0F, -2135.5F, 70000.0F, -1e9F, 1e38F, INFINITY, NAN});
        now.deltaTemp = any(odd);
        return now;
    }

    /// Conditions as cameras meet them, and at the ends of what is accepted; one in eight hostile.
    Conditions conditions() {
        if (whole(0, 7) == 0)
            return hostile();
        Conditions now{};
        const bool high = whole(0, 1) == 1;
        const bool far = whole(0, 3) == 0;
        const float env = number(-40.0F, 60.0F);
        const int metres = far ? whole(100, 20000) : whole(0, 100);
        now.model = {number(far ? 0.001F : 0.2F, 1.001F),
                     whole(0, 1) == 0 ? 0.0F : number(-100.0F, 100.0F),
                     env,
                     number(-60.0F, far ? 1000.0F : 80.0F),
                     irmcore::transmission(env, number(0.0F, 1.0F), metres),
                     high ? 0 : -20,
                     high ? 400 : 150,
                     whole(0, 7) == 0};
        now.table = table(high);
        now.shutterDelta = number(-4000.0F, 4000.0F);
        now.deltaTemp = drift();
        return now;
    }

private:
    std::uint64_t m_state;
};

} // namespace irmbench
