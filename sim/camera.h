#pragma once

#include "board.h"
#include "detector.h"
#include "scene.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace irmsim {

/// One transfer that a host made on the FPGA device.
struct Transfer {
    bool write;
    std::uint32_t address;
    std::size_t length;              ///< bytes asked for
    std::vector<std::uint8_t> bytes; ///< those transferred, the first 2048 of them
    long result;                     ///< bytes transferred, or a negative error number
};

/// The C calls that a host made on the FPGA device, failed ones included.
struct Calls {
    unsigned long open = 0;
    unsigned long lseek = 0;
    unsigned long read = 0;
    unsigned long write = 0;
    unsigned long close = 0;
    int openFlags = 0; ///< of the last open

    unsigned long transfers() const { return read + write; }
    unsigned long total() const { return open + lseek + read + write + close; }
};

/// What goes wrong with a transfer.
struct Fault {
    int error;         ///< 0: the transfer is short
    std::size_t bytes; ///< transferred by a short one

    /// The call fails with this errno and transfers nothing.
    static Fault refused(int error) { return {error, 0}; }
    /// Only the first `bytes` are transferred.
    static Fault cutTo(std::size_t bytes) { return {0, bytes}; }
};

enum class Lasting { once, fromThenOn };

/// The simulated camera: scene, detector and board behind the FPGA's device path.
///
///     irmsim::Camera camera;
///     camera.scene(irmsim::Scene::uniform(160, 120, 37.0)).insideTemp(26.5).install();
///
/// At first: 160x120 at 25 °C, range 0, lens 0, calibrated at the reference inside temperature.
/// Every setter may be called while a host runs on another thread; `board()` and `detector()` give
/// the parts without a lock, for a host that is at rest. One camera is installed at a time.
class Camera {
public:
    Camera();
    ~Camera(); ///< uninstalls
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    /// Puts the camera behind the device path. False when another camera is there.
    bool install();
    void uninstall();

    Camera& scene(Scene scene);
    /// Switches the range, brings the inside temperature to its reference and calibrates there.
    Camera& range(int range);
    /// Shutter and sensor to this temperature in °C, and a calibration there.
    Camera& insideTemp(double celsius);
    /// Shutter and sensor temperature in °C; no calibration.
    Camera& temperatures(double shutter, double sensor);
    Camera& calibrate();
    Camera& shutterClosed(bool closed);
    Camera& surroundings(const Surroundings& truth);
    Camera& driftLaw(DriftLaw law);
    Camera& modifySlope(bool on);
    /// Noise of the AD values: standard deviation in AD, 0 for none.
    Camera& noise(double sigmaAd, std::uint64_t seed = 1);
    /// Lens index 0 to 6: the glass and its lens code. Others change nothing.
    Camera& lens(int index);
    /// The lens code alone, 0 to 7, as the register shows it.
    Camera& lensCode(unsigned code);
    /// Bit 7 of register 0x00.
    Camera& lensVariant(bool on);
    Camera& detectorPower(bool on);

    /// Without the device `open` fails with ENOENT; descriptors that are open go on.
    Camera& devicePresent(bool present);
    /// Unplugged: `open` and every transfer fail with ENODEV.
    Camera& unplug();
    Camera& plugIn();

    /// Makes the `n`th transfer (read or write) from now go wrong; 1 is the next. `n` 0: none.
    /// The latest call counts.
    Camera& failTransfer(unsigned long n, Fault fault, Lasting lasting = Lasting::once);
    /// Makes the `n`th `lseek` from now fail with `error` and leave the position.
    Camera& failSeek(unsigned long n, int error, Lasting lasting = Lasting::once);
    /// Faults that have happened.
    unsigned long faults() const;

    /// Makes reads answer `bytes` at `address`, whatever the board measures.
    Camera& poke(std::uint32_t address, std::vector<std::uint8_t> bytes);
    Camera& unpoke(std::uint32_t address);
    /// The next frame, as time passes without the host reading one.
    Camera& nextFrame();

    /// Switches the log; on at first. While it is off no transfer allocates.
    Camera& logging(bool on);
    /// The transfers since the last `clearLog()`, the latest 100000 of them.
    std::vector<Transfer> log() const;
    void clearLog();
    Calls calls() const;
    void clearCalls();

    const Scene& scene() const { return m_scene; }
    Detector& detector() { return m_detector; }
    Board& board() { return m_board; }

    /// Object temperature at a pixel of the scene, °C.
    double truthAt(int x, int y) const;
    /// Object temperature in °C that gives this AD now.
    double truthOf(double ad) const;

    // What the file calls do to the device, under cameraLock(): the result or, negative, an error
    // number.
    long openCall(int flags);
    long seekCall();
    long readCall(std::uint32_t address, void* buf, std::size_t len);
    long writeCall(std::uint32_t address, const void* buf, std::size_t len);
    void closeCall() { ++m_calls.close; }

private:
    /// A fault waiting for its call.
    struct Pending {
        unsigned long countdown = 0; // 1: the next call; 0: none
        Fault fault{0, 0};
        Lasting lasting = Lasting::once;
    };
    template <typename Change>
    Camera& with(Change change); // under the lock
    std::optional<Fault> strike(Pending& pending);
    void note(bool write, std::uint32_t address, const void* bytes, std::size_t len, long result);

    Scene m_scene;
    Detector m_detector;
    Board m_board;
    bool m_present = true;
    bool m_plugged = true;
    Pending m_transferFault;
    Pending m_seekFault;
    unsigned long m_faults = 0;
    bool m_logging = true;
    std::deque<Transfer> m_log;
    Calls m_calls;
};

} // namespace irmsim
