#include "serialport.h"

#include <algorithm>
#include <utility>

namespace irmsim {

SerialPort::SerialPort() {
    attributes.c_iflag = ICRNL | IXON;
    attributes.c_oflag = OPOST | ONLCR;
    attributes.c_cflag = CS8 | CREAD | HUPCL;
    attributes.c_lflag = ISIG | ICANON | ECHO | ECHOE | ECHOK | IEXTEN;
    attributes.c_cc[VMIN] = 1;
    cfsetispeed(&attributes, B9600);
    cfsetospeed(&attributes, B9600);
}

void SerialPort::arrive(std::vector<std::uint8_t> bytes, Time due) {
    if (!m_arrivals.empty())
        due = std::max(due, m_arrivals.back().due);
    m_arrivals.push_back({std::move(bytes), due, 0});
}

std::size_t SerialPort::take(std::uint8_t* out, std::size_t room, Time now) {
    std::size_t taken = 0;
    while (taken < room && !m_arrivals.empty() && m_arrivals.front().due <= now) {
        Arrival& arrival = m_arrivals.front();
        const std::size_t n = std::min(room - taken, arrival.bytes.size() - arrival.taken);
        std::copy_n(arrival.bytes.data() + arrival.taken, n, out + taken);
        taken += n;
        arrival.taken += n;
        if (arrival.taken == arrival.bytes.size())
            m_arrivals.pop_front();
    }
    return taken;
}

std::optional<Time> SerialPort::nextDue() const {
    return m_arrivals.empty() ? std::nullopt : std::optional(m_arrivals.front().due);
}

void SerialPort::flushInput(Time now) {
    while (!m_arrivals.empty() && m_arrivals.front().due <= now)
        m_arrivals.pop_front();
}

Time SerialPort::patience() const {
    constexpr std::chrono::milliseconds tenth(100);
    const int tenths = attributes.c_cc[VTIME];
    return tenths > 0 || attributes.c_cc[VMIN] == 0 ? tenths * tenth : tenth;
}

} // namespace irmsim
