#include "replayport.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace irmsim {

namespace {

/// The next of recorded results; beyond them the last, or 0 when there is none.
long next(const std::vector<long>& results, std::size_t& served) {
    if (results.empty())
        return 0;
    const long result = results[std::min(served, results.size() - 1)];
    ++served;
    return result;
}

} // namespace

ReplayPort::ReplayPort(const std::vector<Observation>& calls) {
    using Call = Observation::Call;
    FrameReader reader;
    Time sent{0};
    for (const Observation& o : calls) {
        if (!o.port)
            continue;
        const auto length = static_cast<std::size_t>(std::max(o.result, 0L));
        if (o.call == Call::open) {
            m_opens.push_back(std::min(o.result, 0L));
        } else if (o.call == Call::getAttributes || o.call == Call::setAttributes) {
            m_attributes.push_back(o.result);
        } else if (o.call == Call::write && o.result < 0) {
            m_exchanges.push_back({{0, {}, false}, o.length, o.result, {}, 0, false});
        } else if (o.call == Call::write) {
            reader.feed(o.bytes, length);
            while (auto frame = reader.next())
                if (frame->intact)
                    m_exchanges.push_back({std::move(*frame), o.length, o.result, {}, 0, false});
            sent = o.time;
        } else if (o.call == Call::read && !m_exchanges.empty()) {
            Exchange& exchange = m_exchanges.back();
            if (length > 0)
                exchange.replies.push_back(
                    {{o.bytes, o.bytes + length}, std::max(o.time - sent, Time(0))});
            if (o.result != -EAGAIN)
                exchange.readError = std::min(o.result, 0L);
        }
    }
}

long ReplayPort::open() { return next(m_opens, m_opened); }

long ReplayPort::attributes() { return next(m_attributes, m_attributesAsked); }

long ReplayPort::write(const std::uint8_t* bytes, std::size_t n, std::vector<Reply>& replies) {
    // A write that failed had no frame to be found by: it fails in its place.
    while (m_failed < m_exchanges.size() && m_exchanges[m_failed].served)
        ++m_failed;
    if (m_failed < m_exchanges.size()) {
        Exchange& exchange = m_exchanges[m_failed];
        if (exchange.result < 0 && exchange.length == n) {
            exchange.served = true;
            m_readError = exchange.readError;
            return exchange.result;
        }
    }
    m_reader.feed(bytes, n);
    long result = static_cast<long>(n);
    while (const auto command = m_reader.next()) {
        if (!command->intact)
            continue;
        Exchange* exchange = find(*command);
        m_readError = exchange != nullptr ? exchange->readError : 0;
        if (exchange == nullptr) {
            if (!m_complained[command->code])
                std::fprintf(stderr,
                             "irmsim: the recording does not tell what the core answers to "
                             "command 0x%02X: no answer\n",
                             static_cast<unsigned>(command->code));
            m_complained[command->code] = true;
            continue;
        }
        exchange->served = true;
        replies.insert(replies.end(), exchange->replies.begin(), exchange->replies.end());
        if (exchange->length == n)
            result = exchange->result;
    }
    return result;
}

ReplayPort::Exchange* ReplayPort::find(const RawFrame& command) {
    for (const bool anyPayload : {false, true}) {
        Exchange* last = nullptr;
        for (Exchange& exchange : m_exchanges) {
            if (exchange.result < 0 || exchange.command.code != command.code ||
                !(anyPayload || exchange.command.payload == command.payload))
                continue;
            last = &exchange;
            if (!exchange.served)
                break;
        }
        if (last != nullptr)
            return last;
    }
    return nullptr;
}

} // namespace irmsim
