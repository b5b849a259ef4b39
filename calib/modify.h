#pragma once

/// @file
/// The modify table.

#include <array>

/// The modify table: a factor for every half degree of inside temperature from -20 to 79.5 °C, by
/// which that temperature is multiplied to give the corrected shutter temperature.
/// Exported; one per process.
[[gnu::visibility("default")]] extern float s_modify[200];
/// Lowest inside temperature in °C that the Modify file last read gives a factor for, at most 79;
/// 79 without any.
[[gnu::visibility("default")]] extern float m_minModifyTemp;
/// Highest inside temperature in °C that the Modify file last read gives a factor for; -20 without.
[[gnu::visibility("default")]] extern float m_maxModifyTemp;

/// Pure: values in, values out; reentrant.
namespace irmcore {

inline constexpr int modifyEntries = 200;    ///< entries of the table
inline constexpr double modifyStart = -20.0; ///< °C of the first
inline constexpr double modifyStep = 0.5;    ///< °C from entry to entry

/// The inside temperature of entry `k`, °C.
constexpr double modifyTemp(int k) { return k * modifyStep + modifyStart; }

/// The entry that holds for an inside temperature: cut to 0 and 199 outside the table, 0 for NaN.
int modifyEntry(float inside);

/// The key of an entry in a Modify file: "Averg_" and its temperature, whole degrees without
/// decimals.
struct ModifyKey {
    std::array<char, 12> text{}; ///< NUL-terminated
};

/// The key of entry `k`, 0 to 199.
constexpr ModifyKey modifyKey(int k) {
    ModifyKey key;
    std::size_t n = 0;
    for (const char c : {'A', 'v', 'e', 'r', 'g', '_'})
        key.text[n++] = c;
    int halves = k - 40; // half degrees above 0 °C
    if (halves < 0) {
        key.text[n++] = '-';
        halves = -halves;
    }
    if (halves >= 20)
        key.text[n++] = static_cast<char>('0' + halves / 20);
    key.text[n++] = static_cast<char>('0' + halves / 2 % 10);
    if (halves % 2 != 0) {
        key.text[n++] = '.';
        key.text[n++] = '5';
    }
    return key;
}

/// What a Modify file gives, before its gaps are filled.
struct ModifyFactors {
    float* table;    ///< 200 factors, 0 where the file has none; the caller's
    float minTemp;   ///< °C, the lowest that has a factor
    float minFactor; ///< for everything below
    float maxTemp;   ///< °C, the highest that has a factor
    float maxFactor; ///< for everything above
};

/// Fills the gaps in rising order: the lowest factor below the lowest temperature, the highest
/// above the highest, between them the nearest factor below. Where there is none the entry stays
/// 0.
void fillGaps(const ModifyFactors& factors);

} // namespace irmcore
