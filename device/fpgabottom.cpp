#include "fpgabottom.h"

#include "../core/truncate.h"
#include "registers.h"

#include <QtGlobal>

#include <array>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

namespace reg = irmcore::reg;

namespace {

constexpr unsigned char refused = 255;

// Values travel as they lie in memory.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);

/// Reads one register; 0 when that fails. `result`, if wanted, takes the transfer result.
template <typename Read, typename Write>
Read get(FPGABottom& fpga, const reg::Register<Read, Write>& r, unsigned char* result = nullptr) {
    static_assert(!std::is_void_v<Read>, "this register cannot be read");
    Read value{};
    const unsigned char n = fpga.readData(r.address, &value, reg::wireWidth<Read>());
    if (result != nullptr)
        *result = n;
    return value;
}

/// Writes one register; returns the transfer result.
template <typename Read, typename Write>
unsigned char set(FPGABottom& fpga, const reg::Register<Read, Write>& r, Write value) {
    static_assert(!std::is_void_v<Write>, "this register cannot be written");
    return fpga.writeData(r.address, &value, reg::wireWidth<Write>());
}

/// Reads a register's byte, replaces the bits of `mask` by `bits` and writes it back. `bits` may
/// lie outside the mask.
unsigned char modify(FPGABottom& fpga, const reg::ControlByte& r, int mask, int bits) {
    const int old = get(fpga, r);
    return set(fpga, r, static_cast<std::uint8_t>(((old & ~mask) | bits) & 0xFF));
}

unsigned char switchBit(FPGABottom& fpga, const reg::Field& f, bool on) {
    return modify(fpga, f.byte, f.mask(), on ? f.mask() : 0);
}

unsigned char bitOf(FPGABottom& fpga, const reg::Field& f) {
    return (get(fpga, f.byte) & f.mask()) != 0 ? 1 : 0;
}

/// The span of a gain, low 16 bits.
unsigned short spanOf(unsigned short gain, unsigned short whenZero) {
    return gain == 0 ? whenZero : irmcore::low16(static_cast<unsigned>(reg::gainOfSpanOne / gain));
}

float celsius(std::int16_t word) { return static_cast<float>(word) * 0.00390625F; }

/// The byte that stands for a blend proportion.
std::uint8_t blendByte(float f) {
    return static_cast<std::uint8_t>(irmcore::truncateToInt(static_cast<double>(f) * 128.0) & 0xFF);
}

/// Reads an extreme's count, column and row, in this order. `sum` counts the bytes.
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

} // namespace

FPGABottom::FPGABottom() : m_fd(::open("/dev/DM365-FPGA", O_RDWR)), m_imageMode(-1) {
    if (m_fd < 0)
        std::perror("open fpga device failed");
}

FPGABottom::~FPGABottom() {
    ::close(m_fd);
    m_fd = -1;
}

unsigned char FPGABottom::readData(unsigned int addr, void* buf, int len) {
    if (buf == nullptr || m_fd < 0 || len <= 0)
        return refused;
    ::lseek(m_fd, static_cast<off_t>(addr), SEEK_SET);
    const ssize_t n = ::read(m_fd, buf, static_cast<std::size_t>(len));
    if (n < 0) {
        std::perror("read data failed");
        return refused;
    }
    return static_cast<unsigned char>(n & 0xFF);
}

unsigned char FPGABottom::writeData(unsigned int addr, const void* buf, int len) {
    if (buf == nullptr || m_fd < 0 || len < 0)
        return refused;
    ::lseek(m_fd, static_cast<off_t>(addr), SEEK_SET);
    const ssize_t n = ::write(m_fd, buf, static_cast<std::size_t>(len));
    if (n < 0) {
        std::perror("write fpga failed");
        return refused;
    }
    return static_cast<unsigned char>(n & 0xFF);
}

unsigned char FPGABottom::fpga_get_version(char* buf) {
    return readData(reg::version.address, buf, static_cast<int>(reg::version.length));
}

unsigned char FPGABottom::fpga_get_IR_power() {
    return static_cast<unsigned char>((get(*this, reg::detectorState) >> reg::detectorPowerBit) &
                                      1);
}

unsigned char FPGABottom::fpga_read_lenIndex() {
    constexpr std::array<unsigned char, 7> lensOfCode{6, 2, 4, 0, 5, 1, 3};
    const unsigned code = get(*this, reg::detectorState) & reg::lensCodeMask;
    if (code < lensOfCode.size())
        return lensOfCode[code];
    return bitOf(*this, reg::lensVariant) != 0 ? 0 : 255;
}

