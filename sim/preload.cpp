// The object that a program is started with to run on a simulated camera. Without a plan in the
// environment, or with one for another process, all calls pass through; to an observer, if the
// environment names one.

#include "camera.h"
#include "courier.h"
#include "plan.h"
#include "wire.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

[[noreturn]] void giveUp(const std::string& why) {
    std::fprintf(stderr, "irmsim: no simulated camera: %s\n", why.c_str());
    constexpr int errors = 2;
    ::_exit(errors);
}

/// The descriptor that a variable names for this process; negative when there is none.
int descriptorIn(const char* name) {
    const char* variable = std::getenv(name);
    if (variable == nullptr)
        return -1;
    const std::string_view text = variable;
    const char* end = text.data() + text.size();
    long process = 0;
    int descriptor = -1;
    const auto first = std::from_chars(text.data(), end, process);
    if (first.ec != std::errc() || first.ptr == end || *first.ptr != ':')
        return -1;
    if (process != ::getpid())
        return -1; // a child of it
    std::from_chars(first.ptr + 1, end, descriptor);
    return descriptor;
}

/// All that can be read, from the beginning: the position is shared with whoever comes later.
std::string readAll(int descriptor) {
    std::string all;
    std::array<char, 65536> some{};
    for (;;) {
        const ssize_t n =
            ::pread(descriptor, some.data(), some.size(), static_cast<off_t>(all.size()));
        if (n == 0)
            return all;
        if (n < 0 && errno != EINTR)
            giveUp(std::string("its plan cannot be read: ") + std::strerror(errno));
        if (n > 0)
            all.append(some.data(), static_cast<std::size_t>(n));
    }
}

[[gnu::constructor]] void start() {
    if (const int courier = descriptorIn(irmsim::courierVariable); courier >= 0)
        irmsim::startCourier(courier);
    const int descriptor = descriptorIn(irmsim::planVariable);
    if (descriptor < 0)
        return;
    std::string error;
    const auto plan = irmsim::parsePlan(readAll(descriptor), error);
    if (!plan)
        giveUp(error);
    // Stays to the very end: nobody knows which thread or exit handler makes the last call.
    static auto* const camera = new irmsim::Camera;
    if (!irmsim::setUp(*camera, *plan, error) || !camera->install())
        giveUp(error);
    if (plan->pty && camera->pty() == nullptr)
        giveUp("no pty for its serial port"); // why, has been said
    if (plan->wallFactor <= 0.0 && ::access("/proc/self/task", R_OK) != 0)
        std::fputs("irmsim: without /proc, a simulated sleep gives the host's other threads 20 ms "
                   "and does not see whether they need more; see --clock wall\n",
                   stderr);
}

} // namespace
