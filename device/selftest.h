#pragma once

/// @file
/// Hooks of the board's self-test.

class Serial;

/// Does nothing; a hook for the board's self-test.
[[gnu::visibility("default")]] void readSpotTemp(int);
/// Does nothing; a hook for the board's self-test.
[[gnu::visibility("default")]] void serialTest(Serial* serial);
