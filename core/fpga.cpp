#include "fpga.h"

#include "fpga_private.h"

FPGA::~FPGA() {
    delete m_serial;
    m_serial = nullptr;
    delete m_sysTempHandler;
    delete m_queryTempHandler;
    delete m_private;
}

QString FPGA::getDllVersion() { return QStringLiteral("QRV20180705.2.00"); }

QString FPGA::getCoreFPGAVerisonStr() { return m_coreFPGAVersionStr; }

QString FPGA::getCoreCpuVerisonStr() { return m_coreCpuVersionStr; }

int FPGA::getCoreVersionNum() { return m_coreVersionNum; }

int FPGA::getLenIndex() { return m_lenIndex; }

unsigned char FPGA::start_arm_lcd(char value) {
    return fpga_start_arm_lcd(static_cast<unsigned char>(value));
}

IRPara& FPGA::getIRPara() { return m_irPara; }

Serial* FPGA::getSerial() { return m_serial; }
