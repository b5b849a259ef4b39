// What a call costs: system calls, and memory from the heap.
#include "support/host.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> s_allocations{0};

} // namespace

#ifdef SANITIZED // by the build: compilers tell it in different ways
// The sanitizer has a malloc of its own.
void* operator new(std::size_t size) {
    ++s_allocations;
    if (void* memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
    ++s_allocations;
    return std::malloc(size);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
#else
extern "C" void* __libc_malloc(std::size_t size);
extern "C" [[gnu::visibility("default")]] void* malloc(std::size_t size) noexcept {
    ++s_allocations;
    return __libc_malloc(size);
}
#endif

namespace {

using namespace irmtest;

TEST_F(Host, transfersAreASeekAndACallAndTakeNoMemory) {
    IrTempStru out{}, other{};
    _fpga_point at{3, 4};
    _area area{{1, 1, 9, 9}};
    _area_val val{};
    Area_Temp temps{};
    std::vector<unsigned short> frame(110592);
    std::vector<float> temperatures(frame.size());
    std::vector<unsigned char> statuses(frame.size());
    const TempSetup own[] = {{0.8F, 100, 1.5F, 0}, {0.7F, 10, 0, 0}};
    std::size_t turn = 0;
    /// System calls of one call, and allocations of ten that follow it.
    const auto costs = [&](auto run) {
        camera.clearCalls();
        run(); // the simulated board works its frame out
        EXPECT_EQ(camera.calls().lseek, camera.calls().transfers());
        const unsigned long calls = camera.calls().total();
        const long before = s_allocations;
        for (int i = 0; i < 10; ++i)
            run();
        return joined(calls, s_allocations - before);
    };
    camera.logging(false);
    printed([&] { host->calcLevelSpan(LEVELSPAN_AUTO, false); }); // takes the window over
    EXPECT_NE(costs([&] { host->setSystemTempPara(); }), "0 0");  // memory is counted
    EXPECT_EQ(costs([&] { host->getSpotTemp(1, 0, PARA_CUSTOM, own[++turn % 2], at, out); }),
              "6 0");
    EXPECT_EQ(costs([&] { host->getSpotTemp(1, 1, PARA_SYSTEM, {}, at, out); }), "8 0");
    EXPECT_EQ(costs([&] { host->getLineTemp(1, PARA_SYSTEM, {}, at, out); }), "6 0");
    EXPECT_EQ(costs([&] { host->getAreaTemp(1, area, PARA_SYSTEM, {}, val, temps); }), "28 0");
    const auto reading = [&](unsigned ad) { out = host->m_sysTempHandler->irAD2Temp(ad); };
    EXPECT_EQ(costs([&] { reading(33000); }), "2 0");
    EXPECT_EQ(costs([&] { reading(20000); }), "0 0"); // the table's "L"
    EXPECT_EQ(costs([&] { reading(60000); }), "0 0"); // "H"
    EXPECT_EQ(costs([&] {
                  frame[0] = static_cast<unsigned short>(33000 + ++turn);
                  host->getFrameTemp(frame.data(), 110592, PARA_CUSTOM, own[turn % 2],
                                     temperatures.data(), statuses.data());
              }),
              "2 0");
    EXPECT_EQ(costs([&] { host->getMinMaxTemp(&out, &other); }), "4 0");
    EXPECT_EQ(costs([&] { host->getAutoMinMaxTemp(&out, &other); }), "16 0");
    EXPECT_EQ(costs([&] { host->calcLevelSpan(LEVELSPAN_AUTO, true); }), "12 0");
    EXPECT_EQ(costs([&] { host->calcLevelSpan(LEVELSPAN_ZFT, true); }), "10 0");
    EXPECT_EQ(costs([&] { host->handLevelSpan(20, 40); }), "4 0");
    EXPECT_EQ(costs([&] { host->setStandardPaletteIndex(COLOR_IRON); }), "2 0");
    host->setIsoSwitch(true);
    EXPECT_EQ(costs([&] { host->palette_cal(nullptr); }), "6 0");
    EXPECT_EQ(costs([&] { host->handLevelSpan(20, 40); }), "10 0");
    printed([&] { EXPECT_EQ(costs([&] { host->fpga_read_IRAD_384(frame.data()); }), "16 0"); });
}

} // namespace
