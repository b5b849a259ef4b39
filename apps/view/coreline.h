#pragma once

#include "../../device/serial.h"
#include "snapshot.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace irmcore::view {

/// What is said to the detector core, on a thread of its own: while the core is silent a query
/// takes up to 20 s, and a command waits for the link as long. Calls return at once.
class CoreLine {
public:
    /// Numbers what is said, in its order, from 1.
    using Ticket = std::uint64_t;

    /// The link outlives the line.
    explicit CoreLine(Serial& link);
    /// Waits for what is under way; what is still waiting is not said.
    ~CoreLine();
    CoreLine(const CoreLine&) = delete;
    CoreLine& operator=(const CoreLine&) = delete;

    Ticket releaseShutter(bool toCore);         ///< whether the core calibrates by itself
    Ticket calibrate();                         ///< by the inside shutter
    Ticket changeRange(unsigned short intTime); ///< raw integration time of the range
    /// Asks for something, to see whether the core answers.
    Ticket ask();

    /// Whether a question has been answered, that or a later one; or waited for in vain.
    bool answered(Ticket ticket) const;
    bool missed(Ticket ticket) const;
    /// Nothing is under way or waiting.
    bool idle() const;
    /// Waits for that, so long at most.
    void settle(std::chrono::milliseconds patience);
    CoreState state() const; ///< by the last question

private:
    /// What came of something said; a command's acknowledgement is thrown away.
    enum class Reply { command, answer, silence };
    using Words = std::function<Reply(Serial&)>;
    Ticket add(Words words);
    void run();

    Serial& m_link;
    mutable std::mutex m_lock; // for what follows
    std::condition_variable m_changed;
    std::deque<Words> m_waiting;
    Ticket m_last = 0;  // given
    Ticket m_begun = 0; // the one being said, or the last
    Ticket m_answered = 0;
    Ticket m_missed = 0;
    bool m_speaking = false;
    bool m_stop = false;
    CoreState m_state = CoreState::unknown;
    std::thread m_thread;
};

} // namespace irmcore::view
