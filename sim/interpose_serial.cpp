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

ssize_t readVirtual(Slot& slot, void* buf, std::size_t len) {
    std::optional<Time> deadline;
    for (;;) {
        Camera::PortRead got{0};
        const long result = withCamera(slot, [&](Camera& camera) {
            got = camera.readPortCall(buf, len, slot.blocking, deadline);
            return got.result;
        });
        if (result < 0 || got.wait == Time(0))
            return resultOf(result);
        sleepOnTheWall(got.wait);
    }
}

/// Asks the camera whether a pty's transfer may go on; with how many bytes, stands in `len` then.
long passPty(const Slot& slot, bool write, std::size_t& len) {
    return withCamera(slot, [&](Camera& camera) { return camera.ptyCall(write, len); });
}

} // namespace

int openPort(int flags) {
    const Hold hold(cameraLock());
    Camera* camera = installedCamera();
    if (const long error = camera == nullptr ? -ENOENT : camera->openPortCall(flags); error < 0)
        return static_cast<int>(resultOf(error));
    if (const PtyPort* pty = camera->pty()) {
        const int fd = pty->openHostEnd(flags & (O_ACCMODE | O_CLOEXEC | O_NONBLOCK));
        return takeIn(static_cast<int>(resultOf(fd)), Kind::pty) != nullptr ? fd : -1;
    }
    const int fd = emptyDescriptor("ttyS1", flags);
    Slot* slot = takeIn(fd, Kind::virtualPort);
    if (slot == nullptr)
        return -1;
    slot->blocking = (flags & O_NONBLOCK) == 0;
    return fd;
}

ssize_t readPort(Slot& slot, void* buf, std::size_t len) {
    if (slot.kind == Kind::virtualPort)
        return readVirtual(slot, buf, len);
    if (const long error = passPty(slot, false, len); error < 0)
        return resultOf(error);
    const ssize_t n = (*nextRead)(slot.fd, buf, len);
    if (n == 0)
        withCamera(slot, [](Camera& camera) { return camera.emptyPtyRead(), 0L; });
    return n;
}

ssize_t writePort(Slot& slot, const void* buf, std::size_t len) {
    if (slot.kind == Kind::virtualPort)
        return resultOf(
            withCamera(slot, [&](Camera& camera) { return camera.writePortCall(buf, len); }));
    const long error = passPty(slot, true, len);
    return error < 0 ? resultOf(error) : (*nextWrite)(slot.fd, buf, len);
}

namespace {

Slot* portOf(int fd) {
    Slot* slot = slotOf(fd);
    return slot != nullptr && slot->kind != Kind::device ? slot : nullptr;
}

int getAttributes(Slot& slot, termios* out) {
    const long error = withCamera(slot, [&](Camera& camera) {
        const long refused = camera.attributesCall();
        if (refused == 0 && slot.kind == Kind::virtualPort)
            *out = camera.portAttributesCall();
        return refused;
    });
    if (error < 0)
        return static_cast<int>(resultOf(error));
    return slot.kind == Kind::pty ? (*nextGetAttributes)(slot.fd, out) : 0;
}

int setAttributes(Slot& slot, int action, const termios& attributes) {
    if (action != TCSANOW && action != TCSADRAIN && action != TCSAFLUSH)
        return static_cast<int>(resultOf(-EINVAL));
    long error = withCamera(slot, [](Camera& camera) { return camera.attributesCall(); });
    if (error < 0)
        return static_cast<int>(resultOf(error));
    if (slot.kind == Kind::pty && (*nextSetAttributes)(slot.fd, action, &attributes) != 0)
        return -1;
    return static_cast<int>(resultOf(withCamera(slot, [&](Camera& camera) {
        camera.setAttributesCall(action, attributes);
        return 0L;
    })));
}

int flush(Slot& slot, int queue) {
    const long error = withCamera(slot, [&](Camera& camera) { return camera.flushCall(queue); });
    if (error < 0)
        return static_cast<int>(resultOf(error));
    return slot.kind == Kind::pty ? (*nextFlush)(slot.fd, queue) : 0;
}

/// Sleeps on the camera's time. False when there is no camera.
bool sleepSimulated(Time time) {
    const auto withInstalled = [](auto call) {
        const Hold hold(cameraLock());
        Camera* camera = installedCamera();
        if (camera != nullptr)
            call(*camera);
        return camera != nullptr;
    };
    Time wall{0};
    if (!withInstalled([&](Camera& camera) { wall = camera.wallTimeOfSleep(time); }))
        return false;
    if (wall > Time(0))
        sleepOnTheWall(wall);
    else
        settle(time);
    withInstalled([&](Camera& camera) { camera.sleepCall(time); });
    return true;
}

} // namespace

} // namespace irmsim

extern "C" {

[[gnu::visibility("default")]] int tcgetattr(int fd, termios* attributes) noexcept {
    irmsim::Slot* slot = irmsim::portOf(fd);
    return slot != nullptr ? irmsim::getAttributes(*slot, attributes)
                           : (*irmsim::nextGetAttributes)(fd, attributes);
}

[[gnu::visibility("default")]] int tcsetattr(int fd, int action,
                                             const termios* attributes) noexcept {
    irmsim::Slot* slot = irmsim::portOf(fd);
    return slot != nullptr ? irmsim::setAttributes(*slot, action, *attributes)
                           : (*irmsim::nextSetAttributes)(fd, action, attributes);
}

[[gnu::visibility("default")]] int tcflush(int fd, int queue) noexcept {
    irmsim::Slot* slot = irmsim::portOf(fd);
    return slot != nullptr ? irmsim::flush(*slot, queue) : (*irmsim::nextFlush)(fd, queue);
}

[[gnu::visibility("default")]] int usleep(useconds_t microseconds) {
    if (!irmsim::anyCamera() || !irmsim::sleepSimulated(std::chrono::microseconds(microseconds)))
        return (*irmsim::nextSleep)(microseconds);
    return 0;
}

} // extern "C"
