#pragma once

#include "clock.h"
#include "detectorcore.h"
#include "framereader.h"
#include "observer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace irmsim {

/// The recorded session on the serial port, served to a host that may send other commands than the
/// recorded one did. A command is answered as the same one was: as its next occurrence that has not
/// been served, or else its last; one with other values as the same code. What came in answer comes
/// as long after the command as then. A command whose code was never recorded gets no answer. Not
/// locked.
class ReplayPort {
public:
    explicit ReplayPort(const std::vector<Observation>& calls);

    // The calls: 0 or what they write, or a negative error number.
    long open();
    long attributes();
    long write(const std::uint8_t* bytes, std::size_t n, std::vector<Reply>& replies);
    /// Once all replies are read: the error that came instead of more.
    long readError() const { return m_readError; }

private:
    struct Exchange {
        RawFrame command;
        std::size_t length = 0; ///< of the write
        long result = 0;        ///< of the write
        std::vector<Reply> replies;
        long readError = 0;
        bool served = false;
    };
    Exchange* find(const RawFrame& command);

    std::vector<Exchange> m_exchanges;
    std::size_t m_failed = 0; ///< exchanges before this one cannot fail any more
    std::vector<long> m_opens;
    std::size_t m_opened = 0;
    std::vector<long> m_attributes;
    std::size_t m_attributesAsked = 0;
    FrameReader m_reader;
    long m_readError = 0;
    std::array<bool, 256> m_complained{};
};

} // namespace irmsim
