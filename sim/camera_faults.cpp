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

Camera& Camera::failCall(unsigned long n, Fault fault, Lasting lasting) {
    return with([&] {
        m_callFault = {n, fault, lasting};
        m_callFaultBegun = false;
        m_callsMet = 0;
    });
}

unsigned long Camera::callsMet() const {
    const Hold hold(cameraLock());
    return m_callsMet;
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
    if (const long error = meet(nullptr); error != 0)
        return error;
    if (!m_present)
        return -ENOENT;
    return m_plugged ? 0 : -ENODEV;
}

long Camera::seekCall() {
    ++m_calls.lseek;
    if (m_replay)
        return m_replay->seek();
    if (const long error = meet(nullptr); error != 0)
        return error;
    const auto fault = strike(m_seekFault);
    return fault ? -fault->error : 0;
}

template <typename Transfer>
long Camera::transferred(std::size_t len, Transfer transfer) {
    catchUp();
    const long error = meet(&len);
    const auto fault = strike(m_transferFault);
    if (!m_plugged)
        return -ENODEV;
    if (error != 0)
        return error;
    if (fault && fault->error != 0)
        return -fault->error;
    return transfer(fault ? fault->of(len) : len);
}

long Camera::closeCall() {
    ++m_calls.close;
    return m_replay ? 0 : meet(nullptr);
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

long Camera::meet(std::size_t* len) {
    ++m_callsMet;
    Pending& pending = m_callFault;
    if (pending.countdown == 0 || --pending.countdown > 0)
        return 0;
    const Fault& fault = pending.fault;
    const bool strikes = fault.error != 0 || (len != nullptr && fault.of(*len) < *len);
    m_callFaultBegun = m_callFaultBegun || strikes;
    if (pending.lasting == Lasting::fromThenOn && m_callFaultBegun)
        pending.countdown = 1;
    if (!strikes)
        return 0;
    ++m_faults;
    if (fault.error == 0)
        *len = fault.of(*len);
    return -fault.error;
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
