#pragma once

// What the files that stand in for the C library's calls share.

#include "observer.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/types.h>

namespace irmsim {

class Camera;

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

extern Next<off64_t(int, off64_t, int)> nextSeek64;
extern Next<ssize_t(int, void*, std::size_t)> nextRead;
extern Next<ssize_t(int, const void*, std::size_t)> nextWrite;

/// What a descriptor of ours is; the real ones are only watched, and files only fail.
enum class Kind { device, virtualPort, pty, realDevice, realPort, file };
inline bool isReal(Kind kind) { return kind == Kind::realDevice || kind == Kind::realPort; }
inline bool isPort(Kind kind) {
    return kind == Kind::virtualPort || kind == Kind::pty || kind == Kind::realPort;
}

/// One descriptor. `fd` and `kind` are read without the lock, the rest under it.
struct Slot {
    std::atomic<int> fd{-1};
    std::atomic<Kind> kind{Kind::device};
    std::uint64_t installation = 0;
    std::int64_t position = 0; // on the device
    bool blocking = true;      // of the virtual port
};

/// The slot of a descriptor; null when it is none of ours.
Slot* slotOf(int fd);

// Under the lock:

/// The camera that is installed, or null.
Camera* installedCamera();
/// The camera that a descriptor was opened on, when it is still there.
Camera* cameraOf(const Slot& slot);
/// Keeps a descriptor, of the present camera unless it is only watched. Null when there are too
/// many.
Slot* keep(int fd, Kind kind);
/// The same, but closes a descriptor that cannot be kept. Null for a negative `fd` too.
Slot* takeIn(int fd, Kind kind);
/// A descriptor with nothing behind it: real, so that a leak shows and no other file gets the
/// number.
int emptyDescriptor(const char* name, int flags);

/// A C call's result: -1 and errno for a negative error number.
long resultOf(long result);

/// Whether a camera is installed. Without the lock.
bool anyCamera();

/// Whether somebody is to be told of calls. Without the lock.
bool observed();
/// Tells the observer, with the time; under the lock. `result` is given back.
long report(const Slot& slot, Observation::Call call, long result, const void* bytes = nullptr,
            std::size_t len = 0);
long reportOpen(bool port, long result);

// Real devices, while they are observed: interpose_real.cpp
/// Begins to watch a descriptor that the C library has opened on a real device's path.
int watchReal(const char* path, int fd);
std::int64_t seekReal(Slot& slot, std::int64_t offset, int whence);
ssize_t readReal(Slot& slot, void* buf, std::size_t len);
ssize_t writeReal(Slot& slot, const void* buf, std::size_t len);
/// Reports a terminal call that has been made, and gives its result back.
int reportReal(const Slot& slot, Observation::Call call, int result);

// The device: interpose_device.cpp
int openDevice(int flags);
std::int64_t seekDevice(Slot& slot, std::int64_t offset, int whence);
ssize_t readDevice(Slot& slot, void* buf, std::size_t len);
ssize_t writeDevice(Slot& slot, const void* buf, std::size_t len);

// The serial port: interpose_serial.cpp
int openPort(int flags);
ssize_t readPort(Slot& slot, void* buf, std::size_t len);
ssize_t writePort(Slot& slot, const void* buf, std::size_t len);

} // namespace irmsim
