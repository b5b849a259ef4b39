#pragma once

#include "interpose.h"

namespace irmsim {

/// From now on every observation goes into the pipe `descriptor` as a record of wire.h, whole and
/// in order. A full pipe makes the calls wait. When the pipe has no reader any more, or the
/// program has closed or replaced the descriptor, the records end and the program goes on; signals
/// and errno are none the wiser. A forked child sends none, and closes the descriptor.
///
/// `device` and `port` are the paths of the real devices and stay the caller's. Once a process.
void startCourier(int descriptor, const char* device = fpgaDevicePath,
                  const char* port = serialPortPath);

} // namespace irmsim
