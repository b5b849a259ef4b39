#include "courier.h"

#include "observer.h"
#include "wire.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace irmsim {

namespace {

/// The pipe. Its descriptor's number can become another file's at any time: the file itself is
/// known by device and inode.
struct Pipe {
    std::atomic<int> descriptor{-1}; // negative: no more records
    dev_t device = 0;
    ino_t inode = 0;

    bool isThere(int fd) const {
        struct stat status {};
        return ::fstat(fd, &status) == 0 && status.st_dev == device && status.st_ino == inode;
    }
};

Pipe& thePipe() {
    static Pipe pipe;
    return pipe;
}

/// While it lives, writing has no consequences for this thread: a SIGPIPE of its own is taken back,
/// and a call that could not be cancelled before cannot be cancelled by its record.
class Quiet {
public:
    Quiet() {
        ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_cancelState);
        ::sigemptyset(&m_brokenPipe);
        ::sigaddset(&m_brokenPipe, SIGPIPE);
        ::pthread_sigmask(SIG_BLOCK, &m_brokenPipe, &m_before);
        sigset_t pending;
        m_waiting = ::sigismember(&m_before, SIGPIPE) == 1 && ::sigpending(&pending) == 0 &&
                    ::sigismember(&pending, SIGPIPE) == 1;
    }
    ~Quiet() {
        const timespec now{};
        if (m_broken && !m_waiting) // one that waited already is the program's
            ::sigtimedwait(&m_brokenPipe, nullptr, &now);
        ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
        ::pthread_setcancelstate(m_cancelState, nullptr);
    }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

    void broken() { m_broken = true; }

private:
    int m_cancelState = 0;
    sigset_t m_brokenPipe;
    sigset_t m_before;
    bool m_waiting = false;
    bool m_broken = false;
};

/// Writes everything. False when that cannot be done.
template <std::size_t N>
bool writeAll(int fd, std::array<iovec, N> parts) {
    for (std::size_t first = 0; first < N;) {
        ssize_t n = ::writev(fd, &parts[first], static_cast<int>(N - first));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return false;
        while (first < N && static_cast<std::size_t>(n) >= parts[first].iov_len)
            n -= static_cast<ssize_t>(parts[first++].iov_len);
        if (first < N) {
            parts[first].iov_base = static_cast<char*>(parts[first].iov_base) + n;
            parts[first].iov_len -= static_cast<std::size_t>(n);
        }
    }
    return true;
}

std::int64_t wallTime() {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

void carry(void* context, const Observation& observation) {
    Pipe& pipe = *static_cast<Pipe*>(context);
    const int fd = pipe.descriptor.load(std::memory_order_relaxed);
    if (fd < 0)
        return;
    const int error = errno;
    const std::size_t count = observation.bytes != nullptr && observation.result > 0
                                  ? static_cast<std::size_t>(observation.result)
                                  : 0;
    const std::size_t filling = (wireAlign - count % wireAlign) % wireAlign;
    WireHeader header{};
    header.size = static_cast<std::uint32_t>(sizeof header + count + filling);
    header.call = static_cast<std::uint8_t>(observation.call);
    header.flags = static_cast<std::uint8_t>((observation.port ? wirePort : 0) |
                                             (observation.real ? wireReal : 0));
    header.address = observation.address;
    header.length = static_cast<std::uint32_t>(observation.length);
    header.result = observation.result;
    header.time = observation.time.count();
    header.wall = wallTime();
    std::array<char, wireAlign> zeros{};
    const std::array<iovec, 3> parts{
        iovec{&header, sizeof header},
        // An iovec's memory is not const, though it is only read here.
        iovec{const_cast<std::uint8_t*>(observation.bytes), count},
        iovec{zeros.data(), filling},
    };
    {
        Quiet quiet;
        if (!pipe.isThere(fd)) {
            pipe.descriptor = -1;
        } else if (!writeAll(fd, parts)) {
            if (errno == EPIPE)
                quiet.broken();
            pipe.descriptor = -1;
            ::close(fd);
        }
    }
    errno = error;
}

/// In a forked child.
void forget() {
    Pipe& pipe = thePipe();
    const int fd = pipe.descriptor.exchange(-1);
    if (fd >= 0 && pipe.isThere(fd))
        ::close(fd);
}

} // namespace

void startCourier(int descriptor, const char* device, const char* port) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0)
        return;
    Pipe& pipe = thePipe();
    pipe.device = status.st_dev;
    pipe.inode = status.st_ino;
    pipe.descriptor = descriptor;
    static Observer observer;
    observer = {&carry, &pipe, device, port};
    ::pthread_atfork(nullptr, nullptr, &forget);
    setObserver(&observer);
}

} // namespace irmsim
