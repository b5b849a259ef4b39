#pragma once

#include "clock.h"
#include "detector.h"
#include "framereader.h"
#include "shutter.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace irmsim {

/// Integration times that the sample camera's settings give ranges 0 and 1: by them the core tells
/// the ranges.
inline constexpr std::array<std::uint16_t, 2> rangeIntTimes{120, 210};

/// What the core answers to queries.
struct CoreAnswers {
    std::string cpuVersion = "irmsim CPU 1.0"; ///< cut or padded with blanks to 15 bytes
    std::string fpgaVersion = "irmsim GATE 1.0";
    std::uint16_t sum = 30000;
    std::uint16_t sensor = 6784;
    std::uint32_t drift = 70000;
};

/// A frame that the core received.
struct CoreFrame {
    std::uint8_t code;
    std::vector<std::uint8_t> payload;
    double seconds; ///< simulated time of its last byte
    bool good;      ///< intact and understood; another one is not carried out and not answered
};

/// Frames received: the good ones by their code, and the others.
struct CoreCounts {
    std::array<unsigned long, 256> good{};
    unsigned long bad = 0;
    unsigned long allGood() const;
};

/// What the core sends, and how long after the frame that it answers.
struct Reply {
    std::vector<std::uint8_t> bytes;
    Time after{0};
};

/// What is wrong with the core's answers.
struct CoreFaults {
    bool silent = false; ///< carries everything out, answers nothing
    Time late{0};        ///< every answer comes that much later
    int garbled = -1;    ///< the byte of every answer that comes inverted; negative for none
};

/// The detector core behind the serial port: bytes in, replies out. It keeps integration time and
/// VSK, sets the detector's range, and closes the shutter. Every command it knows is answered, at
/// once and with `payload` + 7 bytes:
///
///     7F A5 00 code length payload... checksum 5A
///
/// with the exclusive or of the bytes from offset 2 to the payload's end as checksum. A frame that
/// is broken off for a second is given up. Not locked.
class DetectorCore {
public:
    /// Detector and shutter outlive the core.
    DetectorCore(Detector& detector, Shutter& shutter);

    /// Off and on again: settings as at first, and a calibration begins.
    void powerUp(Time now);
    bool on() const { return m_on; }

    /// Bytes from the host.
    std::vector<Reply> receive(const std::uint8_t* bytes, std::size_t n, Time now);

    void setAnswers(const CoreAnswers& answers) { m_answers = answers; }
    void setIntTime(std::uint16_t time) { m_intTime = time; }
    std::uint16_t intTime() const { return m_intTime; }
    std::uint16_t vsk() const { return m_vsk; }

    CoreFaults faults;

    /// The frames since the last `clearFrames`, the latest million of them, and their counts.
    const std::deque<CoreFrame>& frames() const { return m_frames; }
    const CoreCounts& counts() const { return m_counts; }
    void clearFrames();

private:
    bool obey(const RawFrame& frame, Time now, std::vector<std::uint8_t>& answer);
    void takeIntTime(const RawFrame& frame, Time now);

    Detector& m_detector;
    Shutter& m_shutter;
    FrameReader m_reader;
    Time m_lastByte{0};
    bool m_on = true;
    std::uint16_t m_intTime = rangeIntTimes[0];
    std::uint16_t m_vsk;
    CoreAnswers m_answers;
    std::deque<CoreFrame> m_frames;
    CoreCounts m_counts;
};

} // namespace irmsim
