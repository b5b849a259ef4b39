#include "interpose.h"

#include "camera.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/types.h>
#include <unistd.h>

// The file calls of the C library, defined once more: the linker gives every caller in the process
// these, and these go on to the next definition (the C library's, or a sanitizer's before it).
// Functions of the checked kind (__open_2, __read_chk) are what a host compiled with
// _FORTIFY_SOURCE calls.

namespace irmsim {

namespace {

/// The definition after ours, looked up early: looking it up in the midst of a call can lock up
/// under a sanitizer. A call that comes earlier still looks it up itself.
template <typename Function>
class Next {
public:
    explicit constexpr Next(const char* name) : m_name(name) {}

    Function* operator*() {
        void* found = m_found.load(std::memory_order_relaxed);
        if (found == nullptr) {
            found = dlsym(RTLD_NEXT, m_name);
            if (found == nullptr)
                std::abort(); // a C library without open or read
            m_found.store(found, std::memory_order_relaxed);
        }
        return reinterpret_cast<Function*>(found);
    }

private:
    const char* m_name;
    std::atomic<void*> m_found{nullptr};
};

Next<int(const char*, int, ...)> nextOpen("open");
Next<int(const char*, int, ...)> nextOpen64("open64");
Next<off_t(int, off_t, int)> nextSeek("lseek");
Next<off64_t(int, off64_t, int)> nextSeek64("lseek64");
Next<ssize_t(int, void*, std::size_t)> nextRead("read");
Next<ssize_t(int, const void*, std::size_t)> nextWrite("write");
Next<int(int)> nextClose("close");

__attribute__((constructor(101))) void lookUpEarly() {
    *nextOpen;
    *nextOpen64;
    *nextSeek;
    *nextSeek64;
    *nextRead;
    *nextWrite;
    *nextClose;
}

/// One descriptor on the device. `fd` is read without the lock, the rest under it.
struct Slot {
    std::atomic<int> fd{-1};
    std::uint64_t installation = 0;
    std::int64_t position = 0;
};

std::mutex lock;
std::array<Slot, 64> slots;
std::atomic<int> slotsInUse{0};
std::atomic<Camera*> installed{nullptr}; // written under the lock
std::uint64_t installation = 0;          // counts the cameras; under the lock

Slot* slotOf(int fd) {
    if (fd < 0 || slotsInUse.load(std::memory_order_acquire) == 0)
        return nullptr;
    for (Slot& slot : slots)
        if (slot.fd.load(std::memory_order_acquire) == fd)
            return &slot;
    return nullptr;
}

/// The camera that a descriptor was opened on, when it is still there. Under the lock.
Camera* cameraOf(const Slot& slot) {
    return slot.installation == installation ? installed.load() : nullptr;
}

/// A C call's result: -1 and errno for a negative error number.
long resultOf(long result) {
    if (result >= 0)
        return result;
    errno = static_cast<int>(-result);
    return -1;
}

bool isDevice(const char* path) {
    // The C library declares that `path` is never null; it can be all the same.
    const char* volatile given = path;
    return installed.load(std::memory_order_acquire) != nullptr && given != nullptr &&
           std::strcmp(given, fpgaDevicePath) == 0;
}

int openDevice(int flags) {
    const std::lock_guard<std::mutex> hold(lock);
    Camera* camera = installed.load();
    if (const long error = camera == nullptr ? -ENOENT : camera->openCall(flags); error < 0)
        return static_cast<int>(resultOf(error));
    for (Slot& slot : slots) {
        if (slot.fd.load() >= 0)
            continue;
        // A real descriptor, so that a leak shows and no other file gets the number.
        const int fd = memfd_create("DM365-FPGA", (flags & O_CLOEXEC) != 0 ? MFD_CLOEXEC : 0U);
        if (fd < 0)
            return -1;
        slot.installation = installation;
        slot.position = 0;
        slot.fd.store(fd, std::memory_order_release);
        slotsInUse.fetch_add(1, std::memory_order_release);
        return fd;
    }
    return static_cast<int>(resultOf(-EMFILE));
}

std::int64_t seekDevice(Slot& slot, std::int64_t offset, int whence) {
    const std::lock_guard<std::mutex> hold(lock);
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
    const std::lock_guard<std::mutex> hold(lock);
    Camera* camera = cameraOf(slot);
    const long result = camera == nullptr
                            ? -ENODEV
                            : camera->readCall(static_cast<std::uint32_t>(slot.position), buf, len);
    slot.position += result > 0 ? result : 0;
    return resultOf(result);
}

ssize_t writeDevice(Slot& slot, const void* buf, std::size_t len) {
    const std::lock_guard<std::mutex> hold(lock);
    Camera* camera = cameraOf(slot);
    const long result =
        camera == nullptr ? -ENODEV
                          : camera->writeCall(static_cast<std::uint32_t>(slot.position), buf, len);
    slot.position += result > 0 ? result : 0;
    return resultOf(result);
}

void closeDevice(Slot& slot, int fd) {
    const std::lock_guard<std::mutex> hold(lock);
    if (slot.fd.load() != fd)
        return; // closed by another thread meanwhile
    if (Camera* camera = cameraOf(slot))
        camera->closeCall();
    slot.fd.store(-1, std::memory_order_release);
    slotsInUse.fetch_sub(1, std::memory_order_release);
}

bool takesMode(int flags) { return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE; }

} // namespace

std::mutex& cameraLock() { return lock; }

bool interposeCamera(Camera& camera) {
    const std::lock_guard<std::mutex> hold(lock);
    if (installed.load() != nullptr)
        return installed.load() == &camera;
    ++installation;
    installed.store(&camera, std::memory_order_release);
    return true;
}

void withdrawCamera(const Camera& camera) {
    const std::lock_guard<std::mutex> hold(lock);
    if (installed.load() == &camera)
        installed.store(nullptr, std::memory_order_release);
}

} // namespace irmsim

