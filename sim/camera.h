#pragma once

#include "board.h"
#include "clock.h"
#include "detector.h"
#include "detectorcore.h"
#include "interpose.h"
#include "ptyport.h"
#include "scenario.h"
#include "scene.h"
#include "serialport.h"
#include "shutter.h"
#include "warmup.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <termios.h>
#include <vector>

namespace irmsim {

class Replay;
class ReplayPort;
struct Tape;

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

/// The C calls that a host made on the serial port, failed ones included.
struct PortCalls {
    unsigned long open = 0;
    unsigned long read = 0;
    unsigned long emptyReads = 0; ///< those that brought nothing
    unsigned long write = 0;
    unsigned long close = 0;
    unsigned long flush = 0;
    unsigned long attributes = 0; ///< got or set
    int openFlags = 0;            ///< of the last open
};

/// What goes wrong with a transfer.
struct Fault {
    int error;            ///< 0: the transfer is short
    std::size_t bytes;    ///< transferred by a short one
    bool fromEnd = false; ///< `bytes` are those missing

    /// What it leaves of a transfer of `len` bytes.
    std::size_t of(std::size_t len) const {
        return fromEnd ? len - std::min(bytes, len) : std::min(bytes, len);
    }

    /// The call fails with this errno and transfers nothing.
    static Fault refused(int error) { return {error, 0}; }
    /// Only the first `bytes` are transferred.
    static Fault cutTo(std::size_t bytes) { return {0, bytes}; }
    /// The last `bytes` are not transferred.
    static Fault cutBy(std::size_t bytes) { return {0, bytes, true}; }
};

enum class Lasting { once, fromThenOn };

/// The simulated camera: scene, detector and board behind the FPGA's device path, and the detector
/// core behind the serial port.
///
///     irmsim::Camera camera;
///     camera.scene(irmsim::Scene::uniform(160, 120, 37.0)).insideTemp(26.5).install();
///
/// At first: 160x120 at 25 °C, range 0, lens 0, calibrated at the reference inside temperature,
/// automatic shutter on. Every setter may be called while a host runs on another thread; `board()`
/// and `detector()` give the parts without a lock, for a host that is at rest. One camera is
/// installed at a time.
class Camera {
public:
    Camera();
    ~Camera(); ///< uninstalls
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    /// Puts the camera behind the device paths. False when another camera is there.
    bool install();
    void uninstall();

    // --- what it looks at, and its state: camera.cpp ---

    Camera& scene(Scene scene);
    /// Switches the range, brings the inside temperature to its reference and calibrates there.
    Camera& range(int range);
    /// Shutter and sensor to this temperature in °C, and a calibration there. Ends a warm-up.
    Camera& insideTemp(double celsius);
    /// Shutter and sensor temperature in °C; no calibration. Ends a warm-up.
    Camera& temperatures(double shutter, double sensor);
    Camera& calibrate();
    /// Keeps the shutter closed, or leaves it to the core.
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

    // --- time: camera_time.cpp ---

    /// Simulated time since power-up, s: frames read, sleeps (`usleep`) and empty serial reads.
    double seconds() const;
    /// Lets time pass. Threads that are at work are let finish first.
    Camera& advance(double seconds);
    /// Simulated time follows the wall clock, `factor` times as fast; sleeps really sleep then. 0:
    /// no longer.
    Camera& tieToWallClock(double factor);
    /// Frames a second; 25 at first.
    Camera& frameRate(double hertz);
    /// From now on shutter and sensor warm up; calibrated at the start.
    Camera& warmUp(const WarmUp& course);
    /// The next frame, and its time, as if the host had read one.
    Camera& nextFrame();

    /// What happens to the camera as its time passes, from now on: camera_scenario.cpp. An event is
    /// seen by the first call at or after its time.
    Camera& scenario(Scenario scenario);

