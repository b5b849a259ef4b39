#include "settle.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <optional>
#include <sched.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace irmsim {

namespace {

/// Whether a thread of this process sleeps, or is gone.
bool sleeps(const char* thread) {
    std::array<char, 64> path{};
    std::snprintf(path.data(), path.size(), "/proc/self/task/%.20s/stat", thread);
    const int fd = open(path.data(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return true;
    std::array<char, 256> text{};
    const ssize_t n = read(fd, text.data(), text.size() - 1);
    close(fd);
    // "id (name) state ...": the name may hold anything, brackets too.
    const char* end = n > 0 ? std::strrchr(text.data(), ')') : nullptr;
    return end == nullptr || end[1] != ' ' || (end[2] != 'R' && end[2] != 'D');
}

/// Whether all other threads sleep; nothing where they cannot be seen.
std::optional<bool> othersSleep() {
    DIR* tasks = opendir("/proc/self/task");
    if (tasks == nullptr)
        return std::nullopt;
    const long self = syscall(SYS_gettid);
    bool all = true;
    while (const dirent* entry = readdir(tasks)) {
        const long id = std::strtol(entry->d_name, nullptr, 10);
        all = all && (id == 0 || id == self || sleeps(entry->d_name));
    }
    closedir(tasks);
    return all;
}

} // namespace

void settle(std::chrono::nanoseconds limit) {
    constexpr std::chrono::nanoseconds longest = std::chrono::seconds(1);
    constexpr std::chrono::nanoseconds blind = std::chrono::milliseconds(20);
    const auto end = std::chrono::steady_clock::now() + std::min(limit, longest);
    for (;;) {
        const std::optional<bool> still = othersSleep();
        if (!still) { // without /proc: time enough, most of the time
            std::this_thread::sleep_for(std::min(limit, blind));
            return;
        }
        if (*still || std::chrono::steady_clock::now() >= end)
            return;
        sched_yield();
    }
}

} // namespace irmsim
