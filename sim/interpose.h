#pragma once

#include <mutex>

namespace irmsim {

class Camera;

/// The device paths that an installed camera answers.
inline constexpr char fpgaDevicePath[] = "/dev/DM365-FPGA";
inline constexpr char serialPortPath[] = "/dev/ttyS1";

/// Puts a camera behind the C library's file, terminal and sleep calls of this process: `open` of
/// its paths gives a descriptor whose transfers are the camera's. False, and nothing changed, when
/// another camera is there already. While none is there every call passes through. Thread-safe.
bool interposeCamera(Camera& camera);

/// Takes the camera away again; waits for a call in progress. Descriptors still open then fail
/// with ENODEV (the port's with EIO) until they are closed, whatever camera comes next.
/// Thread-safe.
void withdrawCamera(const Camera& camera);

/// Whether this camera is the one installed. Thread-safe.
bool isInterposed(const Camera& camera);

/// For a call of the C library that a program stands in for itself: counts it among the installed
/// camera's calls. 0, or the negative error number that `Camera::failCall` lets it fail with.
/// Thread-safe.
long otherCall();

/// The lock under which the file calls use the camera. Never held while user code runs.
std::mutex& cameraLock();

} // namespace irmsim