    /// From now on the camera answers as a recorded session did; all else that is set up here is
    /// without effect. The tape's bytes outlive the camera. With `loop` the session begins anew
    /// when it has ended. Before `install`: camera_replay.cpp.
    Camera& replay(const Tape& tape, bool loop);

    // --- the detector core and its port: camera_core.cpp ---

    Camera& coreAnswers(const CoreAnswers& answers);
    /// The core carries everything out and answers nothing.
    Camera& coreSilent(bool silent);
    /// Every answer comes so much later: in simulated time, on a pty in wall time.
    Camera& coreLate(double seconds);
    /// The byte at this offset of every answer comes inverted; negative: none.
    Camera& coreGarbled(int offset);
    /// What answers the host's writes in place of the core, which then hears nothing: called under
    /// the lock, on the thread that writes. An empty one gives the port back to the core.
    using CoreStandIn = std::function<std::vector<Reply>(const std::uint8_t* bytes, std::size_t n)>;
    Camera& coreReplacedBy(CoreStandIn standIn);
    /// Bytes of no answer come from the core so much later, but never before those sent earlier; on
    /// the virtual port.
    Camera& coreSends(std::vector<std::uint8_t> bytes, double seconds);
    /// Switches the core on again, also after it was shut down; it calibrates then.
    Camera& corePowerUp();
    /// Period of automatic shutter, at least 1 s; 60 s at first.
    Camera& autoShutterPeriod(double seconds);
    /// Frames that the core received since the last `clearReceived()`, the latest million of them.
    std::vector<CoreFrame> received() const;
    CoreCounts coreCounts() const;
    void clearReceived();
    std::uint16_t coreIntTime() const;
    bool coreOn() const;
    /// Shutter calibrations that the core has done.
    unsigned long calibrations() const;

    /// The port as a real pty instead of a virtual one, for descriptors opened from now on. `open`
    /// fails with ENXIO when there is no pty to be had. As `install`, from the thread that the
    /// camera belongs to.
    Camera& serialOnPty(bool on);
    /// Without the port `open` fails with ENOENT; descriptors that are open go on.
    Camera& portPresent(bool present);
    /// Unplugged: `open` and every call on the port fail with EIO.
    Camera& unplugPort();
    Camera& plugInPort();
    /// Makes the `n`th read or write of the port from now go wrong, as `failTransfer`.
    Camera& failPortTransfer(unsigned long n, Fault fault, Lasting lasting = Lasting::once);
    /// Makes the `n`th `tcgetattr` or `tcsetattr` from now fail with `error`.
    Camera& failPortSetup(unsigned long n, int error, Lasting lasting = Lasting::once);
    /// The attributes that the host last set, in either form of the port.
    termios portAttributes() const;
    PortCalls portCalls() const;
    void clearPortCalls();

    // --- faults and records of the FPGA device: camera_faults.cpp ---

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
    /// Makes the `n`th C call of any kind from now go wrong, on the device, on the port, a sleep, a
    /// file that `open` reads by a name from the working directory while the fault waits, or what a
    /// program stands in for itself (`irmsim::otherCall`); as `failTransfer`. A short transfer
    /// spares what it would not cut; if that is the `n`th call the fault is over.
    Camera& failCall(unsigned long n, Fault fault, Lasting lasting = Lasting::once);
    /// C calls since the last `failCall`.
    unsigned long callsMet() const;
    /// Faults that have happened, on device and port.
    unsigned long faults() const;

    /// Makes reads answer `bytes` at `address`, whatever the board measures.
    Camera& poke(std::uint32_t address, std::vector<std::uint8_t> bytes);
    Camera& unpoke(std::uint32_t address);
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

    // What the C calls do, under cameraLock(): the result or, negative, an error number.

    // The device: camera_faults.cpp
    long openCall(int flags);
    long seekCall();
    long readCall(std::uint32_t address, void* buf, std::size_t len);
    long writeCall(std::uint32_t address, const void* buf, std::size_t len);
    long closeCall();
    /// A call that is none of the others', a transfer of `len` bytes if it is one: 0, or a fault's.
    long otherCall(std::size_t* len = nullptr) { return meet(len); }
    bool callFaultWaits() const { return m_callFault.countdown != 0; }

