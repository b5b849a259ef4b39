#pragma once

#include "../sim/wire.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace irmcore::app {

/// One observation as it came from a host.
struct Heard {
    irmsim::WireHeader header;
    const std::uint8_t* bytes = nullptr; ///< for as long as the callback lasts

    /// Those that a read or write transferred.
    std::size_t count() const;
};

/// Puts records together from the pieces that a pipe delivers.
class CourierReader {
public:
    using Hear = std::function<void(const Heard&)>;
    explicit CourierReader(Hear hear);

    enum class State { more, empty, ended, broken };
    /// Reads once, and tells of every record that is complete then. `empty` when a descriptor
    /// that does not wait has nothing; `broken`, from then on, when something else came than
    /// records, or it cannot be read.
    State readFrom(int descriptor);

    /// Whether a record has begun and not ended: its sender was interrupted in the midst of it.
    bool inTheMidst() const { return m_begin < m_end; }

private:
    State take();

    Hear m_hear;
    std::vector<std::uint8_t> m_buffer;
    std::size_t m_begin = 0; // what is not yet told
    std::size_t m_end = 0;
    bool m_broken = false;
};

} // namespace irmcore::app
