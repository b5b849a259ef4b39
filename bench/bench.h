#pragma once

#include "core/fpga.h"

/// The comparisons of irmcore-corebench.
namespace irmbench {

/// A façade whose parts the benchmarks can reach.
class Host : public FPGA {
public:
    /// The isotherm without its transfers.
    void setIsoSwitchQuietly(bool on) { m_isoSwitch = on; }
    using FPGA::m_deltaTemp;
    using FPGA::m_sysTempHandler;
    using FPGABottom::m_fd;
};

/// Calculations alone.
void registerConversions();
/// Whole frames to temperatures. False when they are not the prescribed ones.
bool registerFrames(Host& host);
/// What transfers registers.
void registerTransfers(Host& host);
/// The link to the core; `port` is a descriptor of the same port.
void registerLink(Host& host, int port);

} // namespace irmbench
