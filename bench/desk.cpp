#include "desk.h"

#include "device/frame.h"
#include "device/registers.h"

#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace {

/// Where the two devices are to be found instead.
std::string s_device = "/nonexistent";
std::string s_port = "/nonexistent";

} // namespace

/// The library's `open` too.
extern "C" [[gnu::visibility("default")]] int open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list rest;
        va_start(rest, flags);
        mode = va_arg(rest, mode_t);
        va_end(rest);
    }
    if (std::strcmp(path, "/dev/DM365-FPGA") == 0)
        path = s_device.c_str();
    else if (std::strcmp(path, "/dev/ttyS1") == 0)
        path = s_port.c_str();
    return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

namespace irmbench {

namespace reg = irmcore::reg;

Desk::Desk() : m_file(::memfd_create("irmcore-registers", MFD_CLOEXEC)) {
    fillRegisters();
    s_device = "/proc/self/fd/" + std::to_string(m_file);
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0)
        return;
    s_port = ::ptsname(m_master);
    m_port = ::open("/dev/ttyS1", O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_port < 0)
        return;
    // Nothing is echoed, whoever speaks first; the library sets the rest.
    termios raw{};
    ::tcgetattr(m_port, &raw);
    ::cfmakeraw(&raw);
    ::tcsetattr(m_port, TCSANOW, &raw);
    m_core = std::thread([this] { answer(); });
}

Desk::~Desk() {
    // The last descriptor of the host's end: the core's read fails.
    ::close(m_port);
    if (m_core.joinable())
        m_core.join();
    ::close(m_master);
    ::close(m_file);
}

void Desk::fillRegisters() const {
    std::vector<unsigned char> bytes(0x4000 + reg::frame.length, 0);
    const auto put = [&bytes](unsigned address, unsigned value) {
        bytes[address] = static_cast<unsigned char>(value & 0xFF);
        bytes[address + 1] = static_cast<unsigned char>(value >> 8 & 0xFF);
    };
    for (unsigned address = reg::frame.address; address + 1 < bytes.size(); address += 2)
        put(address, 31000 + address % 1999);
    put(reg::shutterTemp.address, 27 * 256);
    put(reg::sensorTemp.address, 28 * 256);
    put(reg::frameMax.address, 35000);
    put(reg::frameMin.address, 29000);
    put(reg::frameMaxX.address, 17);
    put(reg::frameMaxY.address, 18);
    // A mean of 32000.
    put(reg::adSum.address, 32000);
    put(reg::pixelCount.address, 1);
    put(reg::fpgaLevel.address, 29000);
    put(reg::fpgaGain.address, 700);
    put(reg::histogramMax.address, 34000);
    put(reg::histogramMin.address, 30000);
    put(reg::histogramPeak.address, 32000);
    for (const unsigned slot : {1U, 4U})
        put(reg::pointAd.at(slot).address, 33000);
    put(reg::areaMax.at(0).address, 34000);
    put(reg::areaMin.at(0).address, 31000);
    put(reg::areaAvg.at(0).address, 32000);
    if (::pwrite(m_file, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        std::abort();
}

void Desk::answer() const {
    using namespace irmcore::frame;
    std::vector<unsigned char> heard;
    for (;;) {
        unsigned char bytes[bufferBytes];
        const ssize_t n = ::read(m_master, bytes, sizeof bytes);
        if (n <= 0)
            return;
        heard.insert(heard.end(), bytes, bytes + n);
        while (heard.size() >= overhead && heard.size() >= heard[3] + overhead) {
            const unsigned char reply[replyOverhead + 2] = {0x7F, 0xA5, 9,    heard[2], 2,
                                                            0x30, 0x75, 0x11, 0x5A};
            heard.erase(heard.begin(), heard.begin() + heard[3] + static_cast<long>(overhead));
            if (::write(m_master, reply, sizeof reply) < 0)
                return;
        }
    }
}

} // namespace irmbench
