// The link to the core: building frames, and an exchange with whoever answers on the port.
#include "bench.h"
#include "device/frame.h"
#include "turns.h"

#include <array>
#include <cstring>
#include <unistd.h>

namespace irmbench {

namespace {

constexpr std::size_t replyBytes = irmcore::frame::replyOverhead + 2;
constexpr unsigned char payload[8] = {120, 0, 0x34, 0x12, 1, 2, 3, 4};

} // namespace

void registerLink(Host& host, int port) {
    static std::array<unsigned char, irmcore::frame::bufferBytes> built{}, copied{};
    static std::size_t length = irmcore::frame::build(built.data(), 0x11, payload, sizeof payload);
    compare(
        "link/packing", {"`memcpy` of the frame"},
        [code = 0]() mutable {
            irmcore::frame::build(built.data(), static_cast<unsigned char>(++code & 0x7F), payload,
                                  sizeof payload);
            benchmark::ClobberMemory();
        },
        [] {
            benchmark::DoNotOptimize(length);
            std::memcpy(copied.data(), built.data(), length);
            benchmark::ClobberMemory();
        });
    compare(
        "link/exchange", {"a bare write and read", 0.0, Clock::wall},
        [&host] {
            unsigned short sum = 0;
            benchmark::DoNotOptimize(host.getSerialSum(&sum));
        },
        [port] {
            static std::array<unsigned char, irmcore::frame::overhead> question{};
            irmcore::frame::build(question.data(), 0x11, nullptr, 0);
            std::size_t got = 0;
            if (::write(port, question.data(), question.size()) < 0)
                return;
            for (int empty = 0; got < replyBytes && empty < 10;) {
                const ssize_t n = ::read(port, copied.data() + got, replyBytes - got);
                got += n > 0 ? static_cast<std::size_t>(n) : 0;
                empty += n > 0 ? 0 : 1;
            }
        });
}

} // namespace irmbench