unsigned char FPGABottom::getLampStatus() { return bitOf(*this, reg::lamp); }

unsigned char FPGABottom::getLaserStatus() { return bitOf(*this, reg::laser); }

unsigned char FPGABottom::fpga_get_freeze_status() { return bitOf(*this, reg::frozen); }

int FPGABottom::fpga_get_sht11_temp_humid(float* temp, float* humid) {
    constexpr std::uint16_t noAnswer = 0xFFFF;
    if (temp == nullptr || humid == nullptr)
        return -1;
    const std::uint16_t rawTemp = get(*this, reg::sht11Temp);
    if (rawTemp == noAnswer)
        return -1;
    // Coefficients of the sensor's data sheet for 14 and 12 bits at 3.5 V.
    *temp = static_cast<float>(rawTemp * 0.01 - 39.66);
    const std::uint16_t rawHumid = get(*this, reg::sht11Humid);
    if (rawHumid == noAnswer)
        return -1;
    const auto linear =
        static_cast<float>(rawHumid * 0.0405 - 4.0 + (rawHumid * -2.8e-6) * rawHumid);
    *humid = static_cast<float>((static_cast<double>(*temp) - 25.0) * (rawHumid * 8e-5 + 0.01) +
                                static_cast<double>(linear));
    return 0;
}

int FPGABottom::fpga_read_shutterTemp(float* t) {
    if (t == nullptr)
        return -1;
    *t = celsius(get(*this, reg::shutterTemp));
    return 0;
}

int FPGABottom::fpga_read_sensorTemp(float* t) {
    if (t == nullptr)
        return -1;
    *t = celsius(get(*this, reg::sensorTemp));
    return 0;
}

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
    const long seconds = static_cast<long>(end.tv_sec - start.tv_sec);
    const long micros = static_cast<long>(end.tv_usec - start.tv_usec);
    if (micros >= 0)
        std::printf("time2:%d ms\n", static_cast<int>(micros / 1000 + seconds * 1000));
    else
        std::printf("time1:%d ms\n",
                    static_cast<int>((micros + 1000000) / 1000 + (seconds - 1) * 1000));
    return 0;
}

unsigned short FPGABottom::fpga_get_auto_max() { return get(*this, reg::frameMax); }

unsigned short FPGABottom::fpga_get_auto_min() { return get(*this, reg::frameMin); }

