#pragma once

#include "../core/fpga.h"
#include "../sim/camera.h"

#include <functional>

namespace irmcore::app {

/// What a host leaves out of the pattern that keeps readings right, to show what each step is for.
struct Habits {
    bool updatesDelta = true;
    bool updatesSensor = true;
    bool updatesShutter = true;
    bool calibrates = true;   ///< has the core calibrate in a round
    bool waitsForCore = true; ///< takes no reading while the core calibrates
};

/// Drives a camera as a host should: calibration rounds when they are due, the drift before every
/// batch of readings. docs/driving.md explains the pattern.
class Driver {
public:
    /// `clock` tells the time in s from any moment on.
    Driver(FPGA& host, std::function<double()> clock, const Habits& habits);
    /// On a simulated camera's time.
    Driver(FPGA& host, const irmsim::Camera& camera, const Habits& habits);

    /// After `init()`: takes the shutter from the core and does a first round.
    void start();
    /// Before a batch of readings.
    void beforeReadings();
    /// Has the core calibrate, and takes the temperatures that belong to it.
    void calibrationRound();
    /// Whether it is time for a round, by the sensor's temperature as it is now.
    bool roundIsDue();
    /// The second half of a round, for a host that does not wait in here: the core has calibrated
    /// and is done.
    void takeTemperatures();
    int rounds() const { return m_rounds; }
    double timeOfRound() const { return m_timeOfRound; } ///< s, of the clock

private:
    bool roundIsDue(float sensor) const;
    float sensorTemp();

    FPGA& m_host;
    std::function<double()> m_clock;
    Habits m_habits;
    float m_sensorAtRound = 0.0F; // °C
    double m_timeOfRound = 0.0;   // s
    int m_rounds = 0;
};

} // namespace irmcore::app
