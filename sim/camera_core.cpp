// The detector core: its settings, faults and records.

#include "camera.h"

#include <utility>

namespace irmsim {

namespace {

using Hold = std::lock_guard<std::mutex>;

} // namespace

Camera& Camera::coreAnswers(const CoreAnswers& answers) {
    return with([&] { m_core.setAnswers(answers); });
}

Camera& Camera::coreSilent(bool silent) {
    return with([&] { m_core.faults.silent = silent; });
}

Camera& Camera::coreLate(double seconds) {
    return with([&] { m_core.faults.late = timeOf(seconds); });
}

Camera& Camera::coreGarbled(int offset) {
    return with([&] { m_core.faults.garbled = offset; });
}

Camera& Camera::coreReplacedBy(CoreStandIn standIn) {
    return with([&] { m_standIn = std::move(standIn); });
}

Camera& Camera::coreSends(std::vector<std::uint8_t> bytes, double seconds) {
    return with([&] { m_port.arrive(std::move(bytes), m_clock.now() + timeOf(seconds)); });
}

Camera& Camera::corePowerUp() {
    return with([&] { m_core.powerUp(m_clock.now()); });
}

Camera& Camera::autoShutterPeriod(double seconds) {
    return with([&] { m_shutter.setPeriod(timeOf(seconds), m_clock.now()); });
}

std::vector<CoreFrame> Camera::received() const {
    const Hold hold(cameraLock());
    return {m_core.frames().begin(), m_core.frames().end()};
}

CoreCounts Camera::coreCounts() const {
    const Hold hold(cameraLock());
    return m_core.counts();
}

void Camera::clearReceived() {
    const Hold hold(cameraLock());
    m_core.clearFrames();
}

std::uint16_t Camera::coreIntTime() const {
    const Hold hold(cameraLock());
    return m_core.intTime();
}

bool Camera::coreOn() const {
    const Hold hold(cameraLock());
    return m_core.on();
}

} // namespace irmsim
