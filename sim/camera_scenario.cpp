// What a scenario makes happen.

#include "camera.h"
#include "device/registers.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace irmsim {

namespace reg = irmcore::reg;

namespace {

/// A value that counts something.
std::size_t whole(double value) {
    constexpr double most = 1e9;
    return static_cast<std::size_t>(std::fmin(std::fmax(value, 0.0), most)); // NaN: 0
}

} // namespace

Scenario::Scenario(std::vector<Event> events, std::vector<ScenePlan> scenes)
    : m_events(std::move(events)), m_scenes(std::move(scenes)) {
    if (!m_events.empty())
        m_due = m_events.front().at;
}

const Event* Scenario::take(Time now) {
    return m_next < m_events.size() && m_events[m_next].at <= now ? &m_events[m_next++] : nullptr;
}

bool Scenario::bring(Time now) {
    const bool changed = stage.bring(now);
    m_due = m_next < m_events.size() ? m_events[m_next].at : Time::max();
    if (stage.moving())
        m_due = std::min(m_due, now + Time(1));
    return changed;
}

Camera& Camera::scenario(Scenario scenario) {
    return with([&] {
        m_scenario = std::move(scenario);
        m_scenario.stage.setBackdrop(m_scene);
    });
}

void Camera::playScenario(Time now) {
    bool changed = false;
    while (const Event* event = m_scenario.take(now)) {
        catchUpTo(event->at);
        follow(event->at);
        changed = m_scenario.stage.bring(event->at) || changed;
        if (!event->text.empty())
            std::fprintf(stderr, "irmsim: %.3f s: %s\n", secondsOf(event->at), event->text.c_str());
        happen(*event);
    }
    changed = m_scenario.bring(now) || changed;
    if (changed)
        m_scene = m_scenario.stage.picture();
}

void Camera::happen(const Event& event) {
    const auto& v = event.values;
    const std::size_t index = whole(v[0]);
    const auto number = static_cast<int>(index);
    const bool on = v[0] != 0.0;
    Surroundings truth = m_detector.surroundings();
    switch (event.what) {
    case What::scene:
        if (index >= m_scenario.scenes().size())
            break;
        if (std::string error; auto scene = m_scenario.scenes()[index].draw(error)) {
            m_scenario.stage.setBackdrop(std::move(*scene));
            m_scene = m_scenario.stage.picture();
        }
        break;
    case What::targetAt:
        m_scenario.stage.place(index, {v[1], v[2], static_cast<int>(whole(v[3])),
                                       static_cast<int>(whole(v[4])), v[5]});
        break;
    case What::targetMove:
        m_scenario.stage.move(index, v[1], v[2], event.at, timeOf(v[3]));
        break;
    case What::targetTemp:
        m_scenario.stage.heat(index, v[1]);
        break;
    case What::targetOff:
        m_scenario.stage.hide(index);
        break;
    case What::inside:
        setTemperatures(v[0], v[0]);
        break;
    case What::sensor:
        setTemperatures(m_detector.shutterTemp(), v[0]);
        break;
    case What::shutter:
        setTemperatures(v[0], m_detector.sensorTemp());
        break;
    case What::warmUp:
        m_warmUp = WarmUp{m_detector.shutterTemp(), v[0], m_detector.sensorTemp(), v[0], v[1]};
        m_warmUpStart = event.at;
        follow(event.at);
        break;
    case What::ambient:
        truth.envTemp = truth.reflectedTemp = v[0];
        m_detector.setSurroundings(truth);
        break;
    case What::lens:
        setLens(number);
        break;
    case What::range: // as if the core had been told so
        m_detector.setRange(number);
        if (index < rangeIntTimes.size())
            m_core.setIntTime(rangeIntTimes[index]);
        m_shutter.close(event.at);
        break;
    case What::freeze: {
        const unsigned others = m_board.kept(reg::freezeControl.address) & ~reg::frozen.mask();
        const auto byte = static_cast<std::uint8_t>(on ? others | reg::frozen.mask() : others);
        m_board.write(reg::freezeControl.address, &byte, 1);
        break;
    }
    case What::coreSilent:
        m_core.faults.silent = true;
        break;
    case What::coreLate:
        m_core.faults.late = timeOf(v[0]);
        break;
    case What::coreGarbled:
        m_core.faults.garbled = number;
        break;
    case What::coreNormal:
        m_core.faults = CoreFaults{};
        break;
    case What::corePowerUp:
        m_core.powerUp(event.at);
        break;
    case What::transfer:
        m_transferFault = {index,
                           {static_cast<int>(whole(v[1])), whole(v[2])},
                           v[3] != 0.0 ? Lasting::fromThenOn : Lasting::once};
        break;
    case What::device:
        m_plugged = on;
        break;
    case What::port:
        m_portPlugged = on;
        break;
    }
}

} // namespace irmsim
