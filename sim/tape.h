#pragma once

#include "observer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace irmsim {

/// A recorded session in the memory of the program that it is replayed to: records of wire.h, one
/// after the other. The observations point into the bytes.
struct Tape {
    std::vector<Observation> calls;

    /// The records in memory that outlives the tape and is aligned as they are. Nothing, and a text
    /// in `error`, for anything else.
    static std::optional<Tape> of(const std::uint8_t* bytes, std::size_t size, std::string& error);

    /// Those of a file, which stays mapped to the process's end.
    static std::optional<Tape> map(int descriptor, std::string& error);
};

} // namespace irmsim
