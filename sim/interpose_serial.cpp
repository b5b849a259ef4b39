// The serial port's descriptors, the terminal calls, and sleeping.

#include "camera.h"
#include "descriptors.h"
#include "settle.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace irmsim {

namespace {

using Hold = std::lock_guard<std::mutex>;

Next<int(int, termios*)> nextGetAttributes("tcgetattr");
Next<int(int, int, const termios*)> nextSetAttributes("tcsetattr");
Next<int(int, int)> nextFlush("tcflush");
Next<int(useconds_t)> nextSleep("usleep");

__attribute__((constructor(101))) void lookUpEarly() {
    *nextGetAttributes;
    *nextSetAttributes;
    *nextFlush;
    *nextSleep;
}

void sleepOnTheWall(Time time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    timespec left{static_cast<time_t>(seconds.count()),
                  static_cast<decltype(timespec::tv_nsec)>((time - seconds).count())};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

/// Does `call` with the camera of a descriptor, under the lock; without one EIO.
template <typename Call>
long withCamera(const Slot& slot, Call call) {
    const Hold hold(cameraLock());
    Camera* camera = cameraOf(slot);
    return camera == nullptr ? -EIO : call(*camera);
}

long readVirtual(Slot& slot, void* buf, std::size_t len) {
    std::optional<Time> deadline;
    for (;;) {
        Camera::PortRead got{0};
        const long result = withCamera(slot, [&](Camera& camera) {
            got = camera.readPortCall(buf, len, slot.blocking, deadline);
            return got.result;
        });
        if (result < 0 || got.wait == Time(0))
            return result;
        sleepOnTheWall(got.wait);
    }
}

/// Asks the camera whether a pty's transfer may go on; with how many bytes, stands in `len` then.
long passPty(const Slot& slot, bool write, std::size_t& len) {
    return withCamera(slot, [&](Camera& camera) { return camera.ptyCall(write, len); });
}

} // namespace

namespace {

/// A descriptor on the port: a negative error number without one. Under the lock.
int portDescriptor(const Camera& camera, int flags) {
    if (const PtyPort* pty = camera.pty()) {
        const int fd = pty->openHostEnd(flags & (O_ACCMODE | O_CLOEXEC | O_NONBLOCK));
        return fd < 0 || takeIn(fd, Kind::pty) != nullptr ? fd : -errno;
    }
    const int fd = emptyDescriptor("ttyS1", flags);
    Slot* slot = takeIn(fd, Kind::virtualPort);
    if (slot == nullptr)
        return -errno;
    slot->blocking = (flags & O_NONBLOCK) == 0;
    return fd;
}

/// What a system call came to: its result, or the negative error number.
long outcome(ssize_t result) { return result < 0 ? -errno : static_cast<long>(result); }

/// The result of a call on the port, once the observer knows it.
long told(const Slot& slot, Observation::Call call, long result, const void* bytes = nullptr,
          std::size_t len = 0) {
    if (observed()) {
        const Hold hold(cameraLock());
        report(slot, call, result, bytes, len);
    }
    return resultOf(result);
}

long readPty(Slot& slot, void* buf, std::size_t len) {
    if (const long error = passPty(slot, false, len); error < 0)
        return error;
    const ssize_t n = (*nextRead)(slot.fd, buf, len);
    if (n == 0)
        withCamera(slot, [](Camera& camera) { return camera.emptyPtyRead(), 0L; });
    return outcome(n);
}

long writePty(Slot& slot, const void* buf, std::size_t len) {
    const long error = passPty(slot, true, len);
    return error < 0 ? error : outcome((*nextWrite)(slot.fd, buf, len));
}

} // namespace

int openPort(int flags) {
    const Hold hold(cameraLock());
    Camera* camera = installedCamera();
    long fd = camera == nullptr ? -ENOENT : camera->openPortCall(flags);
    if (fd == 0)
        fd = portDescriptor(*camera, flags);
    return static_cast<int>(resultOf(reportOpen(true, fd)));
}

ssize_t readPort(Slot& slot, void* buf, std::size_t len) {
    const long result =
        slot.kind == Kind::pty ? readPty(slot, buf, len) : readVirtual(slot, buf, len);
    return told(slot, Observation::Call::read, result, buf, len);
}

ssize_t writePort(Slot& slot, const void* buf, std::size_t len) {
    if (slot.kind == Kind::pty)
        return told(slot, Observation::Call::write, writePty(slot, buf, len), buf, len);
    return resultOf(withCamera(slot, [&](Camera& camera) {
        return report(slot, Observation::Call::write, camera.writePortCall(buf, len), buf, len);
    }));
}

namespace {

Slot* portOf(int fd) {
    Slot* slot = slotOf(fd);
    return slot != nullptr && isPort(slot->kind) ? slot : nullptr;
}

long getAttributes(Slot& slot, termios* out) {
    const long error = withCamera(slot, [&](Camera& camera) {
        const long refused = camera.attributesCall();
        if (refused == 0 && slot.kind == Kind::virtualPort)
            *out = camera.portAttributesCall();
        return refused;
    });
    return error == 0 && slot.kind == Kind::pty ? outcome((*nextGetAttributes)(slot.fd, out))
                                                : error;
}

long setAttributes(Slot& slot, int action, const termios& attributes) {
    if (action != TCSANOW && action != TCSADRAIN && action != TCSAFLUSH)
        return -EINVAL;
    long error = withCamera(slot, [](Camera& camera) { return camera.attributesCall(); });
    if (error == 0 && slot.kind == Kind::pty)
        error = outcome((*nextSetAttributes)(slot.fd, action, &attributes));
    if (error < 0)
        return error;
    return withCamera(slot, [&](Camera& camera) {
        camera.setAttributesCall(action, attributes);
        return 0L;
    });
}

long flush(Slot& slot, int queue) {
    const long error = withCamera(slot, [&](Camera& camera) { return camera.flushCall(queue); });
    return error == 0 && slot.kind == Kind::pty ? outcome((*nextFlush)(slot.fd, queue)) : error;
}

/// A terminal call: on our port `ours`, else `next`, the C library's, which a real port is too.
template <typename Ours, typename NextCall>
int terminalCall(int fd, Observation::Call call, Ours ours, NextCall next) {
    Slot* slot = portOf(fd);
    if (slot == nullptr)
        return next();
    if (isReal(slot->kind))
        return reportReal(*slot, call, next());
    return static_cast<int>(told(*slot, call, ours(*slot)));
}

/// Sleeps on the camera's time, or returns the error number of a sleep that is broken off at once.
/// Nothing when there is no camera.
std::optional<long> sleepSimulated(Time time) {
    const auto withInstalled = [](auto call) {
        const Hold hold(cameraLock());
        Camera* camera = installedCamera();
        if (camera != nullptr)
            call(*camera);
        return camera != nullptr;
    };
    Time wall{0};
    long error = 0;
    if (!withInstalled([&](Camera& camera) {
            error = camera.otherCall();
            wall = camera.wallTimeOfSleep(time);
        }))
        return std::nullopt;
    if (error != 0)
        return error;
    if (wall > Time(0))
        sleepOnTheWall(wall);
    else
        settle(time);
    withInstalled([&](Camera& camera) { camera.sleepCall(time); });
    return 0;
}

} // namespace

} // namespace irmsim

