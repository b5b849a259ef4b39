#pragma once

#include "clock.h"
#include "detector.h"
#include "frame.h"
#include "scene.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace irmsim {

class Window;

/// What image mode 5 shows of a frame: all but an eighth of the width and of the height on each
/// side.
Rect shownPart(const Frame& frame);

/// The FPGA's register file over a scene and a detector. What the FPGA measures is worked out when
/// it is read; every other register keeps what was written. Addresses that hold nothing read 0. At
/// power-up the FPGA places the display window itself.
/// All multi-byte values are little-endian. Not locked: one thread at a time.
class Board {
public:
    /// Scene and detector are watched, the clock is moved on by frames; they outlive the board.
    Board(const Scene& scene, const Detector& detector, Clock& clock);

    /// A transfer at a register address, as the device makes it. Returns the bytes transferred,
    /// which are always all. Reading does not allocate.
    long read(std::uint32_t address, void* buf, std::size_t len);
    long write(std::uint32_t address, const void* buf, std::size_t len);

    /// A frame read failed: the next begins the frame anew.
    void restartFrame() { m_part = 0; }

    /// Lens code, 0 to 7 (register 0x0F); 3 at first.
    void setLensCode(unsigned code);
    /// Bit 7 of register 0x00, which tells two lenses of code 7 apart.
    void setLensVariant(bool on);
    /// Detector power, bit 7 of register 0x0F; on at first.
    void setPower(bool on) { m_power = on; }
    /// The version text at 0xF0, cut or padded with blanks to 15 bytes.
    void setVersion(const std::string& text);

    /// From now on reads answer `bytes` at `address`, whatever the FPGA measures and the host
    /// writes. The frame counts as lying at 0x4000, each part of it too.
    void poke(std::uint32_t address, std::vector<std::uint8_t> bytes);
    /// Ends the pokes that begin at `address`.
    void unpoke(std::uint32_t address);

    /// The time of a frame passes and, unless the picture is frozen, the next frame comes. A
    /// completely read frame does the same.
    void nextFrame();
    /// Frames since power-up.
    std::uint64_t frameNumber() const { return m_frameNumber; }
    bool frozen() const { return m_frozen; }

    /// From now on this is the present frame, whatever scene and detector are.
    void show(const Frame& frame);

    /// The run of bytes in which a host sets what is measured at an address; without bytes for the
    /// statistics of the whole frame. Nothing for an address at which nothing is measured.
    struct Settings {
        std::uint32_t address;
        std::size_t length;
    };
    std::optional<Settings> settingsOf(std::uint32_t address) const;

    /// The present frame: the frozen one while the picture is frozen.
    const Frame& frame();
    /// The present frame's AD at a pixel; 0 outside it.
    std::uint16_t ad(int x, int y) { return frame().at(x, y); }
    /// The byte last written at an address below 0x4000.
    std::uint8_t kept(std::uint32_t address) const;

private:
    struct Area {
        bool alive = false;
        unsigned boundsSeen = 0; // bit per bound written since the block was another's
        std::uint64_t measured = 0;
        Statistics values;
    };
    struct Poke {
        std::uint32_t address;
        std::vector<std::uint8_t> bytes;
    };

    void readFrame(std::uint8_t* out, std::size_t len);
    void refreshStream(int width, int height);
    void answerStatistics(Window& window);
    void answerPoints(Window& window);
    void answerAreas(Window& window);
    void answerSensors(Window& window) const;
    void takeOwnership(std::uint32_t address, std::size_t len);
    void endAreasIn(std::uint32_t address, std::size_t len);
    void endPointsIn(std::uint32_t address, std::size_t len);
    void refreshStatistics();
    std::uint16_t word(std::uint32_t address) const;

    const Scene& m_scene;
    const Detector& m_detector;
    Clock& m_clock;

    std::array<std::uint8_t, 0x4000> m_kept{};
    std::array<bool, 17> m_points{}; // which blocks are points
    std::array<Area, 17> m_areas{};
    std::array<std::uint8_t, 15> m_version{};
    unsigned m_lensCode = 3;
    bool m_power = true;
    std::vector<Poke> m_pokes;

    std::uint64_t m_frameNumber = 0;
    bool m_frozen = false;
    bool m_given = false; // the frame is that of show()

    // Counts of the scene without noise, and the frame made of them.
    std::vector<double> m_counts;
    std::uint64_t m_countsScene = 0;
    std::uint64_t m_countsDetector = 0;
    Frame m_frame;
    std::uint64_t m_frameOf = 0;    // frame number that m_frame was made for
    std::uint64_t m_frameStamp = 0; // changes with m_frame

    std::uint64_t m_measured = 0; // the stamp that these belong to
    Statistics m_whole;
    Statistics m_shown;
    std::uint64_t m_peakOf = 0; // the stamp that the peak belongs to
    std::uint16_t m_peak = 0;
    std::vector<std::uint32_t> m_bins;

    std::vector<std::uint8_t> m_stream; // the frame being read, in its present size
    std::uint64_t m_streamOf = 0;       // the frame stamp that it was made for
    int m_streamWidth = 0;
    std::size_t m_part = 0;
};

} // namespace irmsim
