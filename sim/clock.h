#pragma once

#include <chrono>

namespace irmsim {

/// Simulated time, from power-up on.
using Time = std::chrono::nanoseconds;

/// `seconds` as a time; negative ones and NaN are 0, more than 1e9 are 1e9.
Time timeOf(double seconds);
double secondsOf(Time time);

/// The simulation's time: frames read divided by the frame rate, plus what calls take. So what a
/// simulated camera does repeats exactly, however slow the computer is. Tied to the wall clock it
/// is wall time times a factor instead, and neither frames nor calls move it. Not locked.
class Clock {
public:
    Time now() const;

    /// A frame was read.
    void passFrame();
    /// A call took this long.
    void pass(Time time);
    /// Skips this much time, tied or not.
    void skip(Time time);

    /// Frames a second, 25 at first; what is not above 0 changes nothing.
    void setFrameRate(double hertz);
    Time framePeriod() const { return m_framePeriod; }

    /// From now on `factor` times as fast as the wall clock, going on from the present time; a
    /// factor that is not above 0 unties.
    void tie(double factor);
    bool tied() const { return m_factor > 0; }
    /// Wall time that a simulated time takes when tied.
    Time onTheWall(Time time) const;

private:
    Time m_base{0}; // when tied, the time at m_tiedAt
    Time m_framePeriod{40000000};
    double m_factor = 0;
    std::chrono::steady_clock::time_point m_tiedAt;
};

} // namespace irmsim