extern "C" {

[[gnu::visibility("default")]] int tcgetattr(int fd, termios* attributes) noexcept {
    return irmsim::terminalCall(
        fd, irmsim::Observation::Call::getAttributes,
        [=](irmsim::Slot& slot) { return irmsim::getAttributes(slot, attributes); },
        [=] { return (*irmsim::nextGetAttributes)(fd, attributes); });
}

[[gnu::visibility("default")]] int tcsetattr(int fd, int action,
                                             const termios* attributes) noexcept {
    return irmsim::terminalCall(
        fd, irmsim::Observation::Call::setAttributes,
        [=](irmsim::Slot& slot) { return irmsim::setAttributes(slot, action, *attributes); },
        [=] { return (*irmsim::nextSetAttributes)(fd, action, attributes); });
}

[[gnu::visibility("default")]] int tcflush(int fd, int queue) noexcept {
    return irmsim::terminalCall(
        fd, irmsim::Observation::Call::flush,
        [=](irmsim::Slot& slot) { return irmsim::flush(slot, queue); },
        [=] { return (*irmsim::nextFlush)(fd, queue); });
}

[[gnu::visibility("default")]] int usleep(useconds_t microseconds) {
    const auto slept = irmsim::anyCamera()
                           ? irmsim::sleepSimulated(std::chrono::microseconds(microseconds))
                           : std::nullopt;
    return slept ? static_cast<int>(irmsim::resultOf(*slept)) : (*irmsim::nextSleep)(microseconds);
}

} // extern "C"
