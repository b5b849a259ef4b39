#include "check.h"

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

int freeDescriptor() {
    const int fd = dup(STDIN_FILENO);
    close(fd);
    return fd;
}

bool nothingLeftOpen(int firstFree) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (freeDescriptor() > firstFree) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        sched_yield();
    }
    return true;
}

} // namespace irmfuzz
