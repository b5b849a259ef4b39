#pragma once

#include "bench.h"
#include "driver.h"
#include "picture.h"
#include "visible.h"

namespace irmcore::app {

/// A host that has its camera ready for pictures: started up, calibrated, the automatic window
/// settled, the colour bar on.
class Shot {
public:
    Shot(const irmsim::Scene& scene, const irmsim::Surroundings& surroundings, int range);

    /// What went wrong with it; empty when it can be used.
    const QString& error() const { return m_bench.error(); }
    Bench& bench() { return m_bench; }
    FPGA& host() { return m_bench.host(); }
    /// What the camera's screen shows now.
    Picture screen();

private:
    Bench m_bench;
    Picture m_visible;
};

} // namespace irmcore::app
