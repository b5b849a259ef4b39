#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace irmsim {

/// A frame of the core's protocol, as it came.
struct RawFrame {
    std::uint8_t code;
    std::vector<std::uint8_t> payload;
    bool intact; ///< length, checksum and end byte are right
};

/// Finds the frames in what a host sends:
///
///     FF A5 code length payload... checksum 5A
///
/// with the exclusive or of code, length and payload as checksum and at most 122 bytes of payload.
/// Bytes that begin no frame are passed over. After a frame that is not intact the search goes on
/// with its second byte, so that it can swallow no other. Not locked.
class FrameReader {
public:
    /// Takes bytes in.
    void feed(const std::uint8_t* bytes, std::size_t n);
    /// The next frame that has come completely, intact or not.
    std::optional<RawFrame> next();
    /// Gives up a frame that has begun; false when there is none.
    bool giveUp();

private:
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_at = 0; // where the search goes on
};

} // namespace irmsim
