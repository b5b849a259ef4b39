#include "interpose.h"

#include "camera.h"
#include "descriptors.h"

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

// The file calls of the C library, defined once more: the linker gives every caller in the process
// these, and these go on to the next definition (the C library's, or a sanitizer's before it).
// Functions of the checked kind (__open_2, __read_chk) are what a host compiled with
// _FORTIFY_SOURCE calls.

namespace irmsim {

Next<off64_t(int, off64_t, int)> nextSeek64("lseek64");
Next<ssize_t(int, void*, std::size_t)> nextRead("read");
Next<ssize_t(int, const void*, std::size_t)> nextWrite("write");

namespace {

Next<int(const char*, int, ...)> nextOpen("open");
Next<int(const char*, int, ...)> nextOpen64("open64");
Next<int(int, const char*, int, ...)> nextOpenAt("openat");
Next<int(int, const char*, int, ...)> nextOpenAt64("openat64");
Next<off_t(int, off_t, int)> nextSeek("lseek");
Next<int(int)> nextClose("close");

__attribute__((constructor(101))) void lookUpEarly() {
    *nextOpen;
    *nextOpen64;
    *nextOpenAt;
    *nextOpenAt64;
    *nextSeek;
    *nextSeek64;
    *nextRead;
    *nextWrite;
    *nextClose;
    // A child that is forked while a thread is in a call gets the lock free. Handlers of a child
    // run in the order of their registration: whoever wants the lock there registers later.
    pthread_atfork([] { irmsim::cameraLock().lock(); }, [] { irmsim::cameraLock().unlock(); },
                   [] { irmsim::cameraLock().unlock(); });
}

std::mutex lock;
std::array<Slot, 64> slots;
std::atomic<int> slotsInUse{0};
std::atomic<Camera*> installed{nullptr}; // written under the lock
std::uint64_t installation = 0;          // counts the cameras; under the lock

/// Whether an installed camera answers this path.
bool answers(const char* path, const char* of) {
    // The C library declares that `path` is never null; it can be all the same.
    const char* volatile given = path;
    return anyCamera() && given != nullptr && std::strcmp(given, of) == 0;
}

Slot* deviceOf(int fd) {
    Slot* slot = slotOf(fd);
    const bool device =
        slot != nullptr && (slot->kind == Kind::device || slot->kind == Kind::realDevice);
    return device ? slot : nullptr;
}

void forget(Slot& slot, int fd) {
    if (slot.fd.compare_exchange_strong(fd, -1))
        slotsInUse.fetch_sub(1, std::memory_order_release);
}

/// A number that has just been given out is a new file's: what we knew by it has been closed behind
/// our back (`close_range`, `dup2`, `fclose`).
int asNew(int fd) {
    if (Slot* old = slotOf(fd))
        forget(*old, fd);
    return fd;
}

/// Forgets a descriptor that is about to be closed. 0, or what the close is to fail with: the
/// descriptor is gone then too, as it is on Linux.
long letGo(Slot& slot, int fd) {
    const std::lock_guard<std::mutex> hold(lock);
    if (slot.fd.load() != fd)
        return 0; // closed by another thread meanwhile
    long result = 0;
    if (Camera* camera = cameraOf(slot))
        result = slot.kind == Kind::device ? camera->closeCall()
                 : isPort(slot.kind)       ? camera->closePortCall()
                                           : camera->otherCall();
    if (slot.kind != Kind::file)
        report(slot, Observation::Call::close, result);
    forget(slot, fd);
    return result;
}

bool takesMode(int flags) { return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE; }

/// Opens a path on the camera, or as `next` does.
template <typename OpenNext>
int openPath(const char* path, int flags, OpenNext next) {
    if (answers(path, fpgaDevicePath))
        return openDevice(flags);
    if (answers(path, serialPortPath))
        return openPort(flags);
    const int fd = asNew(next());
    return observed() && !anyCamera() ? watchReal(path, fd) : fd;
}

/// Whether a fault that waits may be for this file: one to read, named from the working directory.
bool mayFail(const char* path, int flags) {
    // The camera itself opens its pseudo terminal under the lock: that is none of these.
    // `open` declares its path never null, and a compiler would believe it.
    const char* volatile given = path;
    if (given == nullptr || *path == '/' || (flags & O_ACCMODE) != O_RDONLY)
        return false;
    const std::lock_guard<std::mutex> hold(lock);
    const Camera* camera = installed.load();
    return camera != nullptr && camera->callFaultWaits();
}

/// Opens such a file.
int openFile(const char* path, int flags, mode_t mode) {
    if (const long error = otherCall(); error != 0)
        return static_cast<int>(resultOf(error));
    const int fd = (*nextOpen)(path, flags, mode);
    const std::lock_guard<std::mutex> hold(lock);
    if (fd >= 0)
        keep(fd, Kind::file);
    return fd;
}

/// Reads from such a file.
ssize_t readFile(const Slot& slot, void* buf, std::size_t len) {
    {
        const std::lock_guard<std::mutex> hold(lock);
        Camera* camera = cameraOf(slot);
        if (const long error = camera == nullptr ? 0 : camera->otherCall(&len); error != 0)
            return resultOf(error);
    }
    return (*nextRead)(slot.fd, buf, len);
}

std::int64_t seekSlot(Slot& slot, std::int64_t offset, int whence) {
    return isReal(slot.kind) ? seekReal(slot, offset, whence) : seekDevice(slot, offset, whence);
}

} // namespace

bool anyCamera() { return installed.load(std::memory_order_acquire) != nullptr; }

Camera* installedCamera() { return installed.load(); }

Camera* cameraOf(const Slot& slot) {
    return slot.installation == installation ? installed.load() : nullptr;
}

Slot* slotOf(int fd) {
    if (fd < 0 || slotsInUse.load(std::memory_order_acquire) == 0)
        return nullptr;
    for (Slot& slot : slots)
        if (slot.fd.load(std::memory_order_acquire) == fd)
            return &slot;
    return nullptr;
}

Slot* keep(int fd, Kind kind) {
    asNew(fd);
    for (Slot& slot : slots) {
        if (slot.fd.load() >= 0)
            continue;
        slot.kind = kind;
        slot.installation = isReal(kind) ? 0 : installation; // 0: of no camera
        slot.position = 0;
        slot.blocking = true;
        slot.fd.store(fd, std::memory_order_release);
        slotsInUse.fetch_add(1, std::memory_order_release);
        return &slot;
    }
    return nullptr;
}

Slot* takeIn(int fd, Kind kind) {
    if (fd < 0)
        return nullptr;
    Slot* slot = keep(fd, kind);
    if (slot == nullptr) {
        (*nextClose)(fd);
        errno = EMFILE;
    }
    return slot;
}

int emptyDescriptor(const char* name, int flags) {
    return memfd_create(name, (flags & O_CLOEXEC) != 0 ? MFD_CLOEXEC : 0U);
}

long resultOf(long result) {
    if (result >= 0)
        return result;
    errno = static_cast<int>(-result);
    return -1;
}

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

long otherCall() {
    const std::lock_guard<std::mutex> hold(lock);
    Camera* camera = installed.load();
    return camera == nullptr ? 0 : camera->otherCall();
}

bool isInterposed(const Camera& camera) {
    return installed.load(std::memory_order_acquire) == &camera;
}

} // namespace irmsim

