// What transfers registers, against its bare system calls on the same descriptor.
#include "bench.h"
#include "device/registers.h"
#include "turns.h"

#include <array>
#include <unistd.h>
#include <vector>

namespace irmbench {

namespace {

namespace reg = irmcore::reg;

/// One transfer, of so many bytes.
struct Transfer {
    unsigned address;
    std::size_t bytes;
    bool write = false;
};

/// The transfers alone, one after the other, each a seek and a call.
class Bare {
public:
    Bare(Host& host, std::vector<Transfer> transfers)
        : m_fd(host.m_fd), m_transfers(std::move(transfers)) {}
    void operator()() {
        static std::vector<unsigned char> room(reg::frameParts384 * reg::framePart384, 0);
        std::size_t at = 0;
        for (const Transfer& transfer : m_transfers) {
            ::lseek(m_fd, static_cast<off_t>(transfer.address), SEEK_SET);
            m_done += transfer.write ? ::write(m_fd, room.data(), transfer.bytes)
                                     : ::read(m_fd, room.data() + at, transfer.bytes);
            // Parts of a frame lie behind each other.
            at += transfer.bytes == reg::framePart384 ? transfer.bytes : 0;
        }
        benchmark::DoNotOptimize(m_done);
    }

private:
    int m_fd;
    std::vector<Transfer> m_transfers;
    ssize_t m_done = 0;
};

constexpr char bareCalls[] = "its bare system calls";
constexpr Transfer freeze{reg::freezeControl.address, 1};
constexpr unsigned spotSlot = 1;

void registerQueries(Host& host) {
    static IrTempStru out{}, other{};
    static _fpga_point at{3, 4};
    static _area area{{1, 1, 9, 9}};
    static _area_val val{};
    static Area_Temp temps{};
    const auto done = [] { benchmark::ClobberMemory(); };
    compare(
        "reading/device", {"a bare seek and read", 1.10},
        [&host, ad = 33000U]() mutable {
            benchmark::DoNotOptimize(host.m_sysTempHandler->irAD2Temp(28000 + ++ad % 22500));
        },
        Bare(host, {freeze}));
    const std::vector<Transfer> spot{{reg::pointPosition.at(spotSlot).address, 4, true},
                                     {reg::pointAd.at(spotSlot).address, 2},
                                     freeze};
    compare(
        "query/spot", {bareCalls},
        [&host, done] {
            host.getSpotTemp(spotSlot, 0, PARA_SYSTEM, {}, at, out);
            done();
        },
        Bare(host, spot));
    compare(
        "query/line", {bareCalls},
        [&host, done] {
            host.getLineTemp(1, PARA_SYSTEM, {}, at, out);
            done();
        },
        Bare(host, {{reg::pointPosition.at(4).address, 4, true},
                    {reg::pointAd.at(4).address, 2},
                    freeze}));
    compare(
        "query/hottest", {bareCalls},
        [&host, done] {
            host.getSpotTemp(spotSlot, 1, PARA_SYSTEM, {}, at, out);
            done();
        },
        Bare(host, {{reg::frameMax.address, 2},
                    {reg::frameMaxX.address, 2},
                    {reg::frameMaxY.address, 2},
                    freeze}));
    const unsigned bounds = reg::areaBounds.at(0).address;
    const unsigned values = reg::areaMax.at(0).address;
    std::vector<Transfer> areaCalls;
    for (unsigned i = 0; i < 4; ++i)
        areaCalls.push_back({bounds + 2 * i, 2, true});
    for (unsigned i = 0; i < 7; ++i)
        areaCalls.push_back({values + 2 * i, 2});
    areaCalls.insert(areaCalls.end(), 3, freeze);
    compare(
        "query/area", {bareCalls},
        [&host, done] {
            host.getAreaTemp(0, area, PARA_SYSTEM, {}, val, temps);
            done();
        },
        Bare(host, areaCalls));
    compare(
        "query/window-ends", {bareCalls},
        [&host, done] {
            host.getMinMaxTemp(&out, &other);
            done();
        },
        Bare(host, {freeze, freeze}));
}

void registerPicture(Host& host) {
    const std::vector<Transfer> window{{reg::level.address, 2, true}, {reg::gain.address, 4, true}};
    std::vector<Transfer> automatic{{reg::frameMax.address, 2},
                                    {reg::frameMin.address, 2},
                                    {reg::adSum.address, 6},
                                    {reg::pixelCount.address, 4}};
    automatic.insert(automatic.end(), window.begin(), window.end());
    std::vector<Transfer> histogram{{reg::histogramMax.address, 2},
                                    {reg::histogramMin.address, 2},
                                    {reg::histogramPeak.address, 2}};
    histogram.insert(histogram.end(), window.begin(), window.end());
    compare(
        "window/auto", {bareCalls},
        [&host] {
            host.setIsoSwitchQuietly(false);
            host.calcLevelSpan(LEVELSPAN_AUTO, true);
        },
        Bare(host, automatic));
    compare(
        "window/zft", {bareCalls},
        [&host] {
            host.setIsoSwitchQuietly(false);
            host.calcLevelSpan(LEVELSPAN_ZFT, true);
        },
        Bare(host, histogram));
    const Transfer table{reg::colorTable.address, reg::colorTable.length, true};
    compare(
        "palette/plain", {bareCalls},
        [&host] {
            host.setIsoSwitchQuietly(false);
            host.palette_cal(nullptr);
        },
        Bare(host, {table}));
    compare(
        "palette/isotherm", {bareCalls},
        [&host] {
            host.setIsoSwitchQuietly(true);
            host.palette_cal(nullptr);
        },
        Bare(host, {{reg::isoMin.address, 2, true}, {reg::isoMax.address, 2, true}, table}));
}

} // namespace

void registerTransfers(Host& host) {
    registerQueries(host);
    registerPicture(host);
    static std::vector<unsigned short> frame(reg::frameParts384 * reg::framePart384 / 2);
    compare(
        "raw-frame/384x288", {bareCalls, 1.10}, [&host] { host.fpga_read_IRAD_384(frame.data()); },
        Bare(host,
             std::vector<Transfer>(reg::frameParts384, {reg::frame.address, reg::framePart384})));
    compare(
        "raw-frame/160x120", {bareCalls}, [&host] { host.fpga_read_IRAD(frame.data()); },
        Bare(host, {{reg::frame.address, reg::frame.length}}));
}

} // namespace irmbench
