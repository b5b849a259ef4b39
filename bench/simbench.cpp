// How fast the simulated camera is for a host without irmcore, started as any other host:
//
//     irmcore sim run [OPTIONS] -- irmcore-simbench [hours [rate]]
//
// Without arguments: what one register read and one 384x288 frame take, of many batches the fastest
// and the middle one. With them: so many simulated hours of a host that reads the temperatures, a
// spot and a frame `rate` (9) times a second, of a camera that delivers 25, and sleeps in between.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace {

int device = -1;

void readAt(off_t address, void* bytes, std::size_t count) {
    if (::lseek(device, address, SEEK_SET) != address ||
        ::read(device, bytes, count) != static_cast<ssize_t>(count)) {
        std::perror("reading the device");
        std::exit(2);
    }
}

void readWord(off_t address) {
    std::array<std::uint8_t, 2> bytes{};
    readAt(address, bytes.data(), bytes.size());
}

void readFrame() {
    constexpr off_t place = 0x4000;
    static std::array<std::uint8_t, 27648> part{};
    for (int i = 0; i < 8; ++i)
        readAt(place, part.data(), part.size());
}

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

template <typename Run>
void report(const char* what, int batches, int runs, Run run) {
    std::vector<double> took;
    for (int batch = 0; batch < batches; ++batch) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < runs; ++i)
            run();
        took.push_back(secondsSince(start) / runs * 1e6);
    }
    std::sort(took.begin(), took.end());
    std::printf("%-28s %9.3f us at best, %9.3f us in the middle\n", what, took.front(),
                took[took.size() / 2]);
}

void live(double hours, double rate) {
    const auto frames = static_cast<long>(hours * 3600 * rate);
    // What a frame of 25 a second leaves of the period.
    const double pause = std::max(1 / rate - 0.04, 0.0);
    const auto start = std::chrono::steady_clock::now();
    for (long i = 0; i < frames; ++i) {
        readWord(0x1C);
        readWord(0x1E);
        readWord(0x1004);
        readFrame();
        if (pause > 0)
            ::usleep(static_cast<useconds_t>(pause * 1e6));
    }
    const double took = secondsSince(start);
    std::printf("%ld frames, %.1f simulated hours in %.1f s: %.0f times as fast\n", frames, hours,
                took, hours * 3600 / took);
}

} // namespace

int main(int argc, char** argv) {
    device = ::open("/dev/DM365-FPGA", O_RDWR);
    if (device < 0) {
        std::perror("/dev/DM365-FPGA");
        return 2;
    }
    const std::array<std::uint8_t, 4> spot{192, 0, 144, 0};
    if (::lseek(device, 0x1000, SEEK_SET) < 0 || ::write(device, spot.data(), spot.size()) != 4)
        return 2;
    if (argc > 1) {
        live(std::strtod(argv[1], nullptr), argc > 2 ? std::strtod(argv[2], nullptr) : 9.0);
        return 0;
    }
    report("temperature register", 300, 2000, [] { readWord(0x1C); });
    report("frame maximum, same frame", 300, 2000, [] { readWord(0x40); });
    report("spot, same frame", 300, 2000, [] { readWord(0x1004); });
    report("frame in eight parts", 300, 20, readFrame);
    return 0;
}
