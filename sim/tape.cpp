#include "tape.h"

#include "wire.h"

#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <sys/stat.h>

namespace irmsim {

std::optional<Tape> Tape::of(const std::uint8_t* bytes, std::size_t size, std::string& error) {
    Tape tape;
    for (std::size_t at = 0; at < size;) {
        WireHeader head{};
        if (size - at >= sizeof head)
            std::memcpy(&head, bytes + at, sizeof head);
        const auto call = static_cast<Observation::Call>(head.call);
        const bool carries = call == Observation::Call::read || call == Observation::Call::write;
        if (head.size < sizeof head || head.size > size - at || head.size % wireAlign != 0 ||
            call > Observation::Call::flush ||
            (carries && head.result > static_cast<std::int64_t>(head.size - sizeof head))) {
            error = "a record of the session is broken";
            return std::nullopt;
        }
        tape.calls.push_back({call, (head.flags & wirePort) != 0, (head.flags & wireReal) != 0,
                              head.address,
                              carries && head.result > 0 ? bytes + at + sizeof head : nullptr,
                              head.length, static_cast<long>(head.result), Time(head.time)});
        at += head.size;
    }
    return tape;
}

std::optional<Tape> Tape::map(int descriptor, std::string& error) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        error = std::string("the recorded session cannot be read: ") + std::strerror(errno);
        return std::nullopt;
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size == 0)
        return Tape{};
    void* bytes = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (bytes == MAP_FAILED) {
        error = std::string("the recorded session cannot be mapped: ") + std::strerror(errno);
        return std::nullopt;
    }
    return of(static_cast<const std::uint8_t*>(bytes), size, error);
}

} // namespace irmsim
