#include "patience.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <dirent.h>
#include <execinfo.h>
#include <fcntl.h>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>

namespace irmtest {

namespace {

int s_errors = -1; // standard error as it was in the beginning

void say(std::string_view text) {
    [[maybe_unused]] const ssize_t written = write(s_errors, text.data(), text.size());
}

/// Where the thread is that gets the signal.
void showThread(int) {
    std::array<void*, 64> frames{};
    say("--- a thread:\n");
    backtrace_symbols_fd(frames.data(), backtrace(frames.data(), frames.size()), s_errors);
}

void giveUp(int) {
    say("This test takes too long. Its threads:\n");
    if (DIR* tasks = opendir("/proc/self/task")) {
        while (const dirent* entry = readdir(tasks)) {
            const long id = std::strtol(entry->d_name, nullptr, 10);
            if (id == 0)
                continue;
            syscall(SYS_tgkill, getpid(), id, SIGUSR2);
            timespec meanwhile{0, 300000000}; // one after the other
            nanosleep(&meanwhile, nullptr);
        }
        closedir(tasks);
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
