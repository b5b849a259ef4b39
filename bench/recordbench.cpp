// A host for recordings: frames and readings at a steady rate.
//
//   recordbench FRAMES [384|160 [PER_SECOND]]
//
// Prints a digest of all frames and readings; on standard error what a round cost: processor time
// of this process, and wall time between the waits. PER_SECOND 0, the default, does not wait.
#include "core/fpga.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::int64_t second = 1000000000;

std::int64_t now(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return std::int64_t{time.tv_sec} * second + time.tv_nsec;
}

void waitUntil(std::int64_t time) {
    const timespec until{static_cast<time_t>(time / second), static_cast<long>(time % second)};
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr);
}

/// FNV-1a.
class Digest {
public:
    void add(const void* bytes, std::size_t count) {
        const auto* byte = static_cast<const unsigned char*>(bytes);
        for (std::size_t i = 0; i < count; ++i)
            m_value = (m_value ^ byte[i]) * 1099511628211ULL;
    }
    void add(const IrTempStru& reading) {
        add(reading.status, std::strlen(reading.status));
        add(&reading.ad, sizeof reading.ad);
        add(&reading.temp, sizeof reading.temp);
    }
    std::uint64_t value() const { return m_value; }

private:
    std::uint64_t m_value = 14695981039346656037ULL;
};

/// One round of a live view; every reading goes into the digest.
void round(FPGA& host, bool large, std::vector<unsigned short>& frame, Digest& digest) {
    if (large)
        host.fpga_read_IRAD_384(frame.data());
    else
        host.fpga_read_IRAD(frame.data());
    host.updateDeltaTemp();
    const auto scale = static_cast<unsigned short>(large ? 24 : 10);
    for (unsigned short i = 0; i < 5; ++i) {
        _fpga_point at{static_cast<unsigned short>((2 + 3 * i) * scale),
                       static_cast<unsigned short>((2 + 2 * i) * scale)};
        IrTempStru reading{};
        host.getSpotTemp(i % 4, 0, PARA_SYSTEM, TempSetup{}, at, reading);
        digest.add(reading);
    }
    _area part{{scale, scale, static_cast<unsigned short>(8 * scale),
                static_cast<unsigned short>(8 * scale)}};
    _area_val values{};
    Area_Temp readings{};
    host.getAreaTemp(6, part, PARA_SYSTEM, TempSetup{}, values, readings);
    digest.add(readings.tempMax);
    digest.add(readings.tempMin);
    digest.add(readings.tempAvg);
    digest.add(frame.data(), frame.size() * sizeof frame[0]);
}

} // namespace

int main(int argc, char** argv) {
    const int frames = argc > 1 ? std::atoi(argv[1]) : 0;
    const bool large = argc < 3 || std::strcmp(argv[2], "160") != 0;
    const int perSecond = argc > 3 ? std::atoi(argv[3]) : 0;
    if (frames < 1 || perSecond < 0) {
        std::fputs("usage: recordbench FRAMES [384|160 [PER_SECOND]]\n", stderr);
        return 3;
    }
    FPGA host;
    host.init();
    usleep(500000); // the core calibrates
    std::vector<unsigned short> frame(large ? 384U * 288U : 160U * 120U);
    Digest digest;
    std::vector<std::int64_t> busy;
    busy.reserve(static_cast<std::size_t>(frames));
    const std::int64_t processorBefore = now(CLOCK_PROCESS_CPUTIME_ID);
    const std::int64_t start = now(CLOCK_MONOTONIC);
    for (int i = 0; i < frames; ++i) {
        if (perSecond > 0)
            waitUntil(start + i * (second / perSecond));
        const std::int64_t began = now(CLOCK_MONOTONIC);
        round(host, large, frame, digest);
        busy.push_back(now(CLOCK_MONOTONIC) - began);
    }
    const std::int64_t processor = now(CLOCK_PROCESS_CPUTIME_ID) - processorBefore;
    std::sort(busy.begin(), busy.end());
    std::printf("digest %016llx\n", static_cast<unsigned long long>(digest.value()));
    std::fprintf(stderr, "a round: %.3f ms of processor time, busy %.3f ms (median)\n",
                 static_cast<double>(processor) * 1e-6 / frames,
                 static_cast<double>(busy[busy.size() / 2]) * 1e-6);
    return 0;
}
