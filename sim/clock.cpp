#include "clock.h"

#include <algorithm>
#include <cmath>

namespace irmsim {

namespace {

constexpr double nanosecond = 1e-9;
constexpr double longest = 1e9; // s

} // namespace

Time timeOf(double seconds) {
    const double cut = std::fmin(std::fmax(seconds, 0.0), longest); // NaN becomes 0
    return Time(std::llround(cut / nanosecond));
}

double secondsOf(Time time) { return static_cast<double>(time.count()) * nanosecond; }

Time Clock::now() const {
    if (!tied())
        return m_base;
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - m_tiedAt;
    return m_base + timeOf(wall.count() * m_factor);
}

void Clock::passFrame() { pass(m_framePeriod); }

void Clock::pass(Time time) {
    if (!tied())
        m_base += time;
}

void Clock::skip(Time time) { m_base += time; }

void Clock::setFrameRate(double hertz) {
    if (hertz > 0)
        m_framePeriod = std::max(timeOf(1.0 / hertz), Time(1));
}

void Clock::tie(double factor) {
    m_base = now();
    m_tiedAt = std::chrono::steady_clock::now();
    m_factor = factor > 0 ? factor : 0;
}

Time Clock::onTheWall(Time time) const {
    return tied() ? timeOf(secondsOf(time) / m_factor) : Time(0);
}

} // namespace irmsim
