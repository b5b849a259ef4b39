// The observer, and the real devices' descriptors: every call goes on to the C library and is told.

#include "camera.h"
#include "descriptors.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace irmsim {

namespace {

using Hold = std::lock_guard<std::mutex>;

std::atomic<const Observer*> observer{nullptr}; // written under the lock

void tell(Observation observation) {
    const Observer* to = observer.load();
    if (to == nullptr)
        return;
    const Camera* camera = observation.real ? nullptr : installedCamera();
    observation.time = camera != nullptr ? camera->timeCall()
                                         : std::chrono::steady_clock::now().time_since_epoch();
    to->tell(to->context, observation);
}

/// Reports a call that the C library has made; its result and errno stay.
long tellReal(Slot& slot, Observation::Call call, long result, const void* bytes, std::size_t len) {
    const int error = errno;
    const Hold hold(cameraLock());
    report(slot, call, result < 0 ? -error : result, bytes, len);
    if (result > 0 && slot.kind == Kind::realDevice)
        slot.position += result;
    errno = error;
    return result;
}

} // namespace

void setObserver(const Observer* next) {
    const Hold hold(cameraLock());
    observer.store(next);
}

bool observed() { return observer.load(std::memory_order_relaxed) != nullptr; }

long report(const Slot& slot, Observation::Call call, long result, const void* bytes,
            std::size_t len) {
    if (observed())
        tell({call, isPort(slot.kind), isReal(slot.kind),
              isPort(slot.kind) ? 0U : static_cast<std::uint32_t>(slot.position),
              result > 0 ? static_cast<const std::uint8_t*>(bytes) : nullptr, len, result});
    return result;
}

long reportOpen(bool port, long result) {
    if (observed())
        tell({Observation::Call::open, port, false, 0, nullptr, 0, result});
    return result;
}

int watchReal(const char* path, int fd) {
    const int error = errno;
    const Hold hold(cameraLock());
    const Observer* to = observer.load();
    const char* volatile given = path; // declared never null; it can be all the same
    if (to == nullptr || given == nullptr)
        return fd;
    const bool port = std::strcmp(path, to->port) == 0;
    if (port || std::strcmp(path, to->device) == 0) {
        if (fd >= 0 && keep(fd, port ? Kind::realPort : Kind::realDevice) == nullptr)
            std::fputs("irmsim: too many descriptors on the camera; this one is not followed\n",
                       stderr);
        tell({Observation::Call::open, port, true, 0, nullptr, 0, fd < 0 ? -error : fd});
    }
    errno = error;
    return fd;
}

std::int64_t seekReal(Slot& slot, std::int64_t offset, int whence) {
    const std::int64_t position = (*nextSeek64)(slot.fd, offset, whence);
    const int error = errno;
    const Hold hold(cameraLock());
    if (position >= 0)
        slot.position = position;
    report(slot, Observation::Call::seek, position < 0 ? -error : 0);
    errno = error;
    return position;
}

ssize_t readReal(Slot& slot, void* buf, std::size_t len) {
    return tellReal(slot, Observation::Call::read, (*nextRead)(slot.fd, buf, len), buf, len);
}

ssize_t writeReal(Slot& slot, const void* buf, std::size_t len) {
    return tellReal(slot, Observation::Call::write, (*nextWrite)(slot.fd, buf, len), buf, len);
}

int reportReal(const Slot& slot, Observation::Call call, int result) {
    const int error = errno;
    const Hold hold(cameraLock());
    report(slot, call, result < 0 ? -error : result);
    errno = error;
    return result;
}

} // namespace irmsim
