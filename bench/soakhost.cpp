#include "bench/soakhost.h"

#include "sim/cameradir.h"

#include <algorithm>
#include <cmath>

namespace irmsoak {

Host::Host(std::uint64_t seed) : m_random(seed) {
    std::string error;
    irmsim::CameraDirectory content;
    content.modifyFiles = true;
    irmsim::writeCameraDirectory(".", content, error);
    m_camera.logging(false).frameRate(framesASecond).modifySlope(true);
    m_camera.scene(irmsim::Scene::bench(width, height)).noise(2.0, seed);
    m_camera.install();
    m_host.emplace();
    m_host->init();
    m_driver.emplace(*m_host, m_camera, irmcore::app::Habits{});
    m_driver->start();
}

void Host::hour(bool faulty) {
    for (int i = 0; i < 3600 * framesASecond; ++i)
        tick(faulty);
    liftFaults();
}

State Host::upToDate() {
    m_camera.surroundings(m_believed);
    freeze(false);
    m_host->autoShutter(false);
    wait();
    m_host->changeTempRange(m_range, intTime());
    wait();
    m_host->fpga_set_arm_lcd_jingDu(1); // as init() does: a seek that failed can have a byte
                                        // written anywhere
    m_host->get_set_lenIndex();
    m_host->setSystemAdToTempTab();
    m_driver->calibrationRound();
    m_host->setSystemTempPara();
    limits();
    // What is kept from these readings must follow the drift that comes after them.
    wholeFrame(PARA_SYSTEM);
    wholeFrame(PARA_CUSTOM);
    for (int i = 0; i < 100; ++i)
        measure();
    State state{};
    state.lens = m_lens;
    state.shutter = m_camera.detector().shutterTemp();
    state.sensor = m_camera.detector().sensorTemp();
    state.shutterNow = state.shutter + 0.125;
    state.sensorNow = state.sensor + 0.15625;
    m_camera.temperatures(state.shutterNow, state.sensorNow);
    state.air = m_believed;
    for (std::uint32_t i = 0; i < state.registers.size(); ++i)
        state.registers[i] = m_camera.board().kept(i);
    const irmsim::Frame& frame = m_camera.board().frame();
    std::copy_n(frame.ad.begin(), state.frame.size(), state.frame.begin());
    return state;
}

double Host::worstError() {
    double worst = 0;
    for (const irmsim::Target& target : m_camera.scene().targets()) {
        _fpga_point spot{static_cast<std::uint16_t>(target.x),
                         static_cast<std::uint16_t>(target.y)};
        IrTempStru reading{};
        m_host->getSpotTemp(0, 0, PARA_SYSTEM, TempSetup{}, spot, reading);
        if (m_lens < 2 && irmcore::isOk(reading))
            worst = std::max(worst, std::abs(static_cast<double>(reading.temp) -
                                             m_camera.truthAt(target.x, target.y)));
    }
    return worst;
}

void Host::tick(bool faulty) {
    m_camera.nextFrame();
    ++m_tick;
    if (m_tick % (10 * framesASecond) == 0)
        moveTemperatures();
    if (m_tick % framesASecond == 0) {
        m_driver->beforeReadings();
        wholeFrame(pick(10) == 0 ? PARA_CUSTOM : PARA_SYSTEM);
    }
    measure();
    if (pick(45 * framesASecond) == 0)
        change();
    if (m_frozen && pick(5 * framesASecond) == 0)
        freeze(false);
    if (!faulty)
        return;
    if (m_faultEnds != 0 && m_tick >= m_faultEnds)
        liftFaults();
    else if (m_faultEnds == 0 && pick(20 * framesASecond) == 0)
        fault();
}

void Host::moveTemperatures() {
    constexpr double turn = 6.283185307179586;
    const double hours = static_cast<double>(m_tick) / (3600.0 * framesASecond);
    const double inside = 30 + 8 * std::sin(turn * hours / 24) + 3 * std::sin(turn * hours / 0.78);
    const auto step = [](double celsius) { return std::round(celsius * 256) / 256; };
    m_camera.temperatures(step(inside + 0.4), step(inside));
}

void Host::measure() {
    const ParaMode_t mode = pick(4) == 0 ? PARA_CUSTOM : PARA_SYSTEM;
    const TempSetup setup{between(0.5F, 1.0F), between(0, 60), between(-2, 2), 0};
    _fpga_point spot{static_cast<std::uint16_t>(pick(width + 2)),
                     static_cast<std::uint16_t>(pick(height + 2))};
    IrTempStru reading{}, other{};
    ++m_queries;
    switch (m_queries % 8) {
    case 0:
    case 1:
    case 2:
        m_host->getSpotTemp(static_cast<int>(pick(13)), static_cast<int>(m_queries % 3), mode,
                            setup, spot, reading);
        break;
    case 3:
        m_host->getLineTemp(static_cast<int>(1 + pick(2)), mode, setup, spot, reading);
        break;
    case 4: {
        _area area{{spot.x, spot.y, static_cast<std::uint16_t>(spot.x + pick(40)),
                    static_cast<std::uint16_t>(spot.y + pick(30))}};
        _area_val counts{};
        Area_Temp temps{};
        m_host->getAreaTemp(static_cast<int>(pick(5)), area, mode, setup, counts, temps);
        break;
    }
    case 5:
        m_host->getMinMaxTemp(&reading, &other);
        break;
    case 6:
        m_host->calcLevelSpan(pick(2) == 0 ? LEVELSPAN_AUTO : LEVELSPAN_ZFT, pick(2) == 0);
        break;
    default:
        m_host->getAutoMinMaxTemp(&reading, &other);
        break;
    }
}

void Host::wholeFrame(ParaMode_t mode) {
    m_host->fpga_read_IRAD(m_ad.data());
    m_host->getFrameTemp(m_ad.data(), static_cast<int>(m_ad.size()), mode, Survey::frameSetup,
                         m_celsius.data(), m_status.data());
    ++m_frames;
}

void Host::limits() {
    const bool low = m_range == 0;
    m_host->setTempRangeMinMax(low ? -20 : 0, low ? 150 : 400);
}

void Host::freeze(bool on) {
    if (on)
        m_driver->calibrationRound();
    m_host->freeze_image(on);
    m_host->updateDeltaTemp();
    m_frozen = on;
}

} // namespace irmsoak
