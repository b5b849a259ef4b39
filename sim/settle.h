#pragma once

#include <chrono>

namespace irmsim {

/// Lets the other threads of this process finish what they are at: returns when all of them sleep,
/// or after `limit` of wall time, at most a second. Time that is only simulated passes at once, and
/// a thread that was given work before must not come too late for that. Without /proc, where
/// threads cannot be seen, it returns after a moment.
void settle(std::chrono::nanoseconds limit);

} // namespace irmsim
