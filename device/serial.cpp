#include "serial.h"

#include "../core/truncate.h"
#include "frame.h"
#include "serial_private.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <termios.h>
#include <unistd.h>

namespace frame = irmcore::frame;

int g_writeData_length = 0;
int g_readData_length = 0;

PendingCommand s_command{};

namespace {

constexpr int maxEmptyReads = 200;

/// Empty reads of the current `readData`.
int s_readRetry = 0;

/// The descriptor that `closeSerial` detached.
int s_savedFd = -1;

struct Speed {
    int baud;
    speed_t constant;
};
constexpr std::array<Speed, 15> speeds{{{115200, B115200},
                                        {38400, B38400},
                                        {19200, B19200},
                                        {9600, B9600},
                                        {4800, B4800},
                                        {2400, B2400},
                                        {1200, B1200},
                                        {300, B300},
                                        {38400, B38400},
                                        {19200, B19200},
                                        {9600, B9600},
                                        {4800, B4800},
                                        {2400, B2400},
                                        {1200, B1200},
                                        {300, B300}}};

int refuse(const char* message) {
    std::fputs(message, stderr);
    return -1;
}

} // namespace

Serial::Serial(FPGA* fpga, const char* path)
    : m_path(path), m_fd(-1), m_sendBuf(nullptr), m_recvBuf(nullptr), m_thread(), m_stop(false),
      m_fpga(fpga), m_private(new Private) {
    errno = EFAULT; // a null path's reason
    m_fd = path == nullptr ? -1 : ::open(path, O_RDWR | O_NOCTTY);
    m_private->port = m_fd;
    if (m_fd < 0) {
        std::perror("open device failed");
    } else {
        set_speed(115200);
        set_Parity(8, 1, 'N');
    }
    m_sendBuf = new unsigned char[frame::bufferBytes]{};
    m_recvBuf = new unsigned char[frame::bufferBytes]{};
    // What an earlier link left unsent is not this one's to send.
    s_command.filled = false;
    const auto body = [](void* self) { return workThread(static_cast<Serial*>(self)); };
    const int refused = pthread_create(&m_thread, nullptr, body, this);
    m_private->started = refused == 0;
    if (!m_private->started) {
        errno = refused;
        std::perror("create pthread failed");
    }
}

Serial::~Serial() {
    m_stop = true;
    if (m_private->started) {
        while (!letWorkerSee()) {
        }
        wake();
        pthread_join(m_thread, nullptr);
    }
    if (m_private->port >= 0)
        ::close(m_private->port);
    s_savedFd = -1;
    delete[] m_sendBuf;
    delete[] m_recvBuf;
    delete m_private;
}

void Serial::set_speed(int baud) {
    termios attributes{};
    ::tcgetattr(m_fd, &attributes);
    for (const Speed& speed : speeds) {
        if (speed.baud != baud)
            continue;
        ::tcflush(m_fd, TCIOFLUSH);
        ::cfsetispeed(&attributes, speed.constant);
        ::cfsetospeed(&attributes, speed.constant);
        attributes.c_cflag |= CLOCAL | CREAD;
        if (::tcsetattr(m_fd, TCSANOW, &attributes) != 0) {
            std::perror("tcsetattr m_fd");
            return;
        }
        ::tcflush(m_fd, TCIOFLUSH);
    }
}

int Serial::set_Parity(int databits, int stopbits, int parity) {
    termios attributes{};
    if (::tcgetattr(m_fd, &attributes) != 0) {
        std::perror("SetupSerial 1");
        return -1;
    }
    const auto clear = [](tcflag_t& flags, tcflag_t bits) { flags &= ~bits; };

    clear(attributes.c_cflag, CSIZE);
    switch (databits) {
    case 7:
        attributes.c_cflag |= CS7;
        break;
    case 8:
        attributes.c_cflag |= CS8;
        break;
    default:
        return refuse("Unsupported data size\n");
    }

    clear(attributes.c_iflag, INPCK);
    switch (parity) {
    case 'n':
    case 'N':
        clear(attributes.c_cflag, PARENB);
        break;
    case 'o':
    case 'O':
        attributes.c_cflag |= PARODD | PARENB;
        attributes.c_iflag |= INPCK;
        break;
    case 'e':
    case 'E':
        attributes.c_cflag |= PARENB;
        clear(attributes.c_cflag, PARODD);
        attributes.c_iflag |= INPCK;
        break;
    case 's':
    case 'S':
        clear(attributes.c_cflag, PARENB | CSTOPB);
        break;
    default:
        return refuse("Unsupported parity\n");
    }

    switch (stopbits) {
    case 1:
        clear(attributes.c_cflag, CSTOPB);
        break;
    case 2:
        attributes.c_cflag |= CSTOPB;
        break;
    default:
        return refuse("Unsupported stop bits\n");
    }

    // Nothing holds bytes back or changes them, whatever an earlier user of the port set up.
    clear(attributes.c_iflag, IXON | IXOFF | ICRNL | INLCR | IGNCR | ISTRIP | PARMRK | BRKINT);
    clear(attributes.c_cflag, CRTSCTS); // a line that nobody drives would hold every write
    ::tcflush(m_fd, TCIFLUSH);
    clear(attributes.c_lflag, ICANON | ECHO | ECHOE | ISIG);
    clear(attributes.c_oflag, OPOST);
    attributes.c_cc[VTIME] = 1; // tenths of a second of silence that end a read
    attributes.c_cc[VMIN] = 0;
    if (::tcsetattr(m_fd, TCSANOW, &attributes) != 0) {
        std::perror("SetupSerial 3");
        return -1;
    }
    return 0;
}

