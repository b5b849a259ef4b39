// Raw frames, statistics, spots, areas and lines.
#include "../core/truncate.h"
#include "access.h"

#include <cstdio>
#include <sys/time.h>

namespace reg = irmcore::reg;

using irmcore::get;
using irmcore::refused;
using irmcore::set;

namespace {

/// Reads an extreme's count, column and row, in this order.
template <typename Extreme>
unsigned char extreme(FPGABottom& fpga, Extreme* p, const reg::ReadOnly<std::uint16_t>& ad,
                      const reg::ReadOnly<std::uint16_t>& x,
                      const reg::ReadOnly<std::uint16_t>& y) {
    unsigned char n[3] = {};
    p->ad = get(fpga, ad, &n[0]);
    p->x = get(fpga, x, &n[1]);
    p->y = get(fpga, y, &n[2]);
    return n[0] + n[1] + n[2] == 6 ? 0 : refused;
}

/// The first word of a part is 0 when the FPGA had not latched it yet: its neighbour stands in.
void mendFirstWord(unsigned short* part) {
    if (part[0] == 0)
        part[0] = part[1];
}

/// For print. The clock can be set by years while a frame is read.
int milliseconds(std::int64_t elapsed) {
    return irmcore::truncateToInt(static_cast<double>(elapsed));
}

} // namespace

unsigned char FPGABottom::fpga_read_IRAD(unsigned short* buf) {
    if (buf == nullptr) {
        std::puts("add is null");
        return refused;
    }
    readData(reg::frame.address, buf, static_cast<int>(reg::framePixels160 * 2));
    mendFirstWord(buf);
    return 0;
}

unsigned char FPGABottom::fpga_read_IRAD_384(unsigned short* buf) {
    std::puts("fpga read irad 384");
    if (buf == nullptr) {
        std::puts("add is null");
        return refused;
    }
    timeval start{};
    ::gettimeofday(&start, nullptr);
    for (std::size_t part = 0; part < reg::frameParts384; ++part) {
        unsigned short* words = buf + part * (reg::framePart384 / 2);
        readData(reg::frame.address, words, static_cast<int>(reg::framePart384));
        mendFirstWord(words);
    }
    timeval end{};
    ::gettimeofday(&end, nullptr);
    const std::int64_t seconds = std::int64_t{end.tv_sec} - start.tv_sec;
    const std::int64_t micros = std::int64_t{end.tv_usec} - start.tv_usec;
    if (micros >= 0)
        std::printf("time2:%d ms\n", milliseconds(micros / 1000 + seconds * 1000));
    else
        std::printf("time1:%d ms\n",
                    milliseconds((micros + 1000000) / 1000 + (seconds - 1) * 1000));
    return 0;
}

unsigned short FPGABottom::fpga_get_auto_max() { return get(*this, reg::frameMax); }

unsigned short FPGABottom::fpga_get_auto_min() { return get(*this, reg::frameMin); }

unsigned short FPGABottom::fpga_get_auto_averg() {
    const std::uint64_t sum = get(*this, reg::adSum).value;
    const std::uint32_t count = get(*this, reg::pixelCount);
    if (count == 0)
        return 0;
    return static_cast<unsigned short>((sum / count) & 0xFFFFU);
}

unsigned char FPGABottom::fpga_get_zft_maxMin(unsigned short* max, unsigned short* min) {
    if (max != nullptr)
        *max = get(*this, reg::histogramMax);
    unsigned char result = refused;
    if (min != nullptr)
        *min = get(*this, reg::histogramMin, &result);
    return result;
}

unsigned char FPGABottom::fpga_get_zft_most(unsigned short* most) {
    unsigned char result = refused;
    if (most != nullptr)
        *most = get(*this, reg::histogramPeak, &result);
    return result;
}

unsigned char FPGABottom::fpga_point_max_get(_point_max* p) {
    if (p == nullptr)
        return refused;
    return m_imageMode == IMAGE_IR_MIX_CCD
               ? extreme(*this, p, reg::shownMax, reg::shownMaxX, reg::shownMaxY)
               : extreme(*this, p, reg::frameMax, reg::frameMaxX, reg::frameMaxY);
}

unsigned char FPGABottom::fpga_point_min_get(_point_min* p) {
    if (p == nullptr)
        return refused;
    return m_imageMode == IMAGE_IR_MIX_CCD
               ? extreme(*this, p, reg::shownMin, reg::shownMinX, reg::shownMinY)
               : extreme(*this, p, reg::frameMin, reg::frameMinX, reg::frameMinY);
}

unsigned char FPGABottom::fpga_point_position_set(unsigned char i, _fpga_point* p) {
    if (p == nullptr || i >= reg::pointPosition.count)
        return refused;
    return set(*this, reg::pointPosition.at(i), *p) == sizeof(_fpga_point) ? 0 : refused;
}

unsigned char FPGABottom::fpga_point_ad_get(unsigned char i, unsigned short* ad) {
    if (ad == nullptr || i >= reg::pointAd.count)
        return refused;
    unsigned char result = refused;
    *ad = get(*this, reg::pointAd.at(i), &result);
    return result;
}

unsigned char FPGABottom::fpga_area_set(unsigned char i, _area* a) {
    if (a == nullptr || i >= reg::areaBounds.count)
        return refused;
    int bytes = 0;
    for (unsigned word = 0; word < 4; ++word)
        bytes += set(*this, reg::areaBounds.at(i, 2 * word), a->bounds[word]);
    return bytes == 8 ? 0 : refused;
}

unsigned char FPGABottom::fpga_area_val_get(unsigned char i, _area_val* v) {
    if (v == nullptr || i >= reg::areaMax.count)
        return refused;
    unsigned char n[7] = {};
    v->maxAD = get(*this, reg::areaMax.at(i), &n[0]);
    v->minAD = get(*this, reg::areaMin.at(i), &n[1]);
    v->avgAD = get(*this, reg::areaAvg.at(i), &n[2]);
    for (unsigned word = 0; word < 4; ++word)
        v->pos[word] = get(*this, reg::areaPos.at(i, 2 * word), &n[3 + word]);
    int bytes = 0;
    for (const unsigned char count : n)
        bytes += count;
    return bytes == sizeof(_area_val) ? 0 : refused;
}

int FPGABottom::fpga_display_line(int line, bool on) {
    // The register is read first, also for a line that does not exist.
    const int old = get(*this, reg::overlays);
    if (line != 1 && line != 2)
        return -1;
    const int mask = (line == 1 ? reg::line1Shown : reg::line2Shown).mask();
    return set(*this, reg::overlays, static_cast<std::uint8_t>(on ? old | mask : old & ~mask));
}

int FPGABottom::fpga_set_line_position(int line, unsigned short x, unsigned short y) {
    switch (line) {
    case 1:
        return set(*this, reg::line1Row, y);
    case 2:
        return set(*this, reg::line2Column, x);
    default:
        return -1;
    }
}
