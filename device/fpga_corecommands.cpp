#include "../core/fpga.h"

#include <cstdio>

int FPGA::setIntTime(int range, unsigned short t) {
    m_serial->setIntTime(range, t);
    m_tempRange = range;
    return 0;
}

int FPGA::insideShutter() { return m_serial->insideShutter(); }

int FPGA::insideShutterNoVSK() { return m_serial->insideShutterNoVSK(); }

int FPGA::autoShutter(bool on) { return m_serial->autoShutter(on); }

int FPGA::setSerialVSK(unsigned short v) {
    std::printf("============set vsk:%d\n", v);
    return m_serial->setVSK(v);
}

int FPGA::getSerialVSK(unsigned short* v) { return m_serial->readSerialVSK(v); }

int FPGA::getSerialSum(unsigned short* v) { return m_serial->readSerialSum(v); }
