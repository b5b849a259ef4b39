// The camera's time, and what happens by itself as it passes.

#include "camera.h"
#include "settle.h"

namespace irmsim {

namespace {

using Hold = std::lock_guard<std::mutex>;

} // namespace

double Camera::seconds() const {
    const Hold hold(cameraLock());
    return secondsOf(m_clock.now());
}

Camera& Camera::advance(double seconds) {
    settle(timeOf(seconds));
    return with([&] { m_clock.skip(timeOf(seconds)); });
}

Camera& Camera::tieToWallClock(double factor) {
    return with([&] { m_clock.tie(factor); });
}

Camera& Camera::frameRate(double hertz) {
    return with([&] { m_clock.setFrameRate(hertz); });
}

Camera& Camera::warmUp(const WarmUp& course) {
    return with([&] {
        m_warmUp = course;
        m_warmUpStart = m_clock.now();
        follow(m_warmUpStart);
        m_detector.calibrate();
    });
}

Camera& Camera::nextFrame() {
    return with([&] { m_board.nextFrame(); });
}

unsigned long Camera::calibrations() const {
    const Hold hold(cameraLock());
    return m_calibrations;
}

Time Camera::wallTimeOfSleep(Time time) const {
    if (m_clock.tied())
        return m_clock.onTheWall(time);
    return m_pty != nullptr ? time : Time(0);
}

void Camera::sleepCall(Time time) {
    m_clock.pass(time);
    catchUp();
}

void Camera::catchUp() {
    const Time now = m_clock.now();
    if (m_scenario.due() <= now)
        playScenario(now);
    catchUpTo(now);
}

void Camera::catchUpTo(Time now) {
    while (const auto done = m_shutter.takeDone(now)) {
        follow(*done);
        m_detector.calibrate();
        ++m_calibrations;
    }
    // Tied to the wall the time is never twice the same: as often as frames come is enough then.
    if (m_clock.tied() ? m_clock.onTheWall(now - m_followed) >= m_clock.framePeriod()
                       : now != m_followed)
        follow(now);
    const bool closed = m_shutterHeld || m_shutter.closed();
    if (m_detector.shutterClosed() != closed)
        m_detector.setShutterClosed(closed);
}

void Camera::follow(Time time) {
    m_followed = time;
    if (!m_warmUp)
        return;
    const double since = secondsOf(time - m_warmUpStart);
    const double shutter = m_warmUp->shutterAt(since);
    const double sensor = m_warmUp->sensorAt(since);
    if (shutter != m_detector.shutterTemp() || sensor != m_detector.sensorTemp())
        m_detector.setTemperatures(shutter, sensor);
}

} // namespace irmsim
