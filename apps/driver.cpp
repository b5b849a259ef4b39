#include "driver.h"

#include <cmath>
#include <unistd.h>
#include <utility>

namespace irmcore::app {

namespace {

constexpr float driftStep = 0.2F;       // °C of the sensor that make a round due
constexpr float driftKink = 31.0F;      // °C of the sensor where the drift's rule changes
constexpr double longestWait = 180.0;   // s between rounds
constexpr useconds_t coreTime = 500000; // µs that the core takes to calibrate, and some more

} // namespace

Driver::Driver(FPGA& host, std::function<double()> clock, const Habits& habits)
    : m_host(host), m_clock(std::move(clock)), m_habits(habits) {}

Driver::Driver(FPGA& host, const irmsim::Camera& camera, const Habits& habits)
    : Driver(
          host, [&camera] { return camera.seconds(); }, habits) {}

void Driver::start() {
    ::usleep(coreTime); // what init() sent makes the core calibrate too
    m_host.autoShutter(false);
    ::usleep(coreTime);
    calibrationRound();
}

float Driver::sensorTemp() {
    float sensor = 0.0F;
    m_host.fpga_read_sensorTemp(&sensor);
    return sensor;
}

bool Driver::roundIsDue(float sensor) const {
    return std::abs(sensor - m_sensorAtRound) >= driftStep ||
           (sensor < driftKink) != (m_sensorAtRound < driftKink) ||
           m_clock() - m_timeOfRound >= longestWait;
}

bool Driver::roundIsDue() { return roundIsDue(sensorTemp()); }

void Driver::beforeReadings() {
    if (roundIsDue())
        calibrationRound();
    if (m_habits.updatesDelta)
        m_host.updateDeltaTemp();
}

void Driver::calibrationRound() {
    if (m_habits.calibrates)
        m_host.insideShutter();
    if (m_habits.waitsForCore)
        ::usleep(coreTime);
    takeTemperatures();
}

void Driver::takeTemperatures() {
    if (m_habits.updatesSensor)
        m_host.updateSensorTemp(true);
    if (m_habits.updatesShutter)
        m_host.updateShutterTemp(true);
    m_sensorAtRound = sensorTemp();
    m_timeOfRound = m_clock();
    ++m_rounds;
}

} // namespace irmcore::app
