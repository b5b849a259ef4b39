#include "coreline.h"

#include <utility>

namespace irmcore::view {

namespace {

using Hold = std::lock_guard<std::mutex>;

// The link's worker takes a command at once and holds the link's lock until it is answered; who
// wants the lock meanwhile spins.
constexpr auto pause = std::chrono::milliseconds(10);

} // namespace

CoreLine::CoreLine(Serial& link) : m_link(link), m_thread([this] { run(); }) {}

CoreLine::~CoreLine() {
    {
        const Hold hold(m_lock);
        m_stop = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

CoreLine::Ticket CoreLine::add(Words words) {
    const Hold hold(m_lock);
    m_waiting.push_back(std::move(words));
    m_changed.notify_all();
    return ++m_last;
}

CoreLine::Ticket CoreLine::releaseShutter(bool toCore) {
    return add([toCore](Serial& link) { return link.autoShutter(toCore), Reply::command; });
}

CoreLine::Ticket CoreLine::calibrate() {
    return add([](Serial& link) { return link.insideShutter(), Reply::command; });
}

CoreLine::Ticket CoreLine::changeRange(unsigned short intTime) {
    return add(
        [intTime](Serial& link) { return link.changeTempRange(intTime, 0), Reply::command; });
}

CoreLine::Ticket CoreLine::ask() {
    return add([](Serial& link) {
        unsigned short vsk = 0;
        return link.readSerialVSK(&vsk) == 0 ? Reply::answer : Reply::silence;
    });
}

bool CoreLine::answered(Ticket ticket) const {
    const Hold hold(m_lock);
    return m_answered >= ticket;
}

bool CoreLine::missed(Ticket ticket) const {
    const Hold hold(m_lock);
    return m_missed >= ticket && m_answered < ticket;
}

bool CoreLine::idle() const {
    const Hold hold(m_lock);
    return m_waiting.empty() && !m_speaking;
}

void CoreLine::settle(std::chrono::milliseconds patience) {
    std::unique_lock<std::mutex> hold(m_lock);
    m_changed.wait_for(hold, patience, [this] { return m_waiting.empty() && !m_speaking; });
}

CoreState CoreLine::state() const {
    const Hold hold(m_lock);
    return m_state;
}

void CoreLine::run() {
    std::unique_lock<std::mutex> hold(m_lock);
    for (;;) {
        m_changed.wait(hold, [this] { return m_stop || !m_waiting.empty(); });
        if (m_stop)
            return;
        const Words words = std::move(m_waiting.front());
        m_waiting.pop_front();
        m_speaking = true;
        const Ticket ticket = ++m_begun;
        hold.unlock();
        const Reply reply = words(m_link);
        hold.lock();
        if (reply == Reply::command) {
            m_changed.wait_for(hold, pause, [this] { return m_stop; });
        } else {
            m_state = reply == Reply::answer ? CoreState::answers : CoreState::silent;
            (reply == Reply::answer ? m_answered : m_missed) = ticket;
        }
        m_speaking = false;
        m_changed.notify_all();
    }
}

} // namespace irmcore::view
