// A recording in the place of a camera.
#include "session.h"

#include <QFile>

namespace irmcore::view {

namespace {

constexpr double coresTime = 0.5;       // s that the core took for a calibration
constexpr double beforeRepeating = 1.0; // s that the last frame stays

} // namespace

bool Session::prepareRecording(std::string& error) {
    m_tape = loadTape(QFile::decodeName(m_source.recording.c_str()), error);
    if (!m_tape)
        error = m_last.sourceName + " cannot be replayed: " + error;
    else if (m_tape->width == 0)
        error = m_last.sourceName + " holds no frame, so there is no picture.";
    if (!error.empty())
        return false;
    m_source.plan.surroundings = m_tape->surroundings;
    m_source.plan.range = m_tape->range;
    m_source.width = m_tape->width;
    return true;
}

void Session::connectRecording() {
    m_driver = std::make_unique<app::Driver>(
        *m_host, [this] { return seconds(); }, app::Habits{});
    m_driver->takeTemperatures();
    m_calibrations = 0;
}

/// The recorded host's calibrations are in the counts: the temperatures are taken when they were.
void Session::followRecording() {
    m_held = m_wishes.frozen; // frames cannot be stopped, but left unread
    const double now = seconds();
    if (!m_held && now > m_tape->seconds + beforeRepeating) { // from the beginning again
        m_driver.reset();
        m_host.reset();
        m_camera = std::make_unique<irmsim::Camera>();
        m_camera->logging(false).replay(m_tape->tape, false);
        m_camera->install();
        connect();
        return;
    }
    m_host->get_set_lenIndex();
    const auto& times = m_tape->calibrations;
    if (m_calibrations < times.size() && now >= times[m_calibrations] + coresTime) {
        ++m_calibrations;
        m_driver->takeTemperatures();
    }
    m_host->updateDeltaTemp();
}

/// Not the shutter, whose frames a host may have read all the same.
bool Session::recordingShows() const {
    const auto& times = m_tape->calibrations;
    return m_calibrations >= times.size() || seconds() < times[m_calibrations];
}

} // namespace irmcore::view
