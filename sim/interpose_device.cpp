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
    long fd = camera == nullptr ? -ENOENT : camera->openCall(flags);
    if (fd == 0) {
        fd = emptyDescriptor("DM365-FPGA", flags);
        if (takeIn(static_cast<int>(fd), Kind::device) == nullptr)
            fd = -errno;
    }
    return static_cast<int>(resultOf(reportOpen(false, fd)));
}

std::int64_t seekDevice(Slot& slot, std::int64_t offset, int whence) {
    const Hold hold(cameraLock());
    Camera* camera = cameraOf(slot);
    long result = camera == nullptr ? -ENODEV : camera->seekCall();
    const std::int64_t from = whence == SEEK_CUR ? slot.position : 0;
    constexpr std::int64_t last = 0x7FFFFFFF;
    if (result == 0 &&
        ((whence != SEEK_SET && whence != SEEK_CUR) || offset < -from || offset > last - from))
        result = -EINVAL;
    if (result == 0)
        slot.position = from + offset;
    report(slot, Observation::Call::seek, result);
    return result < 0 ? resultOf(result) : slot.position;
}

namespace {

/// One transfer on the camera: `call` makes it at an address.
template <typename Call>
ssize_t transfer(Slot& slot, Observation::Call what, const void* buf, std::size_t len, Call call) {
    const Hold hold(cameraLock());
    Camera* camera = cameraOf(slot);
    const long result =
        camera == nullptr ? -ENODEV : call(*camera, static_cast<std::uint32_t>(slot.position));
    report(slot, what, result, buf, len);
    slot.position += result > 0 ? result : 0;
    return resultOf(result);
}

} // namespace

ssize_t readDevice(Slot& slot, void* buf, std::size_t len) {
    return transfer(
        slot, Observation::Call::read, buf, len,
        [=](Camera& camera, std::uint32_t address) { return camera.readCall(address, buf, len); });
}

ssize_t writeDevice(Slot& slot, const void* buf, std::size_t len) {
    return transfer(
        slot, Observation::Call::write, buf, len,
        [=](Camera& camera, std::uint32_t address) { return camera.writeCall(address, buf, len); });
}

} // namespace irmsim
