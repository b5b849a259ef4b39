#pragma once

#include "../../core/fpga.h"
#include "../driver.h"
#include "coreline.h"

#include <functional>

namespace irmcore::view {

/// The pattern that keeps readings right, as docs/driving.md has it, in steps that never wait: for
/// neither the time that the detector core takes, nor its answers. Thread-bound, as the host.
class Rounds {
public:
    struct Wanted {
        int range = 0;
        bool frozen = false;
        bool calibrates = true; ///< a round whenever one is due
    };

    /// `clock` tells the camera's time in s. The host outlives it.
    Rounds(FPGA& host, std::function<double()> clock);

    /// Sets the core up: once, on a fresh host.
    void start();
    /// Does what is to be done now.
    void follow(const Wanted& wanted);
    /// A round as soon as it can be.
    void calibrate() { m_due = true; }
    /// Something else has made the camera calibrate: readings are wrong until the next round.
    void mistrust();
    /// Gives window and shutter back to the camera, and lets the picture go on.
    void handBack();

    /// Frames show the scene, and not the shutter.
    bool shows() const;
    /// Readings are right: the core has calibrated, and answered after it.
    bool settled() const {
        return m_settled && !m_overdue && m_driftFits && !m_driftDropped && m_usable && m_lens >= 0;
    }
    /// The camera's own temperatures come; without them there is no calibration.
    bool measuresItself() const { return m_measuresItself; }
    /// Something wished waits: for an answer of the core, or for the picture to go on.
    bool waits() const { return m_waits; }
    bool frozen() const { return m_frozen; }
    int range() const { return m_range; }    ///< whose table is in use
    int lens() const { return m_lens; }      ///< -1: none that is known
    bool usable() const { return m_usable; } ///< the table
    CoreState core() const { return m_core.state(); }
    int calibrations() const { return m_driver.rounds(); }
    double sinceCalibration() const; ///< s; 0 before the first

private:
    enum class Phase {
        started,  ///< the core has its integration time
        asked,    ///< whether it is there
        released, ///< it has left the shutter to the host
        changed,  ///< it has another range
        closed,   ///< it calibrates
        running,
    };
    void run(const Wanted& wanted);
    void order(bool freezes);
    void finishRound();
    bool takeTemperatures();
    bool followDrift();
    void takeRange();
    void freeze(bool on);
    void followLens();
    void followCore();
    void hear();
    void ask();
    void enter(Phase phase);
    bool over() const { return m_clock() >= m_until; }

    FPGA& m_host;
    std::function<double()> m_clock;
    app::Driver m_driver;
    CoreLine m_core;
    Phase m_phase = Phase::running;
    double m_until = 0.0;            ///< s, of a phase that waits
    CoreLine::Ticket m_question = 0; ///< whose answer the phase waits for
    bool m_heard = false;            ///< that answer
    double m_askedAt = 0.0;          ///< s
    double m_nextQuestion = 0.0;     ///< s
    bool m_overdue = false;          ///< a round, and it has not been made
    bool m_due = false;              ///< a round
    bool m_freezes = false;          ///< after the round
    double m_nextRound = 0.0;        ///< s, not before
    bool m_shutterIsOurs = false;
    bool m_rangeIsKnown = true; ///< the core's
    bool m_wasThere = false;    ///< the core, at the last look
    bool m_measuresItself = true;
    bool m_driftDropped = false; ///< by a freeze that no round went before
    bool m_settled = false;
    bool m_driftFits = true; ///< to the temperatures
    bool m_waits = false;
    bool m_frozen;
    int m_range;
    int m_newRange = 0;
    int m_lens;
    bool m_usable;
};

} // namespace irmcore::view