namespace {

/// The mode among an open's further arguments, if there is one.
mode_t modeOf(int flags, va_list rest) {
    return irmsim::takesMode(flags) ? va_arg(rest, mode_t) : mode_t{0};
}

} // namespace

extern "C" {

[[gnu::visibility("default")]] int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = modeOf(flags, rest);
    va_end(rest);
    if (irmsim::mayFail(path, flags))
        return irmsim::openFile(path, flags, mode);
    return irmsim::openPath(path, flags, [=] { return (*irmsim::nextOpen)(path, flags, mode); });
}

[[gnu::visibility("default")]] int open64(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = modeOf(flags, rest);
    va_end(rest);
    return irmsim::openPath(path, flags, [=] { return (*irmsim::nextOpen64)(path, flags, mode); });
}

// The devices' paths are absolute: the directory does not matter for them.

[[gnu::visibility("default")]] int openat(int directory, const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = modeOf(flags, rest);
    va_end(rest);
    return irmsim::openPath(path, flags,
                            [=] { return (*irmsim::nextOpenAt)(directory, path, flags, mode); });
}

[[gnu::visibility("default")]] int openat64(int directory, const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = modeOf(flags, rest);
    va_end(rest);
    return irmsim::openPath(path, flags,
                            [=] { return (*irmsim::nextOpenAt64)(directory, path, flags, mode); });
}

