#include "frame.h"

#include <algorithm>

namespace irmcore::frame {

unsigned char checksum(const unsigned char* bytes, std::size_t n) {
    unsigned char sum = 0;
    for (std::size_t i = 0; i < n; ++i)
        sum = static_cast<unsigned char>(sum ^ bytes[i]);
    return sum;
}

std::size_t build(unsigned char* out, unsigned char code, const unsigned char* payload,
                  unsigned char length) {
    out[0] = 0xFF;
    out[1] = 0xA5;
    out[2] = code;
    out[3] = length;
    if (payload != nullptr)
        std::copy_n(payload, length, out + 4);
    else
        std::fill_n(out + 4, length, static_cast<unsigned char>(0));
    out[4 + length] = checksum(out + 2, length + std::size_t{2});
    out[5 + length] = 0x5A;
    return length + overhead;
}

int findReply(const unsigned char* buffer, int limit) {
    const int last = std::min(limit, static_cast<int>(bufferBytes) - 1); // room for both bytes
    for (int i = 0; i < last; ++i)
        if (buffer[i] == 0x7F && buffer[i + 1] == 0xA5)
            return i;
    return -1;
}

} // namespace irmcore::frame
