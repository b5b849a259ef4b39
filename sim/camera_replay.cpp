// A camera that answers as a recorded session did.

#include "camera.h"
#include "replay.h"
#include "replayport.h"

#include <utility>

namespace irmsim {

Camera& Camera::replay(const Tape& tape, bool loop) {
    return with([&] {
        m_clock.tie(0.0);
        m_replay = std::make_unique<Replay>(tape.calls, m_board, m_clock, loop);
        m_replayPort = std::make_unique<ReplayPort>(tape.calls);
    });
}

long Camera::replayedPortWrite(const std::uint8_t* bytes, std::size_t n) {
    std::vector<Reply> replies;
    const long result = m_replayPort->write(bytes, n, replies);
    for (Reply& reply : replies)
        m_port.arrive(std::move(reply.bytes), m_clock.now() + reply.after);
    return result;
}

} // namespace irmsim
