#include "patience.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <execinfo.h>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace irmtest {

namespace {

// What follows runs in a signal handler, of a program that may hang in its allocator: no memory is
// taken.

int s_errors = -1; // standard error as it was in the beginning

void say(std::string_view text) {
    [[maybe_unused]] const ssize_t written = write(s_errors, text.data(), text.size());
}

/// The end of a file, where it can be read.
void show(int fd) {
    std::array<char, 2000> text{};
    struct stat file {};
    const bool regular = fstat(fd, &file) == 0 && S_ISREG(file.st_mode);
    const auto room = static_cast<off_t>(text.size());
    const off_t from = regular ? std::max<off_t>(file.st_size - room, 0) : 0;
    const ssize_t n = pread(fd, text.data(), text.size(), from);
    say({text.data(), static_cast<std::size_t>(std::max<ssize_t>(n, 0))});
}

/// Where the thread is that gets the signal.
void showThread(int) {
    std::array<void*, 64> frames{};
    backtrace_symbols_fd(frames.data(), backtrace(frames.data(), frames.size()), s_errors);
}

/// What the kernel knows of a thread, and where it is.
void show(const char* thread) {
    say("\n--- thread ");
    for (const char* what : {"stat", "schedstat", "wchan", "syscall"}) {
        std::array<char, 64> path{};
        std::snprintf(path.data(), path.size(), "/proc/self/task/%.20s/%s", thread, what);
        const int fd = open(path.data(), O_RDONLY | O_CLOEXEC);
        show(fd);
        say("\n");
        close(fd);
    }
    syscall(SYS_tgkill, getpid(), std::strtol(thread, nullptr, 10), SIGUSR2);
    timespec meanwhile{0, 300000000}; // one after the other
    nanosleep(&meanwhile, nullptr);
}

void giveUp(int) {
    say("This test takes too long. What it captured of standard output and error ends:\n");
    show(STDOUT_FILENO);
    show(STDERR_FILENO);
    const int tasks = open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    alignas(8) std::array<char, 4096> entries{};
    const long n = syscall(SYS_getdents64, tasks, entries.data(), entries.size());
    constexpr std::size_t lengthAt = 16, nameAt = 19; // of linux_dirent64
    for (std::size_t at = 0; static_cast<long>(at) < n;) {
        std::uint16_t length = 0;
        std::memcpy(&length, &entries[at + lengthAt], sizeof length);
        if (entries[at + nameAt] != '.')
            show(&entries[at + nameAt]);
        at += length;
    }
    std::abort();
}

class Patience : public testing::EmptyTestEventListener {
public:
    explicit Patience(unsigned seconds) : m_seconds(seconds) {}
    void OnTestStart(const testing::TestInfo&) override { alarm(m_seconds); }
    void OnTestEnd(const testing::TestInfo&) override { alarm(0); }

private:
    unsigned m_seconds;
};

} // namespace

void losePatienceAfter(unsigned seconds) {
    s_errors = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 100);
    std::array<void*, 1> frame{};
    backtrace(frame.data(), frame.size()); // loads what it needs now, not in a handler
    std::signal(SIGALRM, giveUp);
    std::signal(SIGUSR2, showThread);
    testing::UnitTest::GetInstance()->listeners().Append(new Patience(seconds)); // owned there
}

} // namespace irmtest
