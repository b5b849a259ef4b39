// The serial port as the C calls see it, virtual or a pty.

#include "camera.h"

#include "replayport.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace irmsim {

namespace {

using Hold = std::lock_guard<std::mutex>;

} // namespace

Camera& Camera::serialOnPty(bool on) {
    stopPty();
    with([&] { m_onPty = on; });
    if (isInterposed(*this))
        startPty();
    return *this;
}

void Camera::startPty() {
    if (!m_onPty)
        return;
    auto pty = PtyPort::start([this](const std::uint8_t* bytes, std::size_t n) {
        const Hold hold(cameraLock());
        return receive(bytes, n);
    });
    if (pty == nullptr)
        std::perror("no pty for the simulated serial port");
    const Hold hold(cameraLock());
    m_pty = std::move(pty);
}

void Camera::stopPty() {
    std::unique_ptr<PtyPort> gone;
    {
        const Hold hold(cameraLock());
        gone = std::move(m_pty);
    }
    // Its thread may be waiting for the lock: it ends without us holding it.
}

Camera& Camera::portPresent(bool present) {
    return with([&] { m_portPresent = present; });
}

Camera& Camera::unplugPort() {
    return with([&] { m_portPlugged = false; });
}

Camera& Camera::plugInPort() {
    return with([&] { m_portPlugged = true; });
}

Camera& Camera::failPortTransfer(unsigned long n, Fault fault, Lasting lasting) {
    return with([&] { m_portFault = {n, fault, lasting}; });
}

Camera& Camera::failPortSetup(unsigned long n, int error, Lasting lasting) {
    return with([&] { m_setupFault = {n, Fault::refused(error), lasting}; });
}

termios Camera::portAttributes() const {
    const Hold hold(cameraLock());
    return m_port.attributes;
}

PortCalls Camera::portCalls() const {
    const Hold hold(cameraLock());
    return m_portCalls;
}

void Camera::clearPortCalls() {
    const Hold hold(cameraLock());
    m_portCalls = PortCalls{};
}

std::vector<Reply> Camera::receive(const std::uint8_t* bytes, std::size_t n) {
    catchUp();
    if (m_standIn)
        return m_standIn(bytes, n);
    std::vector<Reply> replies = m_core.receive(bytes, n, m_clock.now());
    catchUp(); // a range, a shutter that closes
    return replies;
}

long Camera::openPortCall(int flags) {
    ++m_portCalls.open;
    m_portCalls.openFlags = flags;
    if (m_replayPort) {
        m_port.flushInput(m_clock.now());
        return m_replayPort->open();
    }
    if (const long error = meet(nullptr); error != 0)
        return error;
    if (!m_portPresent)
        return -ENOENT;
    if (!m_portPlugged)
        return -EIO;
    if (m_onPty && m_pty == nullptr)
        return -ENXIO;
    m_port.flushInput(m_clock.now());
    return 0;
}

long Camera::passPort(Pending& pending, std::size_t* len) {
    const long error = meet(len);
    const auto fault = strike(pending);
    if (!m_portPlugged)
        return -EIO;
    if (error != 0)
        return error;
    if (fault && fault->error != 0)
        return -fault->error;
    if (fault && len != nullptr)
        *len = fault->of(*len);
    return 0;
}

Camera::PortRead Camera::readPortCall(void* buf, std::size_t len, bool blocking,
                                      std::optional<Time>& deadline) {
    if (!deadline) {
        ++m_portCalls.read;
        if (const long error = passPort(m_portFault, &len); error != 0)
            return {error};
        if (len == 0)
            return {0};
        if (buf == nullptr)
            return {-EFAULT};
        if (m_replayPort && !m_port.nextDue() && m_replayPort->readError() != 0)
            return {m_replayPort->readError()};
        deadline = m_clock.now() + (blocking ? m_port.patience() : Time(0));
    } else if (!m_portPlugged) {
        return {-EIO};
    }
    const Time until = std::min(m_port.nextDue().value_or(*deadline), *deadline);
    if (const Time left = until - m_clock.now(); left > Time(0)) {
        if (m_clock.tied())
            return {0, std::max(m_clock.onTheWall(left), Time(1))};
        m_clock.pass(left);
        catchUp();
    }
    const std::size_t n = m_port.take(static_cast<std::uint8_t*>(buf), len, m_clock.now());
    if (n > 0)
        return {static_cast<long>(n)};
    ++m_portCalls.emptyReads;
    return {blocking ? 0 : -EAGAIN};
}

long Camera::writePortCall(const void* buf, std::size_t len) {
    ++m_portCalls.write;
    if (buf == nullptr && len > 0)
        return -EFAULT;
    if (const long error = passPort(m_portFault, &len); error != 0)
        return error;
    constexpr std::size_t most = 4096; // as a terminal's buffer
    len = std::min(len, most);
    if (m_replayPort)
        return replayedPortWrite(static_cast<const std::uint8_t*>(buf), len);
    for (Reply& reply : receive(static_cast<const std::uint8_t*>(buf), len))
        m_port.arrive(std::move(reply.bytes), m_clock.now() + reply.after);
    return static_cast<long>(len);
}

long Camera::attributesCall() {
    ++m_portCalls.attributes;
    if (m_replayPort)
        return m_replayPort->attributes();
    return passPort(m_setupFault, nullptr);
}

void Camera::setAttributesCall(int action, const termios& attributes) {
    m_port.attributes = attributes;
    if (action == TCSAFLUSH)
        m_port.flushInput(m_clock.now());
}

long Camera::flushCall(int queue) {
    ++m_portCalls.flush;
    const long error = meet(nullptr);
    if (!m_portPlugged)
        return -EIO;
    if (error != 0)
        return error;
    if (queue != TCIFLUSH && queue != TCOFLUSH && queue != TCIOFLUSH)
        return -EINVAL;
    if (queue != TCOFLUSH) // what is written has gone out at once
        m_port.flushInput(m_clock.now());
    return 0;
}

long Camera::ptyCall(bool write, std::size_t& len) {
    ++(write ? m_portCalls.write : m_portCalls.read);
    return passPort(m_portFault, &len);
}

long Camera::closePortCall() {
    ++m_portCalls.close;
    return m_replayPort ? 0 : meet(nullptr);
}

void Camera::emptyPtyRead() { ++m_portCalls.emptyReads; }

} // namespace irmsim
