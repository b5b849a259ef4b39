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

/// Runs an execution, and some inputs (with `everyInputTwice` all) a second time: it comes to the
/// same, and leaves no descriptor open.
template <typename Run>
void check(const std::uint8_t* data, std::size_t size, Run run);

/// For short runs over few inputs.
extern bool everyInputTwice;

/// The lowest free descriptor: it rises when one is leaked.
int freeDescriptor();

/// Whether the lowest free descriptor is, or soon is again, no higher than it was: where the C
/// library tells of an error, it holds one for a moment, and the link's worker does so at any time.
bool nothingLeftOpen(int firstFree);

template <typename Run>
void check(const std::uint8_t* data, std::size_t size, Run run) {
    static const std::uint64_t once = run(data, size); // what is opened once is open then
    static_cast<void>(once);
    const int firstFree = freeDescriptor();
    const std::uint64_t first = run(data, size);
    Digest input;
    input.add(data, size);
    if (everyInputTwice || input.value() % 16 == 0)
        require(run(data, size) == first, "the same input gives the same result");
    require(nothingLeftOpen(firstFree), "no descriptor is leaked");
}

} // namespace irmfuzz
