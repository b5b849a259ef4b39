#pragma once

#include "measure/reading.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

/// What holds whatever the input is, and how a finding is told.
namespace irmfuzz {

/// Ends the program with `claim` when it does not hold.
void require(bool holds, const char* claim);

/// The statuses that a reading can have; "NULL" is not that of a converted one.
bool knownStatus(const IrTempStru& reading);

/// A converted reading is marked with a known status and carries a finite temperature.
void requireReading(const IrTempStru& reading);

/// A count computed for a temperature is marked with a known status.
void requireCount(const IrTempStru& reading);

/// What an execution came to, in one number: the same input gives the same.
class Digest {
public:
    void add(const void* bytes, std::size_t n) {
        const auto* at = static_cast<const unsigned char*>(bytes);
        for (std::size_t i = 0; i < n; ++i)
            m_value = (m_value ^ at[i]) * 1099511628211U;
    }
    template <typename T>
    void add(const T& value) {
        static_assert(std::is_arithmetic_v<T>);
        add(&value, sizeof value);
    }
    void add(const IrTempStru& reading);
    std::uint64_t value() const { return m_value; }

private:
    std::uint64_t m_value = 14695981039346656037U;
};

/// What a target does with an input, and comes to. Each target has its own; it is done with some
/// inputs (with `everyInputTwice` all) a second time: it comes to the same, and leaves no
/// descriptor open.
std::uint64_t execute(const std::uint8_t* data, std::size_t size);

/// For short runs over few inputs.
extern bool everyInputTwice;

} // namespace irmfuzz
