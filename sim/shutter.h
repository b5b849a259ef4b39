#pragma once

#include "clock.h"

#include <optional>

namespace irmsim {

/// When the core calibrates: the shutter closes on a command, stays closed for 0.3 s, and then the
/// calibration is done. A command meanwhile begins those 0.3 s anew. With automatic shutter it also
/// closes by itself, every 60 s after it last closed. Keeps times only. Not locked.
class Shutter {
public:
    /// How long a calibration takes.
    static constexpr Time takes = std::chrono::milliseconds(300);

    /// A calibration begins at `at`.
    void close(Time at);
    /// Switches automatic shutter; the first closing is a period later. On at first.
    void setAutomatic(bool on, Time now);
    /// The period of automatic shutter, at least 1 s.
    void setPeriod(Time period, Time now);
    bool automatic() const { return m_automatic; }
    /// The core goes off: what was planned is not done.
    void stop();

    /// When the earliest calibration that has been done by `now` was done; that one is then taken
    /// off the plan.
    std::optional<Time> takeDone(Time now);
    /// Whether the shutter is closed, once `takeDone(now)` has nothing more.
    bool closed() const { return m_due.has_value(); }

private:
    std::optional<Time> m_due;
    bool m_automatic = true;
    Time m_period = std::chrono::seconds(60);
    Time m_next = std::chrono::seconds(60); // automatic closing
};

} // namespace irmsim
