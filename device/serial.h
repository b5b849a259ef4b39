#pragma once

/// @file
/// The link to the detector core.

#include "mutex.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <pthread.h>

class FPGA;

/// One command before framing.
struct Data_t {
    std::uint8_t cmd;          ///< command code
    std::uint8_t len;          ///< bytes of payload, at most 122
    const unsigned char* data; ///< payload, the caller's; may be null when `len` is 0
};

// Hosts share this layout.
static_assert(sizeof(Data_t) == 2 * sizeof(void*) && offsetof(Data_t, len) == 1 &&
              offsetof(Data_t, data) == sizeof(void*));

/// Length of the frame last built, by the worker too: only steady while no command is under way.
/// For the host; not read by the library.
[[gnu::visibility("default")]] extern int g_writeData_length;
/// Reply length that the last query asked for. For the host; not read by the library.
[[gnu::visibility("default")]] extern int g_readData_length;

/// The link to the detector core over a serial port (115200 baud, 8 data bits, no parity, 1 stop
/// bit, raw), and the core's commands. The frames are `irmcore::frame`'s.
///
/// *Commands* go through one slot: the caller fills it and returns, a worker thread sends it and
/// throws the acknowledgement away. As long as there is a worker and a port, the command last
/// filled is always sent, exactly once; one that was not sent yet is replaced by the next.
/// *Queries* run on the calling thread, for up to some 20 s while the core is silent (0.1 s an
/// empty read, 201 of them), and report 0 for what did not arrive.
///
/// A query throws away what lies in the port before it asks, so that a reply that came too late
/// for the query before is not taken for its own. A late reply that arrives during the next query
/// still is.
///
/// Thread-safe: commands and queries, `shutDown` apart, which sounds the alarm through the FPGA
/// and is thread-bound. So is the rest (port set-up, frames, transfers): it uses the port and the
/// buffers without the lock, so not while a command or query is under way. One link a process:
/// the slot is shared by all. A command given shortly
/// before `closeSerial` may be lost with the port.
class [[gnu::visibility("default")]] Serial {
public:
    /// Opens and sets up the port `path` (the caller's, kept as a pointer) and starts the worker.
    /// What fails is reported on standard error; the object can be used all the same. `fpga` may be
    /// null: then `shutDown` sounds no alarm.
    Serial(FPGA * fpga, const char* path);
    /// Stops the worker and closes the port. A command that was filled and not yet sent still
    /// leaves, without its acknowledgement; a worker that waits for the core stops within a read.
    ~Serial();
    Serial(const Serial&) = delete;
    Serial& operator=(const Serial&) = delete;

    // --- port and frames: device/serial.cpp ---

    /// Input and output speed, one of 300, 1200, 2400, 4800, 9600, 19200, 38400 and 115200 baud;
    /// others change nothing.
    void set_speed(int baud);
    /// `databits` 7 or 8, `stopbits` 1 or 2, `parity` N, O, E or S (space) in either case. Returns
    /// 0, or -1 when an argument is refused or the port does not take it. Flow control and all that
    /// changes bytes on the way are off then, whatever an earlier user of the port left.
    int set_Parity(int databits, int stopbits, int parity);
    /// Builds the frame of a command to be sent. Returns its length, or 0 with nothing built when
    /// the payload is longer than 122 bytes.
    int packData(const Data_t& d);
    /// Exclusive or of `n` bytes at `p`; 0 when `n` is not above 0.
    unsigned char generateSum(unsigned char* p, int n);
    /// Where the first `len` bytes last received hold a reply's header, or -1. `buf` is not used.
    int unpackData(unsigned char* buf, int len);
    /// One write. Returns the bytes written, or -1 after "write serial failed".
    int writeData(const void* buf, const int& len);
    /// Clears `len` bytes at `buf` and receives up to `len` (at most 128) into the link's buffer,
    /// until they are complete or 201 reads came back empty. Returns the bytes received.
    int readData(void* buf, int len);
    /// Sends the command in the slot once more, be it one of an earlier link; several calls may
    /// become one. Waits while the lock is held for something else than an exchange. Returns what
    /// the wake-up's last broadcast did, 0.
    int signalThread();
    /// The worker's body.
    static void* workThread(Serial * s);
    /// Detaches the port without closing it; transfers fail until `restoreSerial`.
    void closeSerial();
    /// Attaches the port that `closeSerial` detached; none if there was no such call.
    void restoreSerial();

    // --- commands, 0 each or as said: device/serial_commands.cpp ---

    int autoShutter(bool on); ///< lets the core calibrate by itself, or not
    int insideShutter();      ///< calibration with the inside shutter
    int insideShutterNoVSK(); ///< the same without the VSK
    int outsideShutter();     ///< calibration with a shutter held before the lens
    int setIntTime(int range, unsigned short t); ///< integration time, raw; `range` is not sent
    int setVSK(unsigned short v);                ///< VSK, raw
    /// Integration time and the low 16 bits of `vsk`, raw. Returns the wake-up's result.
    int changeTempRange(unsigned short intTime, unsigned int vsk);
    /// Sounds the alarm for 150 ms and shuts the core down. Returns the wake-up's result.
    int shutDown();

    // --- queries, 0 or as said: device/serial_commands.cpp ---

    int readDeltaAD(unsigned int* out);     ///< drift value
    int readSerialVSK(unsigned short* out); ///< VSK in use; -1 with 0 in `out` without an answer
    int readSerialSum(unsigned short* out); ///< a sum
    int readSensor(unsigned short* out);    ///< a sensor's value
    int readCoreCpuVersion(char* out);      ///< version text, 15 bytes, not terminated
    int readCoreFPGAVersion(char* out);     ///< version text, 15 bytes, not terminated

    // --- without effect ---

    void readPowerStatus();            ///< does nothing
    void readSensorTemp(unsigned int); ///< does nothing
    void setTempRange(int code);       ///< does nothing

protected:
    const char* m_path;       ///< the caller's
    std::atomic<int> m_fd;    ///< negative while the port is not open or detached
    unsigned char* m_sendBuf; ///< 128 bytes, owned
    unsigned char* m_recvBuf; ///< 128 bytes, owned
    pthread_t m_thread;       ///< the worker
    std::atomic<bool> m_stop; ///< tells the worker to end
    Mutex m_mutex;            ///< for the slot, the buffers and the port
    FPGA* m_fpga;             ///< not owned

private:
    struct Private;

    [[gnu::visibility("hidden")]] void work();
    [[gnu::visibility("hidden")]] int wake();
    [[gnu::visibility("hidden")]] bool letWorkerSee();
    [[gnu::visibility("hidden")]] void fillSlot(unsigned char code, const unsigned char* payload,
                                                unsigned char length);
    [[gnu::visibility("hidden")]] int command(unsigned char code, const unsigned char* payload,
                                              unsigned char length);
    [[gnu::visibility("hidden")]] unsigned char query(const Data_t& question, int payloadBytes,
                                                      void* out);

    Private* m_private;
};
