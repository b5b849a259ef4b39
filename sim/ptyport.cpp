#include "ptyport.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <deque>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace irmsim {

namespace {

using Wall = std::chrono::steady_clock;

/// Milliseconds until `due`, rounded up; -1, for ever, without one.
int millisecondsUntil(const std::optional<Wall::time_point>& due) {
    if (!due)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - Wall::now());
    return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, 1000));
}

} // namespace

std::unique_ptr<PtyPort> PtyPort::start(Feed feed) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (master < 0)
        return nullptr;
    const int wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wake < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
        const int error = errno;
        close(master);
        if (wake >= 0)
            close(wake);
        errno = error;
        return nullptr;
    }
    return std::unique_ptr<PtyPort>(new PtyPort(master, wake, std::move(feed)));
}

PtyPort::PtyPort(int master, int wake, Feed feed)
    : m_master(master), m_wake(wake), m_held(openHostEnd(O_RDWR | O_CLOEXEC)),
      m_feed(std::move(feed)), m_thread([this] { run(); }) {}

PtyPort::~PtyPort() {
    const std::uint64_t one = 1;
    while (write(m_wake, &one, sizeof one) < 0 && errno == EINTR) {
    }
    m_thread.join();
    if (m_held >= 0)
        close(m_held);
    close(m_wake);
    close(m_master);
}

int PtyPort::openHostEnd(int flags) const {
    std::array<char, 64> name{};
    if (const int error = ptsname_r(m_master, name.data(), name.size()); error != 0)
        return -error;
    const int fd = open(name.data(), flags | O_NOCTTY);
    return fd < 0 ? -errno : fd;
}

void PtyPort::run() {
    struct Sending {
        std::vector<std::uint8_t> bytes;
        Wall::time_point due;
    };
    std::deque<Sending> sending;
    std::array<std::uint8_t, 4096> bytes{};
    for (;;) {
        while (!sending.empty() && sending.front().due <= Wall::now()) {
            const auto& reply = sending.front().bytes;
            // What does not fit is lost, as on a port whose host does not listen.
            [[maybe_unused]] const ssize_t sent = write(m_master, reply.data(), reply.size());
            sending.pop_front();
        }
        const auto due = sending.empty() ? std::nullopt : std::optional(sending.front().due);
        std::array<pollfd, 2> watched{{{m_wake, POLLIN, 0}, {m_master, POLLIN, 0}}};
        if (poll(watched.data(), watched.size(), millisecondsUntil(due)) < 0 && errno != EINTR)
            return;
        if (watched[0].revents != 0)
            return;
        if (watched[1].revents == 0)
            continue;
        const ssize_t n = read(m_master, bytes.data(), bytes.size());
        if (n <= 0) {
            // Hung up, which our own end should prevent: not worth more than a look now and then.
            pollfd wake{m_wake, POLLIN, 0};
            constexpr int pause = 20; // ms
            if (poll(&wake, 1, pause) > 0)
                return;
            continue;
        }
        for (Reply& reply : m_feed(bytes.data(), static_cast<std::size_t>(n))) {
            auto at = Wall::now() + reply.after;
            if (!sending.empty())
                at = std::max(at, sending.back().due);
            sending.push_back({std::move(reply.bytes), at});
        }
    }
}

} // namespace irmsim
