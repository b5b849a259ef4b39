#include "camera.h"

#include "device/registers.h"
#include "interpose.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace irmsim {

namespace {

constexpr std::size_t loggedTransfers = 100000;
constexpr std::size_t loggedBytes = 2048;
/// The lens code of each lens index.
constexpr std::array<unsigned, 7> lensCodes{3, 5, 1, 6, 2, 4, 0};

using Hold = std::lock_guard<std::mutex>;

} // namespace

Camera::Camera() : m_scene(Scene::uniform(160, 120, 25.0)), m_board(m_scene, m_detector) {}

Camera::~Camera() { uninstall(); }

bool Camera::install() {
    if (interposeCamera(*this))
        return true;
    std::fputs("another simulated camera is installed already\n", stderr);
    return false;
}

void Camera::uninstall() { withdrawCamera(*this); }

Camera& Camera::scene(Scene scene) {
    const Hold hold(cameraLock());
    m_scene = std::move(scene);
    return *this;
}

Camera& Camera::range(int range) {
    const Hold hold(cameraLock());
    m_detector.setRange(range);
    m_detector.setTemperatures(m_detector.referenceTemp(), m_detector.referenceTemp());
    m_detector.calibrate();
    return *this;
}

Camera& Camera::insideTemp(double celsius) {
    const Hold hold(cameraLock());
    m_detector.setTemperatures(celsius, celsius);
    m_detector.calibrate();
    return *this;
}

Camera& Camera::temperatures(double shutter, double sensor) {
    const Hold hold(cameraLock());
    m_detector.setTemperatures(shutter, sensor);
    return *this;
}

Camera& Camera::calibrate() {
    const Hold hold(cameraLock());
    m_detector.calibrate();
    return *this;
}

Camera& Camera::shutterClosed(bool closed) {
    const Hold hold(cameraLock());
    m_detector.setShutterClosed(closed);
    return *this;
}

Camera& Camera::surroundings(const Surroundings& truth) {
    const Hold hold(cameraLock());
    m_detector.setSurroundings(truth);
    return *this;
}

Camera& Camera::driftLaw(DriftLaw law) {
    const Hold hold(cameraLock());
    m_detector.setDriftLaw(law);
    return *this;
}

Camera& Camera::modifySlope(bool on) {
    const Hold hold(cameraLock());
    m_detector.setModifySlope(on);
    return *this;
}

Camera& Camera::noise(double sigmaAd, std::uint64_t seed) {
    const Hold hold(cameraLock());
    m_detector.setNoise(sigmaAd, seed);
    return *this;
}

Camera& Camera::lens(int index) {
    const Hold hold(cameraLock());
    if (index < 0 || index >= static_cast<int>(lensCodes.size()))
        return *this;
    m_detector.setLens(index);
    m_board.setLensCode(lensCodes[static_cast<std::size_t>(index)]);
    return *this;
}

Camera& Camera::lensCode(unsigned code) {
    const Hold hold(cameraLock());
    m_board.setLensCode(code);
    return *this;
}

Camera& Camera::lensVariant(bool on) {
    const Hold hold(cameraLock());
    m_board.setLensVariant(on);
    return *this;
}

Camera& Camera::detectorPower(bool on) {
    const Hold hold(cameraLock());
    m_board.setPower(on);
    return *this;
}

Camera& Camera::devicePresent(bool present) {
    const Hold hold(cameraLock());
    m_present = present;
    return *this;
}

Camera& Camera::unplug() {
    const Hold hold(cameraLock());
    m_plugged = false;
    return *this;
}

Camera& Camera::plugIn() {
    const Hold hold(cameraLock());
    m_plugged = true;
    return *this;
}

Camera& Camera::failTransfer(unsigned long n, Fault fault, Lasting lasting) {
    const Hold hold(cameraLock());
    m_transferFault = {n, fault, lasting};
    return *this;
}

Camera& Camera::failSeek(unsigned long n, int error, Lasting lasting) {
    const Hold hold(cameraLock());
    m_seekFault = {n, Fault::refused(error), lasting};
    return *this;
}

unsigned long Camera::faults() const {
    const Hold hold(cameraLock());
    return m_faults;
}

Camera& Camera::poke(std::uint32_t address, std::vector<std::uint8_t> bytes) {
    const Hold hold(cameraLock());
    m_board.poke(address, std::move(bytes));
    return *this;
}

Camera& Camera::unpoke(std::uint32_t address) {
    const Hold hold(cameraLock());
    m_board.unpoke(address);
    return *this;
}

Camera& Camera::nextFrame() {
    const Hold hold(cameraLock());
    m_board.nextFrame();
    return *this;
}

Camera& Camera::logging(bool on) {
    const Hold hold(cameraLock());
    m_logging = on;
    return *this;
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

double Camera::truthAt(int x, int y) const {
    const Hold hold(cameraLock());
    return m_scene.at(x, y);
}

double Camera::truthOf(double ad) const {
    const Hold hold(cameraLock());
    return m_detector.temperatureOf(ad);
}

long Camera::openCall(int flags) {
    ++m_calls.open;
    m_calls.openFlags = flags;
    if (!m_present)
        return -ENOENT;
    return m_plugged ? 0 : -ENODEV;
}

long Camera::seekCall() {
    ++m_calls.lseek;
    const auto fault = strike(m_seekFault);
    return fault ? -fault->error : 0;
}

long Camera::readCall(std::uint32_t address, void* buf, std::size_t len) {
    ++m_calls.read;
    const auto fault = strike(m_transferFault);
    long result = -ENODEV;
    if (m_plugged)
        result = fault && fault->error != 0
                     ? -fault->error
                     : m_board.read(address, buf, fault ? std::min(fault->bytes, len) : len);
    if (result < 0 && address == irmcore::reg::frame.address)
        m_board.restartFrame();
    note(false, address, buf, len, result);
    return result;
}

long Camera::writeCall(std::uint32_t address, const void* buf, std::size_t len) {
    ++m_calls.write;
    const auto fault = strike(m_transferFault);
    long result = -ENODEV;
    if (m_plugged)
        result = fault && fault->error != 0
                     ? -fault->error
                     : m_board.write(address, buf, fault ? std::min(fault->bytes, len) : len);
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
