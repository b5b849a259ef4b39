// The FPGA device's descriptors.

#include "camera.h"
#include "descriptors.h"

#include <cerrno>
#include <unistd.h>

namespace irmsim {

namespace {

using Hold = std::lock_guard<std::mutex>;

} // namespace

int openDevice(int flags) {
    const Hold hold(cameraLock());
    Camera* camera = installedCamera();
    if (const long error = camera == nullptr ? -ENOENT : camera->openCall(flags); error < 0)
        return static_cast<int>(resultOf(error));
    const int fd = emptyDescriptor("DM365-FPGA", flags);
    return takeIn(fd, Kind::device) != nullptr ? fd : -1;
}

std::int64_t seekDevice(Slot& slot, std::int64_t offset, int whence) {
    const Hold hold(cameraLock());
    Camera* camera = cameraOf(slot);
    if (const long error = camera == nullptr ? -ENODEV : camera->seekCall(); error < 0)
        return resultOf(error);
    const std::int64_t from = whence == SEEK_CUR ? slot.position : 0;
    constexpr std::int64_t last = 0x7FFFFFFF;
    if ((whence != SEEK_SET && whence != SEEK_CUR) || offset < -from || offset > last - from)
        return resultOf(-EINVAL);
    slot.position = from + offset;
    return slot.position;
}

ssize_t readDevice(Slot& slot, void* buf, std::size_t len) {
    const Hold hold(cameraLock());
    Camera* camera = cameraOf(slot);
    const long result = camera == nullptr
                            ? -ENODEV
                            : camera->readCall(static_cast<std::uint32_t>(slot.position), buf, len);
    slot.position += result > 0 ? result : 0;
    return resultOf(result);
}

ssize_t writeDevice(Slot& slot, const void* buf, std::size_t len) {
    const Hold hold(cameraLock());
    Camera* camera = cameraOf(slot);
    const long result =
        camera == nullptr ? -ENODEV
                          : camera->writeCall(static_cast<std::uint32_t>(slot.position), buf, len);
    slot.position += result > 0 ? result : 0;
    return resultOf(result);
}

} // namespace irmsim
