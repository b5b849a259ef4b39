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

template <typename Change>
Camera& Camera::with(Change change) {
    const Hold hold(cameraLock());
    change();
    return *this;
}

Camera& Camera::scene(Scene scene) {
    return with([&] { m_scene = std::move(scene); });
}

Camera& Camera::range(int range) {
    return with([&] {
        m_detector.setRange(range);
        m_detector.setTemperatures(m_detector.referenceTemp(), m_detector.referenceTemp());
        m_detector.calibrate();
    });
}

Camera& Camera::insideTemp(double celsius) {
    return with([&] {
        m_detector.setTemperatures(celsius, celsius);
        m_detector.calibrate();
    });
}

Camera& Camera::temperatures(double shutter, double sensor) {
    return with([&] { m_detector.setTemperatures(shutter, sensor); });
}

Camera& Camera::calibrate() {
    return with([&] { m_detector.calibrate(); });
}

Camera& Camera::shutterClosed(bool closed) {
    return with([&] { m_detector.setShutterClosed(closed); });
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
    return with([&] {
        if (index < 0 || index >= static_cast<int>(lensCodes.size()))
            return;
        m_detector.setLens(index);
        m_board.setLensCode(lensCodes[static_cast<std::size_t>(index)]);
    });
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

Camera& Camera::nextFrame() {
    return with([&] { m_board.nextFrame(); });
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
    if (buf == nullptr && len > 0)
        return -EFAULT;
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
    if (buf == nullptr && len > 0)
        return -EFAULT;
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
