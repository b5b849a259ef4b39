#include "session.h"

#include "storedsettings.h"

#include "../../core/range.h"
#include "../../core/settings.h"
#include "../../sim/cameradir.h"
#include "../commands.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace irmcore::app::measuring {

namespace {

constexpr useconds_t coreTime = 500000; // µs that the core takes for a command

/// Why the board's device cannot be opened; empty when it can.
QString whyNoDevice() {
    const int fd = ::open(irmsim::fpgaDevicePath, O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return QString::fromLocal8Bit(std::strerror(errno));
    ::close(fd);
    return {};
}

} // namespace

bool Session::prepare(QString& error) {
    irmsim::Plan camera = m_plan.camera.plan;
    QString directory = m_plan.camera.cameraDirectory;
    if (directory.isEmpty() && !m_plan.real) {
        m_sample.emplace();
        std::string why;
        if (!m_sample->isValid())
            error = m_sample->errorString();
        else if (!irmsim::writeCameraDirectory(QFile::encodeName(m_sample->path()).toStdString(),
                                               {camera.surroundings, camera.range}, why))
            error = QString::fromLocal8Bit(why.c_str());
        if (!error.isEmpty())
            return false;
        directory = m_sample->path();
    }
    m_previousDirectory = QDir::currentPath();
    if (!directory.isEmpty() && !QDir::setCurrent(directory)) {
        error = QStringLiteral("cannot enter %1").arg(directory);
        return false;
    }
    if (m_plan.real)
        return true;
    camera.surroundings = truthOf(m_plan.parameters);
    camera.range = m_plan.range.value_or(settings::storedTempRange() == 0 ? 0 : 1);
    m_camera = std::make_unique<irmsim::Camera>();
    std::string why;
    if (!irmsim::setUp(*m_camera, camera, why) || !m_camera->install()) {
        error = why.empty() ? QStringLiteral("another simulated camera is installed")
                            : QString::fromLocal8Bit(why.c_str());
        return false;
    }
    return true;
}

bool Session::boardAnswers() {
    std::array<char, 15> version{};
    return m_host->fpga_get_version(version.data()) == version.size();
}

bool Session::usableTable(QString& error) {
    if (m_host->checkBiaoDingTab() == 0)
        return true;
    error = QStringLiteral("no usable calibration table below %1 for lens %2 in range %3")
                .arg(QDir::currentPath() + QStringLiteral("/etc"))
                .arg(m_host->getLenIndex())
                .arg(m_plan.range.value_or(settings::storedTempRange()));
    return false;
}

bool Session::start(QString& error) {
    if (const QString why = whyNoDevice(); !why.isEmpty()) {
        error = QStringLiteral("no camera: %1: %2").arg(QLatin1String(irmsim::fpgaDevicePath), why);
        return false;
    }
    m_host = std::make_unique<FPGA>();
    m_driver = std::make_unique<Driver>(
        *m_host, [this] { return seconds(); }, Habits{});
    unsigned short vsk = 0;
    if (!boardAnswers())
        error = QStringLiteral("no camera: the board does not answer");
    else if (m_host->getSerialVSK(&vsk) != 0) // a query: up to 20 s
        error = QStringLiteral("the detector core does not answer; without its calibrations "
                               "readings are wrong");
    else if (m_plan.range.value_or(settings::storedTempRange()) == settings::storedTempRange())
        usableTable(error);
    if (error.isEmpty()) {
        m_host->init();
        m_driver->start();
        if (m_plan.range && *m_plan.range != settings::storedTempRange()) {
            changeRange(*m_plan.range);
            usableTable(error);
        }
    }
    if (!error.isEmpty()) {
        m_driver.reset();
        m_host.reset();
        return false;
    }
    applyParameters();
    return true;
}

void Session::changeRange(int range) {
    m_host->changeTempRange(range, storedIntTime(range));
    ::usleep(coreTime);
    m_host->setTempRange(range);
    const RangeLimits limits = limitsOfRange(range);
    m_host->setTempRangeMinMax(limits.min, limits.max);
    m_driver->calibrationRound();
}

void Session::applyParameters() {
    const GivenParameters& given = m_plan.parameters;
    const auto single = [](double value) { return static_cast<float>(value); };
    TempSetup setup = m_host->getSystemTempSetup();
    if (given.emissivity)
        setup.emiss = single(*given.emissivity);
    if (given.distance)
        setup.dist = single(*given.distance);
    if (given.offset)
        setup.offset = single(*given.offset);
    m_host->setSystemTempSetup(setup);
    if (given.air)
        m_host->setEnvTemp(single(*given.air));
    if (given.humidity)
        m_host->setHumid(single(*given.humidity));
    if (given.reflected)
        m_host->setReflecTemp(single(*given.reflected));
}

bool Session::followLens(QString& error) {
    const int before = m_host->getLenIndex();
    if (m_host->get_set_lenIndex() == before)
        return true;
    if (!usableTable(error))
        return false;
    m_driver->calibrationRound();
    return true;
}

/// A temperature whose read failed counts as 0 °C in the library, and nothing tells: then what it
/// keeps is far from what the registers show.
bool Session::temperaturesCame(QString& error) {
    constexpr float mostDrift = 1.5F;  // °C; more than 0.2 °C of the sensor take a round first
    constexpr float mostChange = 3.0F; // °C since that round
    float shutter = 0.0F;
    float sensor = 0.0F;
    m_host->fpga_read_shutterTemp(&shutter);
    m_host->fpga_read_sensorTemp(&sensor);
    const float inside = m_host->getModifyShutterTemp() / m_host->getModifyValue();
    if (std::abs(m_host->getDeltaTemp()) < mostDrift &&
        std::abs(m_host->getSensorTemp() - sensor) < mostChange &&
        std::abs(inside - (shutter + sensor) / 2) < mostChange)
        return true;
    error = QStringLiteral("the camera's own temperatures did not come");
    return false;
}

std::optional<Batch> Session::measure(QString& error) {
    Batch batch;
    if (m_camera)
        m_camera->nextFrame(); // a simulated one stays until a frame is read
    const QString gone = QStringLiteral("the camera went away: the board does not answer");
    if (!boardAnswers()) {
        error = gone;
    } else if (followLens(error)) {
        m_driver->beforeReadings();
        batch.time = QDateTime::currentDateTime();
        batch.time = batch.time.toOffsetFromUtc(batch.time.offsetFromUtc());
        if (m_camera)
            batch.cameraSeconds = m_camera->seconds();
        const bool complete = temperaturesCame(error) && readPlaces(batch, error);
        if (!boardAnswers())
            error = gone;
        else if (complete)
            return batch;
    }
    m_driver.reset();
    m_host.reset();
    return std::nullopt;
}

void Session::stop() {
    if (m_host) {
        m_host->autoShutter(true);
        ::usleep(coreTime); // until it is on its way
    }
    m_driver.reset();
    m_host.reset();
}

Session::~Session() {
    stop();
    m_camera.reset();
    if (!m_previousDirectory.isEmpty())
        QDir::setCurrent(m_previousDirectory);
}

double Session::seconds() const {
    if (m_camera)
        return m_camera->seconds();
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void Session::sleepUntil(double until, const volatile std::sig_atomic_t* interrupted) const {
    constexpr double step = 0.1; // s, so that an interruption is soon seen
    double left = until - seconds();
    while (left > 0.0 && *interrupted == 0) {
        ::usleep(static_cast<useconds_t>(std::min(left, step) * 1e6) + 1);
        left = until - seconds();
    }
}

} // namespace irmcore::app::measuring