    // The port: camera_port.cpp
    struct PortRead {
        long result;
        Time wait{0}; ///< above 0: no result yet, call again after so much wall time
    };
    long openPortCall(int flags);
    /// `deadline` is empty at first, and kept from call to call.
    PortRead readPortCall(void* buf, std::size_t len, bool blocking, std::optional<Time>& deadline);
    long writePortCall(const void* buf, std::size_t len);
    /// Before attributes are got or set.
    long attributesCall();
    const termios& portAttributesCall() const { return m_port.attributes; }
    void setAttributesCall(int action, const termios& attributes);
    long flushCall(int queue);
    long closePortCall();
    /// For a read or write of a pty: 0 lets `len` bytes through, which a fault may have cut.
    long ptyCall(bool write, std::size_t& len);
    void emptyPtyRead();
    PtyPort* pty() const { return m_pty.get(); }

    /// Wall time that a sleep takes, and its end: camera_time.cpp
    Time wallTimeOfSleep(Time time) const;
    void sleepCall(Time time);
    Time timeCall() const { return m_clock.now(); }

private:
    /// A fault waiting for its call.
    struct Pending {
        unsigned long countdown = 0; // 1: the next call; 0: none
        Fault fault{0, 0};
        Lasting lasting = Lasting::once;
    };
    long replayedPortWrite(const std::uint8_t* bytes, std::size_t n);
    template <typename Change>
    Camera& with(Change change) { // under the lock, at the present time
        const std::lock_guard<std::mutex> hold(cameraLock());
        catchUp();
        change();
        catchUp();
        return *this;
    }
    void startPty();
    void stopPty();
    /// Brings the scenario, temperatures and calibrations up to the clock.
    void catchUp();
    void catchUpTo(Time time);
    void playScenario(Time now);
    void happen(const Event& event);
    void setTemperatures(double shutter, double sensor);
    void setLens(int index);
    void follow(Time time);
    std::vector<Reply> receive(const std::uint8_t* bytes, std::size_t n);
    long passPort(Pending& pending, std::size_t* len);
    /// The result of a transfer of `len` bytes with the device, which a fault may cut or refuse.
    template <typename Transfer>
    long transferred(std::size_t len, Transfer transfer);
    std::optional<Fault> strike(Pending& pending);
    /// Counts a call of any kind, of so many bytes if it transfers any: 0, or what it fails with.
    long meet(std::size_t* len);
    void note(bool write, std::uint32_t address, const void* bytes, std::size_t len, long result);

    Scene m_scene;
    Detector m_detector;
    Clock m_clock;
    Board m_board;
    Shutter m_shutter;
    bool m_shutterHeld = false;
    unsigned long m_calibrations = 0;
    std::optional<WarmUp> m_warmUp;
    Time m_warmUpStart{0};
    Time m_followed{-1}; // the temperatures are this time's
    Scenario m_scenario;

    DetectorCore m_core;
    CoreStandIn m_standIn;
    SerialPort m_port;
    bool m_onPty = false;
    std::unique_ptr<PtyPort> m_pty; // while installed; the pointer is changed under the lock
    bool m_portPresent = true;
    bool m_portPlugged = true;
    PortCalls m_portCalls;
    std::unique_ptr<Replay> m_replay; // both or none
    std::unique_ptr<ReplayPort> m_replayPort;
    bool m_present = true;
    bool m_plugged = true;
    Pending m_transferFault;
    Pending m_seekFault;
    Pending m_portFault;
    Pending m_setupFault;
    Pending m_callFault;
    bool m_callFaultBegun = false;
    unsigned long m_callsMet = 0;
    unsigned long m_faults = 0;
    bool m_logging = true;
    std::deque<Transfer> m_log;
    Calls m_calls;
};

} // namespace irmsim
