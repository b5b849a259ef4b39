#pragma once

#include "model.h"
#include "tempinfotab.h"

#include <array>
#include <cstddef>
#include <memory>

namespace irmcore {

/// Whole frames to temperatures. Every count is converted once and then looked up, until something
/// it depends on changes; only counts that occur in a frame are converted, since all 65,536 would
/// take the board some 270 million instructions.
///
/// Memory for all counts (832 kB) is taken with the first frame. Reentrant.
class FrameTable {
public:
    /// What a frame is converted with.
    struct Conditions {
        const Terms& terms;       ///< of the model
        const TempInfoTab& table; ///< calibration table
        float shutterDelta;       ///< shutter term, AD
        float deltaTemp;          ///< drift correction, °C
    };

    /// Converts `count` words as `objectTemp` does each: temperatures in °C, and statuses 0 "OK", 1
    /// "L", 2 "LE", 3 "HE", 4 "H". `temp` or `status` may be null. The buffers do not overlap.
    void convert(const Conditions& now, const unsigned short* ad, std::size_t count, float* temp,
                 unsigned char* status);

private:
    static constexpr std::size_t counts = 65536;

    /// The results of all counts.
    struct Entries {
        std::array<float, counts> temp;           // °C
        std::array<unsigned char, counts> status; // as given out, or `unknown`
        std::array<double, counts> observed; // °C without the drift correction; NaN: not known
    };
    /// What they were made from.
    struct Key {
        Model model;
        TempInfoTab table;
        int shutterDelta;
        float deltaTemp;
    };

    /// Forgets what no longer holds.
    void follow(const Conditions& now);

    std::unique_ptr<Entries> m_entries;
    Key m_key{};
};

} // namespace irmcore
