#pragma once

class Serial;

/// Does nothing; kept for programs that were linked against it.
[[gnu::visibility("default")]] void readSpotTemp(int);
/// Does nothing; kept for programs that were linked against it.
[[gnu::visibility("default")]] void serialTest(Serial* serial);
