// A host without irmcore and without Qt, as the tests of `irmcore sim run` need one: it carries
// out the words that it is given and prints what came of them.
//
//     r ADDRESS   read a word there         f N   read N frames, print a digest of their bytes
//     s SECONDS   sleep                     d     print the working directory
//     e CODE      exit at once              k N   kill itself by a signal
//     w           wait for SIGTERM, then exit with 7
//     x PROGRAM.. execute a program         c PROGRAM.. run a program as a child
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

int device = -1;

bool readAt(off_t address, void* bytes, std::size_t count) {
    if (device < 0)
        device = ::open("/dev/DM365-FPGA", O_RDWR);
    return device >= 0 && ::lseek(device, address, SEEK_SET) == address &&
           ::read(device, bytes, count) == static_cast<ssize_t>(count);
}

void printWord(off_t address) {
    std::array<std::uint8_t, 2> bytes{};
    if (readAt(address, bytes.data(), bytes.size()))
        std::printf("%d\n", bytes[0] + 256 * bytes[1]);
    else
        std::printf("%s\n", std::strerror(errno));
}

void printDigest(long frames) {
    constexpr off_t place = 0x4000;
    std::vector<std::uint8_t> part(27648);
    std::uint64_t digest = 14695981039346656037U; // FNV-1a
    for (long i = 0; i < 8 * frames; ++i) {
        if (!readAt(place, part.data(), part.size()))
            std::memset(part.data(), 0, part.size());
        for (const std::uint8_t byte : part)
            digest = (digest ^ byte) * 1099511628211U;
    }
    std::printf("%016llx\n", static_cast<unsigned long long>(digest));
}

void waitForTerm() {
    sigset_t term;
    sigemptyset(&term);
    sigaddset(&term, SIGTERM);
    sigprocmask(SIG_BLOCK, &term, nullptr);
    std::puts("waiting");
    std::fflush(stdout);
    int signal = 0;
    sigwait(&term, &signal);
    std::exit(7);
}

} // namespace

int main(int argc, char** argv) {
    std::array<char, 4096> directory{};
    for (int i = 1; i < argc; ++i) {
        const char what = argv[i][0];
        const bool takesWord = what != 'd' && what != 'w';
        const char* word = takesWord && i + 1 < argc ? argv[++i] : "0";
        const long number = std::strtol(word, nullptr, 0);
        std::fflush(stdout);
        if (what == 'r')
            printWord(number);
        else if (what == 'f')
            printDigest(number);
        else if (what == 's')
            ::usleep(static_cast<useconds_t>(std::strtod(word, nullptr) * 1e6));
        else if (what == 'd')
            std::puts(::getcwd(directory.data(), directory.size()));
        else if (what == 'e')
            return static_cast<int>(number);
        else if (what == 'k')
            std::raise(static_cast<int>(number));
        else if (what == 'w')
            waitForTerm();
        else if (what == 'x' || ::fork() == 0) {
            ::execv(argv[i], argv + i);
            ::_exit(1);
        } else {
            ::wait(nullptr);
            break;
        }
    }
    return 0;
}
