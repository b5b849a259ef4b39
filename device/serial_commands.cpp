#include "../core/fpga.h"
#include "frame.h"
#include "serial.h"
#include "serial_private.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <termios.h>
#include <unistd.h>

namespace frame = irmcore::frame;

namespace {

/// Codes of the core's commands.
enum Code : unsigned char {
    codeAutoShutter = 0x30,
    codeInsideShutter = 0x31,
    codeInsideShutterNoVsk = 0x51,
    codeOutsideShutter = 0x52,
    codeDeltaAd = 0x61,
    codeIntTime = 0x70,
    codeReadVsk = 0x77,
    codeSetVsk = 0x78,
    codeSum = 0x79,
    codeCpuVersion = 0x80,
    codeFpgaVersion = 0x81,
    codeChangeTempRange = 0x82,
    codeShutDown = 0x84,
    codeSensor = 0x96,
};

constexpr int versionBytes = 15;
constexpr useconds_t alarmPulse = 150000; // µs

constexpr int replyLength(int payload) { return payload + static_cast<int>(frame::replyOverhead); }

constexpr unsigned char lowByte(unsigned int value) {
    return static_cast<unsigned char>(value & 0xFFU);
}

} // namespace

void Serial::fillSlot(unsigned char code, const unsigned char* payload, unsigned char length) {
    s_command.code = code;
    s_command.length = length;
    std::copy_n(payload, length, s_command.payload);
    s_command.replyLength = replyLength(0);
    s_command.filled = true;
}

int Serial::command(unsigned char code, const unsigned char* payload, unsigned char length) {
    m_mutex.lock();
    fillSlot(code, payload, length);
    m_mutex.unlock();
    return wake();
}

int Serial::autoShutter(bool on) {
    const unsigned char payload[] = {static_cast<unsigned char>(on ? 1 : 0)};
    command(codeAutoShutter, payload, sizeof(payload));
    return 0;
}

int Serial::insideShutter() {
    command(codeInsideShutter, nullptr, 0);
    return 0;
}

int Serial::insideShutterNoVSK() {
    command(codeInsideShutterNoVsk, nullptr, 0);
    return 0;
}

int Serial::outsideShutter() {
    m_mutex.lock();
    fillSlot(codeOutsideShutter, nullptr, 0);
    wake();
    m_mutex.unlock();
    return 0;
}

int Serial::setIntTime(int, unsigned short t) {
    const unsigned char payload[] = {lowByte(t), lowByte(t >> 8U)};
    command(codeIntTime, payload, sizeof(payload));
    return 0;
}

int Serial::setVSK(unsigned short v) {
    const unsigned char payload[] = {lowByte(v), lowByte(v >> 8U)};
    command(codeSetVsk, payload, sizeof(payload));
    return 0;
}

int Serial::changeTempRange(unsigned short intTime, unsigned int vsk) {
    std::printf("change temp range intTime:%d vsk:%d\n", intTime, static_cast<int>(vsk));
    const unsigned char payload[] = {lowByte(intTime), lowByte(intTime >> 8U), lowByte(vsk),
                                     lowByte(vsk >> 8U)};
    return command(codeChangeTempRange, payload, sizeof(payload));
}

int Serial::shutDown() {
    m_mutex.lock();
    if (m_fpga != nullptr) {
        m_private->busy = true;
        m_fpga->fpga_open_alarm(true);
        ::usleep(alarmPulse);
        m_fpga->fpga_open_alarm(false);
        m_private->busy = false;
    }
    fillSlot(codeShutDown, nullptr, 0);
    m_mutex.unlock();
    return wake();
}

/// Sends a query, waits for its reply and copies the payload into `out`, holding the lock. Returns
/// the code that the reply echoes.
unsigned char Serial::query(const Data_t& question, int payloadBytes, void* out) {
    m_mutex.lock();
    m_private->busy = true;
    ::tcflush(m_fd, TCIFLUSH); // a reply that came too late for its own query
    writeData(m_sendBuf, packData(question));
    g_readData_length = replyLength(payloadBytes);
    readData(m_recvBuf, g_readData_length);
    const unsigned char echo = m_recvBuf[frame::echoOffset];
    if (out != nullptr)
        std::memcpy(out, m_recvBuf + frame::payloadOffset, static_cast<std::size_t>(payloadBytes));
    m_private->busy = false;
    m_mutex.unlock();
    return echo;
}

int Serial::readDeltaAD(unsigned int* out) {
    const unsigned char payload[4] = {};
    query({codeDeltaAd, sizeof(payload), payload}, 4, out);
    return 0;
}

int Serial::readSerialVSK(unsigned short* out) {
    if (query({codeReadVsk, 0, nullptr}, 2, out) == codeReadVsk)
        return 0;
    if (out != nullptr)
        *out = 0;
    return -1;
}

int Serial::readSerialSum(unsigned short* out) {
    query({codeSum, 0, nullptr}, 2, out);
    return 0;
}

int Serial::readSensor(unsigned short* out) {
    const unsigned char payload[2] = {};
    query({codeSensor, sizeof(payload), payload}, 2, out);
    return 0;
}

int Serial::readCoreCpuVersion(char* out) {
    query({codeCpuVersion, 0, nullptr}, versionBytes, out);
    return 0;
}

int Serial::readCoreFPGAVersion(char* out) {
    query({codeFpgaVersion, 0, nullptr}, versionBytes, out);
    return 0;
}

void Serial::readPowerStatus() {}

void Serial::readSensorTemp(unsigned int) {}

void Serial::setTempRange(int) {}
