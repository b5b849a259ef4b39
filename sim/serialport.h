#pragma once

#include "clock.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <termios.h>
#include <vector>

namespace irmsim {

/// The virtual serial port: what has come in and when, and all its attributes as they were set.
/// Not locked.
class SerialPort {
public:
    /// Attributes as a fresh port has them: 9600 baud, 8 data bits, lines, echo.
    SerialPort();

    /// Bytes that arrive at `due`, never before those sent earlier.
    void arrive(std::vector<std::uint8_t> bytes, Time due);
    /// Takes what has arrived by `now`. Returns the bytes taken.
    std::size_t take(std::uint8_t* out, std::size_t room, Time now);
    /// When the next bytes arrive, or have arrived.
    std::optional<Time> nextDue() const;
    /// Throws away what has arrived by `now`.
    void flushInput(Time now);

    /// How long a read waits while nothing arrives. Without a time limit (VTIME 0, VMIN above 0) a
    /// real port waits for ever; this one for 0.1 s.
    Time patience() const;

    termios attributes{};

private:
    struct Arrival {
        std::vector<std::uint8_t> bytes;
        Time due;
        std::size_t taken;
    };
    std::deque<Arrival> m_arrivals;
};

} // namespace irmsim
