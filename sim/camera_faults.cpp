// The FPGA device as the C calls see it: faults, log and counts.

#include "camera.h"
#include "device/registers.h"
#include "replay.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace irmsim {

namespace {

constexpr std::size_t loggedTransfers = 100000;
constexpr std::size_t loggedBytes = 2048;

using Hold = std::lock_guard<std::mutex>;

} // namespace

Camera& Camera::devicePresent(bool present) {
    return with([&] { m_present = present; });
}

Camera& Camera::unplug() {
    return with([&] { m_plugged = false; });
}

Camera& Camera::plugIn() {
    return with([&] { m_plugged = true; });
}

Camera& Camera::failTransfer(unsigned long n, Fault fault, Lasting lasting) {
    return with([&] { m_transferFault = {n, fault, lasting}; });
}

Camera& Camera::failSeek(unsigned long n, int error, Lasting lasting) {
    return with([&] { m_seekFault = {n, Fault::refused(error), lasting}; });
}

unsigned long Camera::faults() const {
    const Hold hold(cameraLock());
    return m_faults;
}

Camera& Camera::poke(std::uint32_t address, std::vector<std::uint8_t> bytes) {
    return with([&] { m_board.poke(address, std::move(bytes)); });
}

Camera& Camera::unpoke(std::uint32_t address) {
    return with([&] { m_board.unpoke(address); });
}

Camera& Camera::logging(bool on) {
    return with([&] { m_logging = on; });
}

std::vector<Transfer> Camera::log() const {
    const Hold hold(cameraLock());
    return {m_log.begin(), m_log.end()};
}

void Camera::clearLog() {
    const Hold hold(cameraLock());
    m_log.clear();
}

Calls Camera::calls() const {
    const Hold hold(cameraLock());
    return m_calls;
}

void Camera::clearCalls() {
    const Hold hold(cameraLock());
    m_calls = Calls{};
}

long Camera::openCall(int flags) {
    ++m_calls.open;
    m_calls.openFlags = flags;
    if (m_replay)
        return m_replay->open();
    if (!m_present)
        return -ENOENT;
    return m_plugged ? 0 : -ENODEV;
}

long Camera::seekCall() {
    ++m_calls.lseek;
    if (m_replay)
        return m_replay->seek();
    const auto fault = strike(m_seekFault);
    return fault ? -fault->error : 0;
}

template <typename Transfer>
long Camera::transferred(std::size_t len, Transfer transfer) {
    catchUp();
    const auto fault = strike(m_transferFault);
    if (!m_plugged)
        return -ENODEV;
    if (fault && fault->error != 0)
        return -fault->error;
    return transfer(fault ? std::min(fault->bytes, len) : len);
}

long Camera::readCall(std::uint32_t address, void* buf, std::size_t len) {
    ++m_calls.read;
    if (buf == nullptr && len > 0)
        return -EFAULT;
    if (m_replay)
        return m_replay->read(address, buf, len);
    const long result =
        transferred(len, [&](std::size_t n) { return m_board.read(address, buf, n); });
    if (result < 0 && address == irmcore::reg::frame.address)
        m_board.restartFrame();
    catchUp(); // a frame takes time
    note(false, address, buf, len, result);
    return result;
}

long Camera::writeCall(std::uint32_t address, const void* buf, std::size_t len) {
    ++m_calls.write;
    if (buf == nullptr && len > 0)
        return -EFAULT;
    if (m_replay)
        return m_replay->write(address, buf, len);
    const long result =
        transferred(len, [&](std::size_t n) { return m_board.write(address, buf, n); });
    note(true, address, buf, len, result);
    return result;
}

std::optional<Fault> Camera::strike(Pending& pending) {
    if (pending.countdown == 0 || --pending.countdown > 0)
        return std::nullopt;
    if (pending.lasting == Lasting::fromThenOn)
        pending.countdown = 1;
    ++m_faults;
    return pending.fault;
}

void Camera::note(bool write, std::uint32_t address, const void* bytes, std::size_t len,
                  long result) {
    if (!m_logging)
        return;
    if (m_log.size() == loggedTransfers)
        m_log.pop_front();
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    const std::size_t count =
        result > 0 ? std::min(static_cast<std::size_t>(result), loggedBytes) : 0;
    m_log.push_back({write, address, len, {first, first + count}, result});
}

} // namespace irmsim
