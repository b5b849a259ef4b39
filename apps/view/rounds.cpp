#include "rounds.h"

#include "../../core/range.h"
#include "../../core/settings.h"
#include "../measure/storedsettings.h"

#include <cmath>
#include <utility>

namespace irmcore::view {

namespace {

constexpr double coresTime = 0.5;  // s that the core takes for a command
constexpr double mostDelay = 5.0;  // s after which temperatures no longer belong to a calibration
constexpr double longestWay = 1.0; // s that a command may take to a core that is there
constexpr double prompt = 0.2;     // s in which a core answers that is there
constexpr double betweenQuestions = 3.0;
constexpr double betweenQuestionsInSilence = 5.0;

// The library takes a temperature whose read failed for 0 °C, and nothing tells: so all are read
// twice, and what it made of them must fit. Exactly 0 °C cannot be told from a read that failed.
constexpr int tries = 3;
constexpr float steepest = 4.8F; // °C of drift for one of the sensor
constexpr float mostOff = 1.0F;  // °C

struct Inside {
    float shutter = 0.0F; // °C
    float sensor = 0.0F;

    bool came() const { return shutter != 0.0F && sensor != 0.0F; }
};

Inside insideOf(FPGA& host) {
    Inside inside;
    host.fpga_read_shutterTemp(&inside.shutter);
    host.fpga_read_sensorTemp(&inside.sensor);
    return inside;
}

} // namespace

Rounds::Rounds(FPGA& host, std::function<double()> clock)
    : m_host(host), m_clock(std::move(clock)), m_driver(host, m_clock, app::Habits{}),
      m_core(*host.getSerial()), m_frozen(host.fpga_get_freeze_status() != 0),
      m_range(settings::storedTempRange()), m_lens(host.getLenIndex()),
      m_usable(host.checkBiaoDingTab() == 0) {}

void Rounds::start() {
    m_host.init(); // the link is new, so nothing is under way on it
    enter(Phase::started);
}

void Rounds::enter(Phase phase) {
    m_phase = phase;
    m_heard = false;
    m_until = m_clock() + coresTime;
}

/// When the core's time is over and its answer not there, it may not even have heard.
bool Rounds::shows() const {
    return m_phase == Phase::running || m_phase == Phase::asked ||
           (m_phase != Phase::started && over());
}

double Rounds::sinceCalibration() const {
    return m_driver.rounds() == 0 ? 0.0 : m_clock() - m_driver.timeOfRound();
}

void Rounds::mistrust() {
    m_settled = false;
    m_due = true;
}

void Rounds::ask() {
    m_question = m_core.ask();
    m_askedAt = m_clock();
    m_nextQuestion = m_clock() + betweenQuestions;
}

void Rounds::follow(const Wanted& wanted) {
    followLens();
    followCore();
    m_waits = false;
    const bool late = over() && !m_core.answered(m_question);
    if ((m_phase == Phase::asked || m_phase == Phase::changed) && late && wanted.frozen != m_frozen)
        freeze(wanted.frozen); // nobody waits for a silent core
    switch (m_phase) {
    case Phase::started:
        if (over()) {
            ask();
            enter(Phase::asked);
        }
        break;
    case Phase::asked:
        if (m_core.answered(m_question) || m_core.missed(m_question)) {
            m_due = true;
            m_phase = Phase::running;
        }
        break;
    case Phase::released:
        m_shutterIsOurs = m_core.answered(m_question);
        if (over() && (m_shutterIsOurs || m_core.missed(m_question)))
            m_phase = Phase::running;
        break;
    case Phase::changed:
        hear();
        if (over())
            takeRange();
        break;
    case Phase::closed:
        hear();
        if (over()) {
            m_freezes = m_freezes || (late && wanted.frozen && !m_frozen);
            finishRound();
        }
        break;
    case Phase::running:
        run(wanted);
        break;
    }
}

/// The core's time counts from its answer: until then it may not have had the command.
void Rounds::hear() {
    if (!m_heard && m_core.answered(m_question)) {
        m_heard = true;
        m_until = m_clock() + coresTime;
    }
}

/// A core that has been silent may have been switched off and on: what it was told is said again.
void Rounds::followCore() {
    const bool there = m_core.state() == CoreState::answers;
    if (m_wasThere && !there) {
        m_shutterIsOurs = false;
        m_rangeIsKnown = false;
        mistrust();
    }
    m_wasThere = there;
}

void Rounds::followLens() {
    const int lens = m_host.get_set_lenIndex();
    if (lens == m_lens)
        return;
    m_lens = lens;
    m_usable = m_host.checkBiaoDingTab() == 0;
    mistrust();
}

/// Words to the core are said only while nothing else is, so that they are said now and the shutter
/// does not close later unseen.
void Rounds::run(const Wanted& wanted) {
    const double now = m_clock();
    const bool idle = m_core.idle();
    const bool answers =
        m_core.state() == CoreState::answers && (idle || now <= m_askedAt + prompt);
    if (wanted.frozen != m_frozen) {
        if (wanted.frozen && answers && idle)
            order(true);
        else if (!wanted.frozen || !answers)
            freeze(wanted.frozen); // nobody waits for a silent core
        return;
    }
    const bool otherRange = wanted.range != m_range || !m_rangeIsKnown;
    if (m_frozen) {
        m_waits = m_due || otherRange;
        return;
    }
    m_overdue = m_driver.roundIsDue(); // readings are wrong at once where the drift's rule changes
    m_due = m_due || (wanted.calibrates && m_overdue);
    followDrift();
    m_waits = !answers && (m_due || otherRange);
    if (!idle)
        return;
    if (!answers) {
        if (now >= m_nextQuestion) {
            ask();
            m_nextQuestion = now + betweenQuestionsInSilence;
        }
    } else if (!m_shutterIsOurs) {
        m_core.releaseShutter(false);
        ask();
        enter(Phase::released);
    } else if (otherRange) {
        m_newRange = wanted.range;
        m_rangeIsKnown = false;
        m_core.changeRange(app::measuring::storedIntTime(m_newRange));
        m_settled = false;
        ask();
        enter(Phase::changed);
        m_until += longestWay - coresTime;
    } else if (m_due && now >= m_nextRound) {
        order(false);
    } else if (now >= m_nextQuestion) {
        ask();
    }
}

void Rounds::order(bool freezes) {
    m_freezes = freezes;
    m_core.calibrate();
    ask(); // what was given is carried out when it is answered
    enter(Phase::closed);
    m_until += longestWay - coresTime;
}

void Rounds::finishRound() {
    const bool answered = m_core.answered(m_question);
    if (answered && m_clock() < m_until + mostDelay && takeTemperatures()) {
        m_settled = true;
        m_due = false;
        m_overdue = false;
    } else {
        mistrust();
        m_nextRound = m_clock() + betweenQuestions;
        if (!answered && !m_core.missed(m_question) && !m_freezes)
            return; // it may come yet
    }
    m_phase = Phase::running;
    if (std::exchange(m_freezes, false)) {
        freeze(true);
        m_driftDropped = !m_settled;
    }
}

bool Rounds::takeTemperatures() {
    m_measuresItself = true;
    for (int i = 0; i < tries; ++i) {
        m_driver.takeTemperatures();
        const Inside now = insideOf(m_host);
        const float mean = m_host.getModifyShutterTemp() / m_host.getModifyValue();
        if (now.came() && std::abs(m_host.getSensorTemp() - now.sensor) < mostOff &&
            std::abs(mean - (now.shutter + now.sensor) / 2) < mostOff)
            return followDrift();
    }
    m_measuresItself = false;
    return false;
}

bool Rounds::followDrift() {
    m_driftFits = false;
    for (int i = 0; i < tries && !m_driftFits; ++i) {
        const float drift = m_host.updateDeltaTemp();
        const Inside now = insideOf(m_host);
        m_driftFits =
            now.came() &&
            std::abs(drift) <= steepest * std::abs(now.sensor - m_host.getSensorTemp()) + mostOff;
    }
    return m_driftFits;
}

void Rounds::takeRange() {
    if (m_core.answered(m_question)) {
        m_range = m_newRange;
        m_rangeIsKnown = true;
        m_host.setTempRange(m_range);
        const RangeLimits limits = limitsOfRange(m_range);
        m_host.setTempRangeMinMax(limits.min, limits.max);
        m_usable = m_host.checkBiaoDingTab() == 0;
        m_due = true;
        m_phase = Phase::running;
    } else if (m_core.missed(m_question)) {
        m_phase = Phase::running; // where it waits for the core
    }
}

/// A frozen picture keeps the shutter term and drops the drift: a round goes before, if it can.
void Rounds::freeze(bool on) {
    m_host.freeze_image(on);
    m_frozen = m_host.fpga_get_freeze_status() != 0;
    m_driftDropped = m_frozen;
    if (!m_frozen)
        followDrift();
}

void Rounds::handBack() {
    if (m_frozen)
        m_host.freeze_image(false);
    m_host.startLevelSpanControl(false);
    if (m_core.state() == CoreState::answers) {
        m_core.releaseShutter(true);
        m_core.settle(std::chrono::milliseconds(300));
    }
}

} // namespace irmcore::view
