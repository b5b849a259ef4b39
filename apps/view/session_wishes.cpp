// What a person wishes, brought to the library: only what is another than it was told last.
#include "session.h"

#include "../../core/range.h"

#include <algorithm>
#include <cstring>

namespace irmcore::view {

namespace {

constexpr double remarkTime = 10.0; // s that one is shown
constexpr double leastSpan = 0.1;   // °C, of a window by hand

float single(double value) { return static_cast<float>(value); }

Isotherm isothermOf(const IsothermWish& wish) {
    Isotherm isotherm{};
    isotherm.type = wish.type;
    isotherm.minTemp = single(wish.low);
    isotherm.maxTemp = single(std::max(wish.low, wish.high));
    isotherm.reference = 0;
    isotherm.useMinMax = 1;
    std::memset(isotherm.color, 0, sizeof isotherm.color);
    wish.colour.copy(isotherm.color, sizeof isotherm.color - 1);
    return isotherm;
}

} // namespace

void Session::applyWishes() {
    if (const Parameters& p = m_wishes.parameters; m_parameters != p) {
        TempSetup setup = m_host->getSystemTempSetup();
        setup.emiss = single(p.emissivity);
        setup.dist = single(p.distance);
        setup.offset = single(p.offset);
        m_host->setSystemTempSetup(setup);
        m_host->setEnvTemp(single(p.air));
        m_host->setHumid(single(p.humidity));
        m_host->setReflecTemp(single(p.reflected));
        m_parameters = p;
        m_isotherm.reset(); // its temperatures have other counts now
    }
    applyLook();
}

void Session::applyLook() {
    const Look& look = m_wishes.look;
    const bool first = !m_look;
    if (first || m_look->palette != look.palette)
        m_host->setStandardPaletteIndex(look.palette);
    // Switches are read first, and a recording seldom tells of them; it has no picture to mix
    // either.
    const bool mixes = m_source.kind != SourceKind::recording;
    if (mixes && (first || m_look->mode != look.mode)) {
        m_host->fpga_open_CCD(look.mode != IMAGE_IR);
        m_host->setImageMode(look.mode);
    }
    if (mixes && (first || m_look->inset != look.inset)) {
        m_host->set_CCD_Pipe_IR_Position(look.inset);
        m_host->set_IR_Pipe_CCD_Position(look.inset);
    }
    if (mixes && (first || m_look->blend != look.blend)) {
        m_host->set_CCD_mix_IR_percent(single(look.blend));
        m_host->set_IR_mix_CCD_percent(single(look.blend));
    }
    if (first || m_look->window != look.window)
        m_host->setLevelSpanMode(look.window);
    m_look = look;
    if (m_isotherm != m_wishes.isotherm) {
        m_host->setIsoPara(isothermOf(m_wishes.isotherm));
        m_host->setIsoSwitch(m_wishes.isotherm.on);
        m_isotherm = m_wishes.isotherm;
    }
}

/// By hand within the range: what lies outside has no count, and would leave the window where it
/// is.
void Session::placeWindow() {
    const Look& look = m_wishes.look;
    if (look.window == LEVELSPAN_HAND) {
        const RangeLimits limits = limitsOfRange(m_rounds ? m_rounds->range() : m_last.ownRange);
        const double low = std::clamp(look.low, limits.min + 0.0, limits.max - leastSpan);
        m_host->handLevelSpan(single(low),
                              single(std::clamp(look.high, low + leastSpan, limits.max + 0.0)));
    } else {
        m_host->calcLevelSpan(look.window, !m_last.frame.counts.empty());
    }
}

void Session::simulate(const Simulation& simulation) {
    const Simulation before = m_simulation;
    m_simulation = simulation;
    if (m_source.kind != SourceKind::simulated || !m_camera)
        return;
    if (simulation.lens != before.lens)
        m_camera->lens(simulation.lens);
    if (simulation.coreSilent != before.coreSilent)
        m_camera->coreSilent(simulation.coreSilent);
    if (simulation.unplugged != before.unplugged)
        simulation.unplugged ? m_camera->unplug() : m_camera->plugIn();
    if (simulation.target != before.target)
        applyTarget();
}

void Session::applyTarget() {
    irmsim::Scene scene = *m_backdrop;
    if (const auto& target = m_simulation.target) {
        const int x0 = target->centre.x - target->width / 2;
        const int y0 = target->centre.y - target->height / 2;
        scene.fill(x0, y0, x0 + std::max(target->width, 1) - 1,
                   y0 + std::max(target->height, 1) - 1, target->celsius);
    }
    m_camera->scene(std::move(scene));
}

void Session::showScene(const irmsim::ScenePlan& plan) {
    if (m_source.kind != SourceKind::simulated || !m_camera)
        return;
    m_remark.clear();
    if (auto scene = plan.draw(m_remark)) {
        m_backdrop = std::move(*scene);
        applyTarget();
    } else {
        m_remark = "The scene cannot be shown: " + m_remark;
        m_remarkEnds = steadySeconds() + remarkTime;
    }
}

void Session::warmUp(double celsius, double timeConstant) {
    if (m_source.kind != SourceKind::simulated || !m_camera || !m_host)
        return;
    float shutter = 0.0F;
    float sensor = 0.0F;
    m_host->fpga_read_shutterTemp(&shutter);
    m_host->fpga_read_sensorTemp(&sensor);
    m_camera->warmUp({static_cast<double>(shutter), celsius, static_cast<double>(sensor), celsius,
                      timeConstant});
    if (m_rounds)
        m_rounds->mistrust(); // the detector is calibrated at the start of a warm-up
}

} // namespace irmcore::view
