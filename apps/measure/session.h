#pragma once

#include "../driver.h"
#include "plan.h"
#include "reading.h"

#include <QTemporaryDir>

#include <csignal>
#include <memory>

namespace irmcore::app::measuring {

/// The library on the camera that a plan asks for, driven as a host should: the working directory
/// is the camera's while the object lives.
class Session {
public:
    explicit Session(const MeasurePlan& plan) : m_plan(plan) {}
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Enters the camera directory and sets a simulated camera up. False, with a text in `error`,
    /// when that cannot be done. Once, before all else.
    bool prepare(QString& error);
    /// Opens the camera and brings it to where it can measure: start-up, range, parameters, places,
    /// first calibration round. Again after a failure. False, with a text in `error`, when there is
    /// no camera that can measure.
    bool start(QString& error);
    bool started() const { return m_host != nullptr; }
    /// One batch. On failure nothing, a text in `error`, and the camera is no longer open.
    std::optional<Batch> measure(QString& error);
    /// Gives the automatic shutter back to the core and lets go of the camera.
    void stop();

    /// Seconds from any moment on: simulated time with a simulated camera.
    double seconds() const;
    /// Sleeps until that time, or until `*interrupted`.
    void sleepUntil(double seconds, const volatile std::sig_atomic_t* interrupted) const;

private:
    bool boardAnswers();
    bool usableTable(QString& error);
    bool followLens(QString& error);
    bool temperaturesCame(QString& error);
    void applyParameters();
    void changeRange(int range);
    bool readPlaces(Batch& batch, QString& error);
    bool readArea(int number, const Span& span, std::vector<Finding>& to);
    bool readFrame(Batch& batch, QString& error);

    const MeasurePlan& m_plan;
    std::optional<QTemporaryDir> m_sample;
    QString m_previousDirectory;
    std::unique_ptr<irmsim::Camera> m_camera; // none with the real one
    std::unique_ptr<FPGA> m_host;
    std::unique_ptr<Driver> m_driver;
};

} // namespace irmcore::app::measuring
