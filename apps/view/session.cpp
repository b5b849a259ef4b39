#include "session.h"

#include "../../core/range.h"
#include "../../core/settings.h"
#include "../../sim/cameradir.h"
#include "../measure/storedsettings.h"

#include <QDir>
#include <QFile>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace irmcore::view {

namespace {

constexpr double betweenTries = 1.0; // s, of looking for a lost camera

/// Why a device cannot be opened; empty when it can.
std::string whyNot(const char* device) {
    const int fd = ::open(device, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return std::strerror(errno);
    ::close(fd);
    return {};
}

std::string nameOf(const Source& source) {
    if (source.kind == SourceKind::simulated)
        return "simulated camera";
    return source.kind == SourceKind::real
               ? "camera"
               : source.recording.substr(source.recording.rfind('/') + 1);
}

} // namespace

double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

Session::Session(Source source, std::uint64_t camera, const Wishes& wishes)
    : m_source(std::move(source)), m_wishes(wishes), m_previousDirectory(QDir::currentPath()) {
    m_last.camera = camera;
    m_last.source = m_source.kind;
    m_last.sourceName = nameOf(m_source);
    if (!prepare(m_failure) && m_failure.empty())
        m_failure = "The camera cannot be set up.";
}

Session::~Session() {
    leave();
    if (m_left)
        m_left->thread.join();
    m_camera.reset();
    QDir::setCurrent(m_previousDirectory);
}

void Session::wish(const Wishes& wishes) {
    const bool own = m_last.ownParameters.has_value() && wishes.camera != m_last.camera;
    const Parameters parameters = own ? *m_last.ownParameters : wishes.parameters;
    const int range = own ? m_last.ownRange : wishes.range;
    m_wishes = wishes;
    m_wishes.parameters = parameters;
    m_wishes.range = range;
}

void Session::calibrate() {
    if (m_rounds)
        m_rounds->calibrate();
}

bool Session::prepare(std::string& error) {
    if (m_source.plan.wallFactor <= 0.0)
        m_source.plan.wallFactor = 1.0;
    if (m_source.kind == SourceKind::recording && !prepareRecording(error))
        return false;
    const irmsim::Plan& plan = m_source.plan;
    QString directory = QFile::decodeName(m_source.directory.c_str());
    if (directory.isEmpty() && m_source.kind != SourceKind::real) {
        m_sample.emplace();
        if (!m_sample->isValid()) {
            error = m_sample->errorString().toStdString();
            return false;
        }
        if (!irmsim::writeCameraDirectory(QFile::encodeName(m_sample->path()).toStdString(),
                                          {plan.surroundings, plan.range}, error))
            return false;
        directory = m_sample->path();
    }
    if (!directory.isEmpty() && !QDir::setCurrent(directory)) {
        error = "The camera's directory " + m_source.directory + " cannot be entered.";
        return false;
    }
    if (m_source.kind == SourceKind::real)
        return true;
    m_camera = std::make_unique<irmsim::Camera>();
    if (m_tape) {
        m_camera->logging(false).replay(m_tape->tape, false);
    } else {
        if (!irmsim::setUp(*m_camera, plan, error))
            return false;
        m_backdrop = m_camera->scene();
        m_source.framesASecond = plan.frameRate;
        m_simulation.lens = plan.lens;
    }
    if (!m_camera->install()) {
        error = "Another simulated camera is there.";
        return false;
    }
    return true;
}

double Session::seconds() const { return m_camera ? m_camera->seconds() : steadySeconds(); }

/// A signal can spoil one transfer; and what a recording does not tell of, it cannot lose either.
bool Session::boardAnswers() {
    std::array<char, 15> version{};
    const auto answers = [&] { return m_host->fpga_get_version(version.data()) == version.size(); };
    return m_source.kind == SourceKind::recording || answers() || answers();
}

bool Session::shows() const {
    return m_host && (m_rounds ? m_rounds->shows() : !m_held && recordingShows());
}

/// Sees whether the camera is there, and looks for it if not.
void Session::keep() {
    if (m_host && !boardAnswers())
        lose("The camera went away: its FPGA does not answer. It is looked for every second.");
    if ((m_host && m_portOpened) || m_leaving || !m_failure.empty() ||
        steadySeconds() < m_nextTry || !left())
        return;
    if (m_left) {
        m_left->thread.join();
        m_left.reset();
    }
    m_nextTry = steadySeconds() + betweenTries;
    if (m_host) { // the library opens the port but once
        if (!whyNot(irmsim::serialPortPath).empty())
            return;
        lose("The core's port is there; the camera is started anew.");
        return;
    }
    const std::string why = whyNot(irmsim::fpgaDevicePath);
    if (why.empty())
        connect();
    else if (m_loss.empty())
        m_loss = std::string("No camera: ") + irmsim::fpgaDevicePath + " cannot be opened (" + why +
                 "). It is looked for every second.";
}

void Session::connect() {
    m_portOpened = m_source.kind == SourceKind::recording || whyNot(irmsim::serialPortPath).empty();
    m_host = std::make_unique<Host>();
    if (!boardAnswers()) {
        m_host.reset();
        m_loss = "The FPGA does not answer. It is tried every second.";
        return;
    }
    m_loss.clear();
    m_parameters.reset();
    m_look.reset();
    m_isotherm.reset();
    takeOwn();
    m_host->startLevelSpanControl(true);
    applyWishes();
    readFrame(); // before the core closes the shutter
    placeWindow();
    if (m_source.kind == SourceKind::recording) {
        connectRecording();
        return;
    }
    m_rounds = std::make_unique<Rounds>(*m_host, [this] { return seconds(); });
    m_rounds->start();
}

/// Once: what the camera's files say, unless they were made for the window.
void Session::takeOwn() {
    const bool made = m_source.kind == SourceKind::simulated && m_source.directory.empty();
    if (made || m_last.ownParameters)
        return;
    const irmsim::Surroundings truth = app::measuring::truthOf({});
    m_last.ownParameters =
        Parameters{truth.emissivity,    truth.distance,
                   truth.humidity,      truth.envTemp,
                   truth.reflectedTemp, static_cast<double>(m_host->getSystemTempSetup().offset)};
    m_last.ownRange = settings::storedTempRange();
    wish(m_wishes);
}

/// Lets go of the camera, on a thread of its own: what is under way with the core is waited for
/// there. That thread alone has the host from then on.
void Session::lose(const std::string& why) {
    m_loss = why;
    m_nextTry = 0.0;
    m_driver.reset();
    if (!m_host)
        return;
    m_left = std::make_unique<Left>();
    m_left->thread = std::thread(
        [left = m_left.get(), rounds = std::move(m_rounds), host = std::move(m_host)]() mutable {
            rounds.reset();
            host.reset();
            left->done = true;
        });
}

void Session::leave() {
    if (m_leaving)
        return;
    m_leaving = true;
    if (m_sample)
        m_sample->remove(); // also when nobody waits for the core
    if (m_rounds && boardAnswers())
        m_rounds->handBack();
    lose("The camera is let go of.");
}

std::shared_ptr<Snapshot> Session::look(bool fresh) {
    keep();
    if (m_host) {
        if (m_rounds)
            m_rounds->follow({m_wishes.range, m_wishes.frozen, m_wishes.calibrates});
        else
            followRecording();
    }
    if (m_host) {
        applyWishes();
        if (shows() && fresh)
            m_frameWhole = readFrame();
        if (shows())
            placeWindow();
    }
    auto snapshot = std::make_shared<Snapshot>(m_last);
    if (!m_last.frame.counts.empty()) {
        if (shows())
            readTools(*snapshot);
        else
            readHeld(*snapshot);
        m_read = m_wishes.tools;
        if (m_host)
            colour(*snapshot);
    }
    describe(*snapshot);
    m_last = *snapshot;
    return snapshot;
}

void Session::describe(Snapshot& s) const {
    s.seconds = seconds();
    s.present = m_host != nullptr;
    s.calibrating = s.present && !shows() && !m_held;
    s.mixes = m_source.kind != SourceKind::recording;
    s.hasVisible = m_source.kind == SourceKind::simulated;
    s.frozen = m_rounds ? m_rounds->frozen() : m_held;
    s.settled = s.present && m_frameSettled &&
                (m_rounds ? m_rounds->settled() : m_host->checkBiaoDingTab() == 0);
    s.core = m_rounds ? m_rounds->core() : CoreState::unknown;
    if (m_rounds) {
        s.range = m_rounds->range();
        s.lens = m_rounds->lens();
        s.calibrations = m_rounds->calibrations();
        s.sinceCalibration = m_rounds->sinceCalibration();
    } else if (m_host) {
        s.range = s.ownRange;
        s.lens = m_host->getLenIndex();
        s.calibrations = m_driver->rounds();
        s.sinceCalibration = s.seconds - m_driver->timeOfRound();
    }
    if (m_host) {
        float celsius = 0.0F;
        m_host->fpga_read_shutterTemp(&celsius);
        s.shutterTemp = static_cast<double>(celsius);
        m_host->fpga_read_sensorTemp(&celsius);
        s.sensorTemp = static_cast<double>(celsius);
        s.drift = static_cast<double>(m_host->getDeltaTemp());
    }
    s.troubles.clear();
    addTroubles(s);
}

void Session::addTroubles(Snapshot& s) const {
    const std::string remark = steadySeconds() < m_remarkEnds ? m_remark : std::string();
    for (const std::string& text : {m_failure, m_loss, remark})
        if (!text.empty())
            s.troubles.push_back(text);
    if (!m_host)
        return;
    if (s.lens < 0)
        s.troubles.emplace_back("No lens that is known is mounted: readings are wrong.");
    else if (m_host->checkBiaoDingTab() != 0)
        s.troubles.push_back("No usable calibration table for lens " + std::to_string(s.lens) +
                             " in range " + std::to_string(s.range) + ": readings are wrong.");
    if (!m_frameWhole)
        s.troubles.emplace_back("The frame did not come whole.");
    if (s.core == CoreState::silent)
        s.troubles.emplace_back(
            m_rounds->waits() ? "The detector core does not answer: what was asked of it, and the "
                                "next calibration, wait."
                              : "The detector core does not answer: there will be no calibration.");
    else if (m_rounds && !m_rounds->measuresItself())
        s.troubles.emplace_back("The camera's own temperatures do not come: it cannot calibrate.");
    else if (s.frozen && m_rounds && m_rounds->waits())
        s.troubles.emplace_back("Frozen: what was asked comes when the picture goes on.");
    if (m_tape && !m_tape->complete)
        s.troubles.emplace_back("The recording was cut short; what is there is shown.");
}

} // namespace irmcore::view
