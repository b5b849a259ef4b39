#include "shutter.h"

#include <algorithm>

namespace irmsim {

void Shutter::close(Time at) {
    m_due = at + takes;
    m_next = at + m_period;
}

void Shutter::setAutomatic(bool on, Time now) {
    m_automatic = on;
    m_next = now + m_period;
}

void Shutter::setPeriod(Time period, Time now) {
    m_period = std::max(period, Time(std::chrono::seconds(1)));
    m_next = now + m_period;
}

void Shutter::stop() {
    m_due.reset();
    m_automatic = false;
}

std::optional<Time> Shutter::takeDone(Time now) {
    if (m_automatic && !m_due && m_next <= now)
        close(m_next);
    if (!m_due || *m_due > now)
        return std::nullopt;
    const Time done = *m_due;
    m_due.reset();
    return done;
}

} // namespace irmsim
