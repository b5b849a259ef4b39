#include "framereader.h"

namespace irmsim {

namespace {

constexpr std::uint8_t first = 0xFF;
constexpr std::uint8_t second = 0xA5;
constexpr std::uint8_t last = 0x5A;
constexpr std::size_t head = 4; // before the payload
constexpr std::size_t around = 6;
constexpr std::size_t longestPayload = 122;

} // namespace

void FrameReader::feed(const std::uint8_t* bytes, std::size_t n) {
    m_bytes.erase(m_bytes.begin(), m_bytes.begin() + static_cast<std::ptrdiff_t>(m_at));
    m_at = 0;
    m_bytes.insert(m_bytes.end(), bytes, bytes + n);
}

std::optional<RawFrame> FrameReader::next() {
    const auto left = [this] { return m_bytes.size() - m_at; };
    while (left() > 0 && (m_bytes[m_at] != first || (left() > 1 && m_bytes[m_at + 1] != second)))
        ++m_at;
    if (left() < head)
        return std::nullopt;
    const std::uint8_t* frame = m_bytes.data() + m_at;
    const std::size_t length = frame[3];
    if (length > longestPayload) {
        ++m_at;
        return RawFrame{frame[2], {}, false};
    }
    if (left() < length + around)
        return std::nullopt;
    std::uint8_t sum = 0;
    for (std::size_t i = 2; i < head + length; ++i)
        sum = static_cast<std::uint8_t>(sum ^ frame[i]);
    const bool intact = frame[head + length] == sum && frame[head + length + 1] == last;
    m_at += intact ? length + around : 1;
    return RawFrame{frame[2], {frame + head, frame + head + length}, intact};
}

bool FrameReader::giveUp() {
    const bool begun = m_at < m_bytes.size();
    m_bytes.clear();
    m_at = 0;
    return begun;
}

} // namespace irmsim
