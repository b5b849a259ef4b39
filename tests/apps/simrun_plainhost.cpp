// A host without irmcore and without Qt, as the tests of `irmcore sim run` need one: it carries
// out the words that it is given and prints what came of them.
//
//     r ADDRESS   read a word there         f N   read N frames, print a digest of their bytes
//     s SECONDS   sleep                     q 0   ask the core for the VSK, print its answer
//     e CODE      exit at once              k N   kill itself by a signal
//     w 0         wait for SIGTERM, then exit with 7
//     p N         fork N children that close the device while a thread reads it, print those that
//     end c 0         close the device by close_range, open a plain file, print what it reads
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

bool readAt(off_t address, std::vector<std::uint8_t>& bytes) {
    static int device = -1;
    if (device < 0)
        device = ::open("/dev/DM365-FPGA", O_RDWR);
    return device >= 0 && ::lseek(device, address, SEEK_SET) == address &&
           ::read(device, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

void printWord(off_t address) {
    std::vector<std::uint8_t> bytes(2);
    if (readAt(address, bytes))
        std::printf("%d\n", bytes[0] + 256 * bytes[1]);
    else
        std::printf("%s\n", std::strerror(errno));
}

void printDigest(long frames) {
    std::vector<std::uint8_t> part(27648);
    std::uint64_t digest = 14695981039346656037U; // FNV-1a
    for (long i = 0; i < 8 * frames && readAt(0x4000, part); ++i)
        for (const std::uint8_t byte : part)
            digest = (digest ^ byte) * 1099511628211U;
    std::printf("%016llx\n", static_cast<unsigned long long>(digest));
}

void printAnswer() {
    const int port = ::open("/dev/ttyS1", O_RDWR);
    std::array<unsigned char, 64> bytes{0xFF, 0xA5, 0x77, 0x00, 0x77, 0x5A};
    const bool sent = port >= 0 && ::write(port, bytes.data(), 6) == 6;
    const ssize_t n = !sent ? -1 : ::read(port, bytes.data(), bytes.size());
    for (ssize_t i = 0; i < n; ++i)
        std::printf("%02x", bytes[static_cast<std::size_t>(i)]);
    std::puts(n < 0 ? std::strerror(errno) : "");
}

void forkWhileReading(long children) {
    std::atomic<bool> done{false};
    std::thread reader([&done] {
        std::vector<std::uint8_t> part(27648);
        while (!done)
            readAt(0x4000, part);
    });
    long ended = 0;
    for (long i = 0; i < children; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            for (int fd = 3; fd < 20; ++fd)
                ::close(fd);
            ::_exit(0);
        }
        int status = -1;
        ended += ::waitpid(child, &status, 0) == child && status == 0 ? 1 : 0;
    }
    done = true;
    reader.join();
    std::printf("%ld\n", ended);
}

void readAfterCloseRange() {
    std::vector<std::uint8_t> word(2);
    readAt(0x30, word);
    ::close_range(3, 20, 0);
    const int fd = ::open("/proc/self/comm", O_RDONLY);
    char text[64]{};
    const bool read = ::read(fd, text, sizeof text - 1) > 0;
    std::printf("%d %s", fd, read ? text : "nothing\n");
}

void waitForTerm() {
    std::signal(SIGTERM, [](int) { ::_exit(7); });
    std::puts("waiting");
    std::fflush(stdout);
    for (;;)
        ::pause();
}

} // namespace

int main(int argc, char** argv) {
    for (int i = 1; i + 1 < argc; i += 2) {
        const char what = argv[i][0];
        const long number = std::strtol(argv[i + 1], nullptr, 0);
        if (what == 'r')
            printWord(number);
        else if (what == 'f')
            printDigest(number);
        else if (what == 's')
            ::usleep(static_cast<useconds_t>(std::strtod(argv[i + 1], nullptr) * 1e6));
        else if (what == 'q')
            printAnswer();
        else if (what == 'p')
            forkWhileReading(number);
        else if (what == 'c')
            readAfterCloseRange();
        else if (what == 'w')
            waitForTerm();
        else if (what == 'e')
            return static_cast<int>(number);
        std::fflush(stdout);
        if (what == 'k')
            std::raise(static_cast<int>(number));
    }
}
