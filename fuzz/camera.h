#pragma once

#include "check.h"
#include "core/fpga.h"
#include "core/vsk.h"
#include "sim/camera.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace irmfuzz {

/// The link with what is needed to wait for its worker.
struct Link : Serial {
    explicit Link(FPGA* fpga) : Serial(fpga, irmsim::serialPortPath) {}
    using Serial::m_mutex, Serial::m_recvBuf, Serial::m_sendBuf;
};

/// The façade with its state in view.
struct Host : FPGA {
    /// Its link becomes one of ours.
    Host();

    using FPGA::m_coreVersionNum, FPGA::m_irPara, FPGA::m_level, FPGA::m_modifyShutterTemp;
    using FPGA::m_queryTempHandler, FPGA::m_span, FPGA::m_sysTempHandler, FPGA::m_sysTempSetup,
        FPGA::m_tempInfoTab;
    using FPGA::m_tempRange;

    /// All that operations change, in the object and beside it, but for what is open.
    struct State;
    State state() const;
    void take(const State& state);

    Link* link;
};

struct Host::State {
    TempHandler sysTempHandler, queryTempHandler;
    COLOR_TABLE paletteIndex;
    std::array<_yuv_item, irmcore::colorTableSize> colorTable;
    bool saturation, isoSwitch, freeze, control;
    ISOHandler isoHandler;
    IrTempStru isoMin, isoMax;
    unsigned short level, span, vskValue0, vskValue1;
    TempSetup sysTempSetup, fileTempSetup;
    Mode_t levelSpanMode;
    float lenTemp, shutterTemp, sensorTemp, modifyValue, deltaTemp, modifyShutterTemp;
    float vskTemp, minModifyTemp, maxModifyTemp;
    int lenIndex, tempRange, coreVersionNum, imageMode, maxAd, minAd;
    TempInfoTab tempInfoTab;
    IRPara irPara;
    std::array<float, irmcore::modifyEntries> modify;
};

/// What stands in for the detector core: it answers each frame with what it was given, and sees to
/// it that frames are well-formed.
class Line {
public:
    /// What comes back for the next writes; each of them takes one.
    std::vector<std::vector<irmsim::Reply>> replies;
    bool anyBytes = false;          ///< what is written need not be a frame
    std::vector<std::uint8_t> last; ///< what was written last
    irmsim::Time latest{0};         ///< until all that was given has come in, at most

    std::vector<irmsim::Reply> receive(const std::uint8_t* bytes, std::size_t n);
};

/// A simulated camera with a façade on it, kept from execution to execution: each façade would
/// start a thread and read its files. The working directory is a private one, with a calibration
/// table for lens 0 in ranges 0 and 1.
class Fixture {
public:
    static Fixture& get();

    /// Brings camera and façade back to how they began.
    void reset();
    /// Waits until the link's worker has made `writes` writes since `mark`, and is done with them.
    void waitForWorker(unsigned long mark, unsigned long writes);
    /// Waits until the last frame built has this code, and is written; some frame since has.
    void waitForFrame(std::uint8_t code);
    unsigned long portWrites() const { return camera.portCalls().write; }
    /// What lies in the port or is on its way there is gone.
    void emptyPort();

    irmsim::Camera camera;
    Line line;
    Host& host;

private:
    Fixture();
    const Host::State m_start;
};

/// The measuring parameters in use, and what the model derives from them, are in range.
void requireParameters(Host& host, Digest& out);

/// Writes a file below the working directory, with another time stamp each time and an old one: one
/// that has just been written would be waited for.
void writeFile(const char* path, const void* bytes, std::size_t n);

} // namespace irmfuzz