extern "C" {

[[gnu::visibility("default")]] int open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if (irmsim::takesMode(flags)) {
        va_list rest;
        va_start(rest, flags);
        mode = va_arg(rest, mode_t);
        va_end(rest);
    }
    return irmsim::isDevice(path) ? irmsim::openDevice(flags)
                                  : (*irmsim::nextOpen)(path, flags, mode);
}

[[gnu::visibility("default")]] int open64(const char* path, int flags, ...) {
    mode_t mode = 0;
    if (irmsim::takesMode(flags)) {
        va_list rest;
        va_start(rest, flags);
        mode = va_arg(rest, mode_t);
        va_end(rest);
    }
    return irmsim::isDevice(path) ? irmsim::openDevice(flags)
                                  : (*irmsim::nextOpen64)(path, flags, mode);
}

[[gnu::visibility("default")]] int __open_2(const char* path, int flags) {
    return open(path, flags);
}

[[gnu::visibility("default")]] int __open64_2(const char* path, int flags) {
    return open64(path, flags);
}

[[gnu::visibility("default")]] off_t lseek(int fd, off_t offset, int whence) noexcept {
    irmsim::Slot* slot = irmsim::slotOf(fd);
    return slot != nullptr ? static_cast<off_t>(irmsim::seekDevice(*slot, offset, whence))
                           : (*irmsim::nextSeek)(fd, offset, whence);
}

[[gnu::visibility("default")]] off64_t lseek64(int fd, off64_t offset, int whence) noexcept {
    irmsim::Slot* slot = irmsim::slotOf(fd);
    return slot != nullptr ? irmsim::seekDevice(*slot, offset, whence)
                           : (*irmsim::nextSeek64)(fd, offset, whence);
}

[[gnu::visibility("default")]] ssize_t read(int fd, void* buf, std::size_t len) {
    irmsim::Slot* slot = irmsim::slotOf(fd);
    return slot != nullptr ? irmsim::readDevice(*slot, buf, len)
                           : (*irmsim::nextRead)(fd, buf, len);
}

[[gnu::visibility("default")]] ssize_t __read_chk(int fd, void* buf, std::size_t len,
                                                  std::size_t room) {
    if (len > room)
        std::abort();
    return read(fd, buf, len);
}

[[gnu::visibility("default")]] ssize_t write(int fd, const void* buf, std::size_t len) {
    irmsim::Slot* slot = irmsim::slotOf(fd);
    return slot != nullptr ? irmsim::writeDevice(*slot, buf, len)
                           : (*irmsim::nextWrite)(fd, buf, len);
}

[[gnu::visibility("default")]] int close(int fd) {
    // Forgotten before it is closed: at once afterwards the number may be another file's.
    if (irmsim::Slot* slot = irmsim::slotOf(fd))
        irmsim::closeDevice(*slot, fd);
    return (*irmsim::nextClose)(fd);
}

} // extern "C"
