#include "camera.h"

#include "replay.h"
#include "replayport.h"

#include <array>
#include <cstdio>
#include <utility>

namespace irmsim {

namespace {

/// The lens code of each lens index.
constexpr std::array<unsigned, 7> lensCodes{3, 5, 1, 6, 2, 4, 0};

using Hold = std::lock_guard<std::mutex>;

} // namespace

Camera::Camera()
    : m_scene(Scene::uniform(160, 120, 25.0)), m_board(m_scene, m_detector, m_clock),
      m_core(m_detector, m_shutter) {}

Camera::~Camera() { uninstall(); }

bool Camera::install() {
    if (!interposeCamera(*this)) {
        std::fputs("another simulated camera is installed already\n", stderr);
        return false;
    }
    startPty();
    return true;
}

void Camera::uninstall() {
    withdrawCamera(*this);
    stopPty();
}

Camera& Camera::scene(Scene scene) {
    return with([&] {
        m_scenario.stage.setBackdrop(scene);
        m_scene = m_scenario.stage.picture();
    });
}

Camera& Camera::range(int range) {
    return with([&] {
        m_warmUp.reset();
        m_detector.setRange(range);
        if (range >= 0 && range < static_cast<int>(rangeIntTimes.size()))
            m_core.setIntTime(rangeIntTimes[static_cast<std::size_t>(range)]);
        m_detector.setTemperatures(m_detector.referenceTemp(), m_detector.referenceTemp());
        m_detector.calibrate();
    });
}

Camera& Camera::insideTemp(double celsius) {
    return with([&] {
        m_warmUp.reset();
        m_detector.setTemperatures(celsius, celsius);
        m_detector.calibrate();
    });
}

Camera& Camera::temperatures(double shutter, double sensor) {
    return with([&] { setTemperatures(shutter, sensor); });
}

void Camera::setTemperatures(double shutter, double sensor) {
    m_warmUp.reset();
    m_detector.setTemperatures(shutter, sensor);
}

Camera& Camera::calibrate() {
    return with([&] { m_detector.calibrate(); });
}

Camera& Camera::shutterClosed(bool closed) {
    return with([&] { m_shutterHeld = closed; });
}

Camera& Camera::surroundings(const Surroundings& truth) {
    return with([&] { m_detector.setSurroundings(truth); });
}

Camera& Camera::driftLaw(DriftLaw law) {
    return with([&] { m_detector.setDriftLaw(law); });
}

Camera& Camera::modifySlope(bool on) {
    return with([&] { m_detector.setModifySlope(on); });
}

Camera& Camera::noise(double sigmaAd, std::uint64_t seed) {
    return with([&] { m_detector.setNoise(sigmaAd, seed); });
}

Camera& Camera::lens(int index) {
    return with([&] { setLens(index); });
}

void Camera::setLens(int index) {
    if (index < 0 || index >= static_cast<int>(lensCodes.size()))
        return;
    m_detector.setLens(index);
    m_board.setLensCode(lensCodes[static_cast<std::size_t>(index)]);
}

Camera& Camera::lensCode(unsigned code) {
    return with([&] { m_board.setLensCode(code); });
}

Camera& Camera::lensVariant(bool on) {
    return with([&] { m_board.setLensVariant(on); });
}

Camera& Camera::detectorPower(bool on) {
    return with([&] { m_board.setPower(on); });
}

double Camera::truthAt(int x, int y) const {
    const Hold hold(cameraLock());
    return m_scene.at(x, y);
}

double Camera::truthOf(double ad) const {
    const Hold hold(cameraLock());
    return m_detector.temperatureOf(ad);
}

} // namespace irmsim
