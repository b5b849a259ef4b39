#include "courierreader.h"

#include "../sim/observer.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>
#include <utility>

namespace irmcore::app {

namespace {

using irmsim::Observation;
using irmsim::WireHeader;

constexpr std::size_t room = std::size_t{1} << 20;

std::size_t transferred(const WireHeader& header) {
    const auto call = static_cast<Observation::Call>(header.call);
    const bool transfer = call == Observation::Call::read || call == Observation::Call::write;
    return transfer && header.result > 0 ? static_cast<std::size_t>(header.result) : 0;
}

bool isRecord(const WireHeader& header) {
    const std::size_t count = transferred(header);
    return header.call <= static_cast<std::uint8_t>(Observation::Call::flush) &&
           header.size % irmsim::wireAlign == 0 && header.size >= sizeof header + count &&
           header.size - sizeof header - count < irmsim::wireAlign;
}

} // namespace

std::size_t Heard::count() const { return transferred(header); }

CourierReader::CourierReader(Hear hear) : m_hear(std::move(hear)), m_buffer(room) {}

CourierReader::State CourierReader::readFrom(int descriptor) {
    if (m_broken)
        return State::broken;
    const ssize_t n = ::read(descriptor, m_buffer.data() + m_end, m_buffer.size() - m_end);
    if (n < 0 && errno == EINTR)
        return State::more;
    if (n < 0 && errno == EAGAIN)
        return State::empty;
    if (n == 0)
        return State::ended;
    m_end += n > 0 ? static_cast<std::size_t>(n) : 0;
    const State state = n < 0 ? State::broken : take();
    m_broken = state == State::broken;
    return state;
}

CourierReader::State CourierReader::take() {
    std::size_t wanted = sizeof(WireHeader);
    while (m_end - m_begin >= sizeof(WireHeader)) {
        Heard heard{};
        std::memcpy(&heard.header, m_buffer.data() + m_begin, sizeof heard.header);
        if (!isRecord(heard.header))
            return State::broken;
        wanted = heard.header.size;
        if (m_end - m_begin < wanted)
            break;
        heard.bytes = m_buffer.data() + m_begin + sizeof heard.header;
        m_hear(heard);
        m_begin += wanted;
        wanted = sizeof(WireHeader);
    }
    // The rest to the front, with room for the whole of it.
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
    m_end -= m_begin;
    m_begin = 0;
    if (m_buffer.size() < wanted + room / 2)
        m_buffer.resize(wanted + room / 2);
    return State::more;
}

} // namespace irmcore::app