int Serial::packData(const Data_t& d) {
    if (d.len > frame::maxPayload)
        return 0;
    g_writeData_length = static_cast<int>(frame::build(m_sendBuf, d.cmd, d.data, d.len));
    return g_writeData_length;
}

unsigned char Serial::generateSum(unsigned char* p, int n) {
    return p == nullptr || n <= 0 ? 0 : frame::checksum(p, static_cast<std::size_t>(n));
}

int Serial::unpackData(unsigned char*, int len) { return frame::findReply(m_recvBuf, len); }

int Serial::writeData(const void* buf, const int& len) {
    errno = EINVAL; // a refused argument's reason
    const ssize_t n =
        buf == nullptr || len < 0 ? -1 : ::write(m_fd, buf, static_cast<std::size_t>(len));
    if (n < 0) {
        std::perror("write serial failed");
        return -1;
    }
    return static_cast<int>(n);
}

int Serial::readData(void* buf, int len) {
    const int wanted = std::clamp(len, 0, static_cast<int>(frame::bufferBytes));
    if (buf != nullptr)
        std::memset(buf, 0, static_cast<std::size_t>(wanted));
    s_readRetry = 0;
    int got = 0;
    while (got < wanted && s_readRetry <= maxEmptyReads && !m_stop) {
        const ssize_t n = ::read(m_fd, m_recvBuf + got, static_cast<std::size_t>(wanted - got));
        if (n > 0)
            got += static_cast<int>(n);
        else
            ++s_readRetry;
    }
    return got;
}

void Serial::closeSerial() {
    s_savedFd = m_fd;
    m_fd = -1;
}

void Serial::restoreSerial() { m_fd = s_savedFd; }

void* Serial::workThread(Serial* s) {
    if (s != nullptr)
        s->work();
    return nullptr;
}

void Serial::work() {
    m_mutex.lock();
    for (;;) {
        while (!s_command.filled && !m_private->resend && !m_stop)
            m_mutex.wait();
        if (m_stop && !s_command.filled)
            break;
        if (s_command.filled)
            s_command.filled = false;
        else
            m_private->resend = false;

        m_private->busy = true;
        const int length =
            packData({static_cast<std::uint8_t>(s_command.code & 0xFF),
                      static_cast<std::uint8_t>(s_command.length & 0xFF), s_command.payload});
        writeData(m_sendBuf, length);
        if (!m_stop)
            readData(m_recvBuf, s_command.replyLength);
        m_private->busy = false;

        m_mutex.unlock();
        sched_yield();
        m_mutex.lock();
    }
    m_mutex.unlock();
}

/// Waits until the worker cannot miss what was set before the call: either nobody holds the lock,
/// so it waits and will be woken, or looks later; or the lock's holder is not looking at the flags.
/// False after a while in vain, which is right for a caller that holds the lock itself.
bool Serial::letWorkerSee() {
    constexpr int attempts = 100000;
    for (int i = 0; i < attempts; ++i) {
        if (m_private->busy)
            return true;
        if (m_mutex.tryLock()) {
            m_mutex.unlock();
            return true;
        }
        sched_yield();
    }
    return false;
}

int Serial::wake() {
    sched_yield();
    m_mutex.broadcast();
    sched_yield();
    return m_mutex.broadcast();
}

int Serial::signalThread() {
    m_private->resend = true;
    letWorkerSee();
    return wake();
}