[[gnu::visibility("default")]] int __open_2(const char* path, int flags) {
    return open(path, flags);
}

[[gnu::visibility("default")]] int __open64_2(const char* path, int flags) {
    return open64(path, flags);
}

[[gnu::visibility("default")]] int __openat_2(int directory, const char* path, int flags) {
    return openat(directory, path, flags);
}

[[gnu::visibility("default")]] int __openat64_2(int directory, const char* path, int flags) {
    return openat64(directory, path, flags);
}

[[gnu::visibility("default")]] off_t lseek(int fd, off_t offset, int whence) noexcept {
    irmsim::Slot* slot = irmsim::deviceOf(fd);
    if (slot == nullptr)
        return (*irmsim::nextSeek)(fd, offset, whence);
    const std::int64_t position = irmsim::seekSlot(*slot, offset, whence);
    const auto shown = static_cast<off_t>(position);
    if (shown == position)
        return shown;
    errno = EOVERFLOW; // on the board an off_t has 32 bits; the C library's has moved as well
    return -1;
}

[[gnu::visibility("default")]] off64_t lseek64(int fd, off64_t offset, int whence) noexcept {
    irmsim::Slot* slot = irmsim::deviceOf(fd);
    return slot != nullptr ? irmsim::seekSlot(*slot, offset, whence)
                           : (*irmsim::nextSeek64)(fd, offset, whence);
}

[[gnu::visibility("default")]] ssize_t read(int fd, void* buf, std::size_t len) {
    irmsim::Slot* slot = irmsim::slotOf(fd);
    if (slot == nullptr)
        return (*irmsim::nextRead)(fd, buf, len);
    if (isReal(slot->kind))
        return irmsim::readReal(*slot, buf, len);
    if (slot->kind == irmsim::Kind::file)
        return irmsim::readFile(*slot, buf, len);
    return slot->kind == irmsim::Kind::device ? irmsim::readDevice(*slot, buf, len)
                                              : irmsim::readPort(*slot, buf, len);
}

[[gnu::visibility("default")]] ssize_t __read_chk(int fd, void* buf, std::size_t len,
                                                  std::size_t room) {
    if (len > room)
        std::abort();
    return read(fd, buf, len);
}

[[gnu::visibility("default")]] ssize_t write(int fd, const void* buf, std::size_t len) {
    irmsim::Slot* slot = irmsim::slotOf(fd);
    if (slot == nullptr || slot->kind == irmsim::Kind::file)
        return (*irmsim::nextWrite)(fd, buf, len);
    if (isReal(slot->kind))
        return irmsim::writeReal(*slot, buf, len);
    return slot->kind == irmsim::Kind::device ? irmsim::writeDevice(*slot, buf, len)
                                              : irmsim::writePort(*slot, buf, len);
}

[[gnu::visibility("default")]] int close(int fd) {
    // Forgotten before it is closed: at once afterwards the number may be another file's.
    irmsim::Slot* slot = irmsim::slotOf(fd);
    const long error = slot == nullptr ? 0 : irmsim::letGo(*slot, fd);
    const int closed = (*irmsim::nextClose)(fd);
    return error == 0 ? closed : static_cast<int>(irmsim::resultOf(error));
}

} // extern "C"
