#include "shot.h"

#include "screen.h"

namespace irmcore::app {

Shot::Shot(const irmsim::Scene& scene, const irmsim::Surroundings& surroundings, int range)
    : m_bench(scene, surroundings, range), m_visible(visiblePicture(scene)) {
    if (!error().isEmpty())
        return;
    host().init();
    Driver driver(host(), m_bench.camera(), Habits{});
    driver.start();
    driver.beforeReadings();
    // The first step places the window, the others let it follow the frames, smoothly.
    for (const bool smooth : {false, true, true, true}) {
        host().calcLevelSpan(LEVELSPAN_AUTO, smooth);
        m_bench.camera().nextFrame();
    }
    host().fpga_open_CCD(true);
    host().fpga_switch_colorBar(true);
}

Picture Shot::screen() { return app::screen(m_bench.camera().board(), m_visible); }

} // namespace irmcore::app
