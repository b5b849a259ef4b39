#pragma once

#include <cstddef>
#include <cstdint>

/// Frames of the detector core's serial protocol. Pure: bytes in, bytes out.
///
///     to the core:   FF A5 code length payload... checksum 5A
///     from the core: 7F A5 ..  code ..  payload... .. ..
///
/// The checksum is the exclusive or of code, length and payload. Values are little-endian. Of a
/// reply only the code's echo and the payload are looked at.
namespace irmcore::frame {

inline constexpr std::size_t bufferBytes = 128; ///< the longest frame or reply
inline constexpr std::size_t overhead = 6;      ///< of a frame, beside its payload
inline constexpr std::size_t maxPayload = bufferBytes - overhead;
inline constexpr std::size_t replyOverhead = 7; ///< of a reply, beside its payload
inline constexpr std::size_t echoOffset = 3;    ///< of the code's echo in a reply
inline constexpr std::size_t payloadOffset = 5; ///< of the payload in a reply

/// Exclusive or of `n` bytes; 0 of none.
unsigned char checksum(const unsigned char* bytes, std::size_t n);

/// Builds a frame at `out`, which has room for `length` + 6 bytes. Returns that number. A null
/// payload counts as zeros.
std::size_t build(unsigned char* out, unsigned char code, const unsigned char* payload,
                  unsigned char length);

/// Where the first `limit` bytes of a reply buffer have the header 7F A5; -1 when nowhere.
/// `limit` is at most 128, and so is the buffer.
int findReply(const unsigned char* buffer, int limit);

} // namespace irmcore::frame
