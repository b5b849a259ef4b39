#pragma once

#include "clock.h"
#include "interpose.h"

#include <cstddef>
#include <cstdint>

namespace irmsim {

/// A C call on one of the two devices, simulated or real, and what came of it.
struct Observation {
    enum class Call { open, seek, read, write, close, getAttributes, setAttributes, flush };

    Call call;
    bool port;                           ///< on the serial port, else on the FPGA device
    bool real = false;                   ///< on the machine's own device
    std::uint32_t address = 0;           ///< on the device: where a transfer began, a seek left it
    const std::uint8_t* bytes = nullptr; ///< `result` bytes that a read or write transferred
    std::size_t length = 0;              ///< bytes that a read or write asked for
    long result = 0;                     ///< the call's (a seek's is 0), or a negative error number
    Time time{0};                        ///< simulated; on a real device the steady clock's
};

/// Who is told of every call. It is told under cameraLock(), of one call after the other, on the
/// thread that called and before that goes on: it must be quick, and use neither the devices nor a
/// camera's setters. Context and paths are the owner's.
struct Observer {
    void (*tell)(void* context, const Observation& observation);
    void* context = nullptr;
    const char* device = fpgaDevicePath; ///< the real devices' paths
    const char* port = serialPortPath;
};

/// From now on this observer, which stays the caller's, is told; null for none. Real devices are
/// followed from the `open` on, and only those opened while there is an observer and no camera.
/// Thread-safe; waits for a call that is being told.
void setObserver(const Observer* observer);

} // namespace irmsim
