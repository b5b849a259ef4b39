#pragma once

// What the files that stand in for the C library's calls share.

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

extern Next<ssize_t(int, void*, std::size_t)> nextRead;
extern Next<ssize_t(int, const void*, std::size_t)> nextWrite;

/// What a descriptor of ours is.
enum class Kind { device, virtualPort, pty };

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
/// Takes a real descriptor in, of the present camera; closes it when there are too many. Null for a
/// negative `fd` too.
Slot* takeIn(int fd, Kind kind);
/// A descriptor with nothing behind it: real, so that a leak shows and no other file gets the
/// number.
int emptyDescriptor(const char* name, int flags);

/// A C call's result: -1 and errno for a negative error number.
long resultOf(long result);

/// Whether a camera is installed. Without the lock.
bool anyCamera();

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
