// Any register values, and a sequence of operations with any arguments on them.
#include "device/registers.h"
#include "operation.h"

#include <array>
#include <vector>

namespace {

using namespace irmfuzz;

/// The registers that the board works out: their values come from the input. All the others hold
/// what was written last, at first also values from the input.
void fill(Run& run) {
    struct Part {
        std::uint32_t address;
        std::size_t length;
    };
    constexpr std::array<Part, 6> measured{
        {{0x0F, 1}, {0x1C, 4}, {0x40, 32}, {0x6C, 8}, {0x8C, 4}, {0xA0, 6}}};
    irmsim::Board& board = run.fixture.camera.board();
    for (const auto& entry : irmcore::reg::map)
        board.unpoke(entry.address);
    board.unpoke(0x1004);
    for (const Part& part : measured)
        board.poke(part.address, run.in.bytes(part.length));
    const auto control = run.in.bytes(0x30);
    board.write(0, control.data(), control.size());
    const auto window = run.in.bytes(4);
    board.write(0x62, window.data(), window.size());
    // Spots 0 to 11 and areas 0 to 8 measure what repeats every 16 bytes.
    const auto pattern = run.in.bytes(16);
    std::vector<std::uint8_t> spots;
    while (spots.size() < 0x2FC)
        spots.push_back(pattern[spots.size() % pattern.size()]);
    board.poke(0x1004, spots);
}

} // namespace

std::uint64_t irmfuzz::execute(const std::uint8_t* data, std::size_t size) {
    constexpr int most = 24;
    Run run{Fixture::get(), Bytes(data, size), {}};
    run.fixture.reset();
    fill(run);
    const std::array groups{boardOperations(), readingOperations(), pictureOperations()};
    for (int i = 0; i < most && !run.in.empty(); ++i) {
        const Operations& group = groups[run.in.below(groups.size())];
        group.all[run.in.below(static_cast<unsigned>(group.count))](run);
    }
    run.fixture.camera.plugIn();
    return run.out.value();
}
