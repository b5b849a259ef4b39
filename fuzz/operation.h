#pragma once

#include "bytes.h"
#include "camera.h"
#include "check.h"

#include <cstddef>
#include <memory>

namespace irmfuzz {

/// What an operation of the register target works on.
struct Run {
    Fixture& fixture;
    Bytes in;
    Digest out;
    unsigned files = 0;  ///< operations that read files so far
    unsigned frames = 0; ///< operations that read a frame so far
    bool faulty = false; ///< calls of the device may fail

    Host& host() const { return fixture.host; }
};

/// One call of the library, with arguments from the input.
using Operation = void (*)(Run& run);

struct Operations {
    const Operation* all;
    std::size_t count;
};

/// Those of the registers, of readings, of the picture.
Operations boardOperations();
Operations readingOperations();
Operations pictureOperations();

/// A place for a value on the heap, where overruns are seen; sometimes none.
template <typename T>
std::unique_ptr<T> place(Bytes& in) {
    return in.below(8) == 7 ? nullptr : std::make_unique<T>();
}

} // namespace irmfuzz