unsigned short FPGABottom::fpga_get_auto_averg() {
    const std::uint64_t sum = get(*this, reg::adSum).value;
    const std::uint32_t count = get(*this, reg::pixelCount);
    return count == 0 ? 0 : static_cast<unsigned short>((sum / count) & 0xFFFF);
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

unsigned short FPGABottom::fpga_get_fpga_level() { return get(*this, reg::fpgaLevel); }

unsigned short FPGABottom::fpga_get_fpga_span() {
    return spanOf(get(*this, reg::fpgaGain), reg::fpgaSpanOfZeroGain);
}

unsigned short FPGABottom::fpga_get_level() { return get(*this, reg::level); }

unsigned short FPGABottom::fpga_get_span() {
    return spanOf(get(*this, reg::gain), reg::spanOfZeroGain);
}

unsigned char FPGABottom::fpga_set_levelSpan(unsigned short level, unsigned int gain) {
    set(*this, reg::level, level);
    return set(*this, reg::gain, std::uint32_t{gain});
}

unsigned char FPGABottom::fpga_start_level_span_control(bool on) {
    return set(*this, reg::windowControl, static_cast<std::uint8_t>(on ? 0x00 : 0xFF));
}

unsigned char FPGABottom::fpga_colorTable_get(void* buf, int len) {
    return readData(reg::colorTable.address, buf, len);
}

unsigned char FPGABottom::fpga_colorTable_set(const unsigned char* table) {
    return writeData(reg::colorTable.address, table, static_cast<int>(reg::colorTable.length));
}

unsigned char FPGABottom::fpga_set_iso_enable(bool on) {
    return set(*this, reg::isoEnable, static_cast<std::uint8_t>(on ? 1 : 0));
}

unsigned char FPGABottom::fpga_set_iso_type(unsigned char t) {
    return set(*this, reg::isoType, std::uint8_t{t});
}

unsigned char FPGABottom::fpga_set_iso_min(unsigned short ad) {
    return set(*this, reg::isoMin, std::uint16_t{ad});
}

unsigned char FPGABottom::fpga_set_iso_max(unsigned short ad) {
    return set(*this, reg::isoMax, std::uint16_t{ad});
}

unsigned char FPGABottom::fpga_get_image(unsigned char* mode) {
    unsigned char result = refused;
    if (mode != nullptr)
        *mode = get(*this, reg::imageControl, &result);
    return result;
}

unsigned char FPGABottom::fpga_set_image(Image_Mode_t mode) {
    m_imageMode = mode;
    return modify(*this, reg::imageControl, reg::imageMode.mask(), mode & reg::imageMode.mask());
}

unsigned char FPGABottom::fpga_set_ccd_pipe_ir_position(int pos) {
    const auto shifted = static_cast<unsigned>(pos) << reg::ccdInsetPosition.shift;
    return modify(*this, reg::insetControl, reg::ccdInsetPosition.mask(),
                  static_cast<int>(shifted & 0xFFU));
}

unsigned char FPGABottom::fpga_set_ir_pipe_ccd_position(int pos) {
    return modify(*this, reg::insetControl, reg::irInsetPosition.mask(), pos);
}

unsigned char FPGABottom::fpga_set_CCD_Mix_IR_Size(int on) {
    // Switching on also clears the rest of the field; switching off leaves it.
    constexpr int onValue = 0x01;
    return on != 0 ? modify(*this, reg::mixSize, reg::ccdMixIrSize.mask(), onValue)
                   : modify(*this, reg::mixSize, onValue, 0);
}

unsigned char FPGABottom::fpga_set_IR_Mix_CCD_Size(int on) {
    constexpr int onValue = 0x80;
    return on != 0 ? modify(*this, reg::mixSize, reg::irMixCcdSize.mask(), onValue)
                   : modify(*this, reg::mixSize, onValue, 0);
}

unsigned char FPGABottom::set_CCD_mix_IR_percent(float f) {
    return set(*this, reg::ccdMixIrBlend, blendByte(f));
}

unsigned char FPGABottom::set_IR_mix_CCD_percent(float f) {
    return set(*this, reg::irMixCcdBlend, blendByte(f));
}

unsigned char FPGABottom::set_mix_dx(char d) {
    return set(*this, reg::mixDx, static_cast<std::uint8_t>(d));
}

unsigned char FPGABottom::set_mix_dy(char d) {
    return set(*this, reg::mixDy, static_cast<std::uint8_t>(d));
}

unsigned char FPGABottom::set_mix_zoom(int z) {
    return set(*this, reg::mixZoom, irmcore::low16(static_cast<unsigned>(z)));
}

unsigned char FPGABottom::get_mix_dx() { return get(*this, reg::mixDx); }

unsigned char FPGABottom::get_mix_dy() { return get(*this, reg::mixDy); }

unsigned short FPGABottom::get_mix_zoom() { return get(*this, reg::mixZoom); }

unsigned char FPGABottom::fpga_open_saturation(bool on) {
    return switchBit(*this, reg::saturation, on);
}

unsigned char FPGABottom::fpga_switch_colorBar(bool on) {
    return switchBit(*this, reg::colorBar, on);
}

unsigned char FPGABottom::fpga_freeze_image(bool on) { return switchBit(*this, reg::frozen, on); }

unsigned char FPGABottom::fpga_open_alarm(bool on) { return switchBit(*this, reg::alarm, on); }

unsigned char FPGABottom::openLaser(bool on) { return switchBit(*this, reg::laser, on); }

unsigned char FPGABottom::openLamp(bool on) {
    qWarning("open lamp:%d", static_cast<int>(on));
    return switchBit(*this, reg::lamp, on);
}

unsigned char FPGABottom::fpga_open_CCD(bool on) {
    std::printf("==============fpga open ccd:%d\n", static_cast<int>(on));
    return switchBit(*this, reg::ccdCamera, on);
}

unsigned char FPGABottom::fpga_set_output_mode(int mode) {
    return set(*this, reg::outputMode, static_cast<std::uint8_t>(mode & 0xFF));
}

unsigned char FPGABottom::fpga_start_arm_lcd(unsigned char mode) {
    if (mode == 255)
        mode = 1;
    std::printf("fpga write 0x30 mode:%d\n", mode);
    return set(*this, reg::armLcdMode, std::uint8_t{mode});
}

unsigned char FPGABottom::fpga_set_arm_lcd_jingDu(unsigned char v) {
    return set(*this, reg::armLcdJingDu, std::uint8_t{v});
}
