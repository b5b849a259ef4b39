#pragma once

namespace irmtest {

/// From now on a test that takes longer than `seconds` ends the program by SIGABRT, once every
/// thread has shown on standard error where it is: a hang that comes once in a thousand runs says
/// nothing else of itself. What a test captures of standard error goes there all the same.
void losePatienceAfter(unsigned seconds);

} // namespace irmtest
