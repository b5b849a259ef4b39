#pragma once

#include "detectorcore.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace irmsim {

/// The serial port as a real pty: a thread reads what the host writes into its end, and writes the
/// replies, late ones as much later in wall time. Replies that a host does not fetch are lost when
/// the pty is full.
class PtyPort {
public:
    /// What becomes of the host's bytes. Called on the thread.
    using Feed = std::function<std::vector<Reply>(const std::uint8_t* bytes, std::size_t n)>;

    /// Null, with errno set, when there is no pty to be had.
    static std::unique_ptr<PtyPort> start(Feed feed);
    /// Hangs up; waits for the thread, which never blocks for long.
    ~PtyPort();
    PtyPort(const PtyPort&) = delete;
    PtyPort& operator=(const PtyPort&) = delete;

    /// A descriptor of the host's end, the caller's to close; negative error number on failure.
    int openHostEnd(int flags) const;

private:
    PtyPort(int master, int wake, Feed feed);
    void run();

    int m_master;
    int m_wake; // eventfd: the thread is to end
    int m_held; // a host's end of our own: the line is never hung up while no host is there
    Feed m_feed;
    std::thread m_thread;
};

} // namespace irmsim
