#pragma once

#include "../measure/frametable.h"
#include "fpga.h"

/// State of the façade that is the library's own.
struct FPGA::Private {
    irmcore::FrameTable system;  ///< frames with the system's parameters
    irmcore::FrameTable queries; ///< frames with the queries'
};
