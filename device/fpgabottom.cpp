// The device itself, the board's sensors, and its switches.
#include "access.h"

#include <QtGlobal>

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace reg = irmcore::reg;

using irmcore::bitOf;
using irmcore::get;
using irmcore::refused;
using irmcore::set;
using irmcore::switchBit;

namespace {

float celsius(std::int16_t word) { return static_cast<float>(word) * 0.00390625F; }

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
    return set(*this, reg::armLcdMode, mode);
}

unsigned char FPGABottom::fpga_set_arm_lcd_jingDu(unsigned char v) {
    return set(*this, reg::armLcdJingDu, v);
}
