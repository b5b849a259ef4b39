#include "check.h"

#include "camera.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sched.h>
#include <unistd.h>

namespace irmfuzz {

bool everyInputTwice = false;

namespace {

/// Where findings are told: standard error itself may be closed against the library's lines.
int told() {
    static const int fd = dup(STDERR_FILENO);
    return fd;
}

const int early = told();

bool finite(const IrTempStru& reading) {
    return std::isfinite(reading.temp) && std::isfinite(reading.biaoDingTemp);
}

} // namespace

void require(bool holds, const char* claim) {
    if (holds)
        return;
    dprintf(early, "does not hold: %s\n", claim);
    std::abort();
}

bool knownStatus(const IrTempStru& reading) {
    constexpr std::array known{"OK", "LE", "HE", "L", "H"};
    if (std::memchr(reading.status, 0, sizeof reading.status) == nullptr)
        return false;
    return std::any_of(known.begin(), known.end(),
                       [&](const char* text) { return std::strcmp(text, reading.status) == 0; });
}

void requireReading(const IrTempStru& reading) {
    require(knownStatus(reading), "a reading's status is one of OK, LE, HE, L and H");
    require(finite(reading), "a reading's temperatures are finite");
}

void requireCount(const IrTempStru& reading) {
    require(knownStatus(reading), "a count's status is one of OK, LE, HE, L and H");
    require(reading.status[1] != 'E', "a count is not between limits of the measuring range");
}

void Digest::add(const IrTempStru& reading) {
    add(reading.status, sizeof reading.status);
    add(reading.ad);
    add(reading.temp);
    add(reading.correctAD);
    add(reading.deltaAD);
    add(reading.biaoDingTemp);
}

} // namespace irmfuzz

namespace {

using namespace irmfuzz;

/// The lowest free descriptor: it rises when one is leaked.
int freeDescriptor() {
    const int fd = dup(STDIN_FILENO);
    close(fd);
    return fd;
}

/// Whether the lowest free descriptor is, or soon is again, no higher than it was: where the C
/// library tells of an error, it holds one for a moment, and the link's worker does so at any time.
bool nothingLeftOpen(int firstFree) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (freeDescriptor() > firstFree) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        sched_yield();
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    Fixture::get();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::uint64_t once = execute(data, size); // what is opened once is open then
    static_cast<void>(once);
    const int firstFree = freeDescriptor();
    const std::uint64_t first = execute(data, size);
    Digest input;
    input.add(data, size);
    if (everyInputTwice || input.value() % 16 == 0)
        require(execute(data, size) == first, "the same input gives the same result");
    require(nothingLeftOpen(firstFree), "no descriptor is leaked");
    return 0;
}
