#pragma once

#include "board.h"
#include "clock.h"
#include "tape.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace irmsim {

/// A recorded session on the FPGA device, served to a host that may ask for other things than the
/// recorded one did.
///
/// A request that is the next recorded one is answered as then, at the time of then. Otherwise the
/// same request is looked for among those up to the next frame, at most 40 ms of recorded time
/// ahead; what lies before it is passed over. A request that is not there either moves nothing,
/// unless the host's sleeps have made the time pass beyond recorded calls: these are passed over.
/// Frames come one after the other, whatever lies between them.
///
/// A read that is not recorded at its place gives, byte by byte: what the host wrote, if that is
/// not what was recorded; what is measured with the host's own spots and areas, from the last whole
/// frame passed; the last recorded value passed; the first one to come. A byte for which there is
/// none of these makes it fail with EIO. Not locked.
class Replay {
public:
    /// The board holds what the host writes, and measures. Board and clock outlive the replay.
    Replay(const std::vector<Observation>& calls, Board& board, Clock& clock, bool loop);

    // The calls, as the camera's: a result or a negative error number.
    long open();
    long seek();
    long read(std::uint32_t address, void* buf, std::size_t len);
    long write(std::uint32_t address, const void* buf, std::size_t len);

private:
    using Call = Observation::Call;
    static constexpr std::size_t registers = 0x4000;
    static constexpr std::size_t none = ~std::size_t{0};

    /// A recorded call. One on the frame has its part; it is `whole` if all the parts are there.
    struct Step {
        Observation call;
        int part = -1;
        bool whole = false;
    };
    /// What is recorded of a register's byte, as far as the recording has been passed.
    struct Byte {
        std::uint8_t value = 0;   // read or written
        std::uint8_t written = 0; // by the recorded host
        std::uint8_t first = 0;   // that it read, wherever in the recording
        bool known = false;
        bool isWritten = false;
        bool everRead = false;
        bool differs = false; // the present host has written something else
    };
    using Place = std::pair<std::uint64_t, std::uint32_t>; // settings, offset from their address

    void findFrames();
    Time timeOf(std::size_t step) const { return m_steps[step].call.time + m_shift; }
    std::size_t match(const Observation& wanted);
    void passThrough(std::size_t step);
    void pass(const Step& step);
    void passFrame(const Step& step);
    void keepMeasured(std::uint32_t address, std::uint8_t value);
    std::optional<std::uint64_t> settingsPassed(const Board::Settings& settings) const;
    std::uint64_t settingsOfHost(const Board::Settings& settings) const;
    bool restart();
    void sayEnd();
    long readFrame(std::uint8_t* out, std::size_t len);
    bool holdFrame(bool next);
    bool nextWholeFrame();
    void deliverPart(std::uint8_t* out, std::size_t len, int part);
    std::optional<std::uint8_t> byteAt(std::uint32_t address, std::uint8_t computed) const;
    bool withinFrame(const Board::Settings& settings) const;
    void complain(std::uint32_t address);

    std::vector<Step> m_steps;
    Board& m_board;
    Clock& m_clock;
    bool m_loop;
    std::size_t m_next = 0; // the first step that has not been passed
    Time m_shift{0};        // from recorded to present time
    bool m_saidEnd = false;

    std::vector<Byte> m_bytes;
    std::vector<std::uint8_t> m_answer;       // room for one
    std::map<Place, std::uint8_t> m_measured; // since the last whole frame passed
    std::set<std::uint32_t> m_complained;

    std::uint64_t m_frames = 0;         // whole ones passed
    std::vector<std::uint8_t> m_parts;  // of the frame being passed
    int m_hostPart = 0;                 // that the host reads next
    std::vector<std::uint8_t> m_stream; // the last whole frame, in parts
};

} // namespace irmsim
