#pragma once

#include "../../core/fpga.h"
#include "../../sim/camera.h"
#include "../driver.h"
#include "../picture.h"
#include "cameraloop.h"
#include "rounds.h"
#include "snapshot.h"
#include "tapeinmemory.h"

#include <QString>
#include <QTemporaryDir>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>

namespace irmcore::view {

/// s, of the clock that nothing moves.
double steadySeconds();

/// The library's host, and the camera behind it if that is not a real one. Nothing in here waits
/// for the detector core. Thread-bound to the camera's thread; the working directory is the
/// camera's while the object lives.
class Session {
public:
    /// `camera` is the number of this one, from 1.
    Session(Source source, std::uint64_t camera, const Wishes& wishes);
    /// Waits for what is being said to the core.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void wish(const Wishes& wishes);
    void simulate(const Simulation& simulation);
    void calibrate();
    void showScene(const irmsim::ScenePlan& scene);
    void warmUp(double celsius, double timeConstant);

    /// Brings the camera to where it is wished and reads it: with `fresh` a new frame, else only
    /// what tools read, in the frame at hand. What is shown of a frame belongs to it.
    std::shared_ptr<Snapshot> look(bool fresh);
    double framesASecond() const { return m_source.framesASecond; }

    /// Lets go of the camera for good, without waiting. It can still be looked at.
    void leave();
    /// Nothing of the camera is held any more.
    bool left() const { return m_left == nullptr || m_left->done; }

private:
    /// What is let go of: that takes as long as the core is silent, and so a thread of its own.
    struct Left {
        std::atomic<bool> done{false};
        std::thread thread;
    };
    /// The library, with what only derived classes see of it.
    class Host : public FPGA {
    public:
        std::uint16_t isothermLow() const { return m_isoMinStru.ad; }
        std::uint16_t isothermHigh() const { return m_isoMaxStru.ad; }
    };

    // Its life: session.cpp
    bool prepare(std::string& error);
    void keep();
    void connect();
    void takeOwn();
    void lose(const std::string& why);
    bool boardAnswers();
    bool shows() const;
    double seconds() const;
    void describe(Snapshot& snapshot) const;
    void addTroubles(Snapshot& snapshot) const;

    // A recording's: session_recording.cpp
    bool prepareRecording(std::string& error);
    void connectRecording();
    void followRecording();
    bool recordingShows() const;

    // What is wished: session_wishes.cpp
    void applyWishes();
    void applyLook();
    void placeWindow();
    void applyTarget();

    // What is read: session_reading.cpp
    bool readFrame();
    void readTools(Snapshot& snapshot);
    void readHeld(Snapshot& snapshot);
    irmsim::Scene simulatedScene() const;
    int simulatedWidth() const;
    ToolReading read(const Tool& tool, int number);
    void colour(Snapshot& snapshot);
    void compose(Snapshot& snapshot);

    Source m_source;
    Wishes m_wishes;
    Simulation m_simulation;
    std::string m_failure;     ///< why there will be no camera; empty if there may be
    std::string m_loss;        ///< why there is none at present
    std::string m_remark;      ///< what went wrong with the latest order of a person
    double m_remarkEnds = 0.0; ///< s of the steady clock
    std::optional<QTemporaryDir> m_sample;
    QString m_previousDirectory;
    std::optional<TapeInMemory> m_tape;
    std::unique_ptr<irmsim::Camera> m_camera; ///< none for a real one
    std::optional<irmsim::Scene> m_backdrop;  ///< of the simulated one, without target
    std::unique_ptr<Host> m_host;             ///< none while there is no camera
    std::unique_ptr<Rounds> m_rounds;         ///< none for a recording
    std::unique_ptr<Left> m_left;             ///< the one before, until it has gone
    bool m_leaving = false;
    double m_nextTry = 0.0;   ///< s, of looking for a lost camera or port
    bool m_portOpened = true; ///< the core's, when the library opened it

    std::unique_ptr<app::Driver> m_driver; ///< of a recording
    std::size_t m_calibrations = 0;        ///< of a recording, that have been followed
    bool m_frameSettled = false; ///< the frame at hand was read with all that belongs to it
    bool m_held = false;         ///< a recording's picture

    // What the library was told last; nothing before.
    std::optional<Parameters> m_parameters;
    std::optional<Look> m_look;
    std::optional<IsothermWish> m_isotherm;

    Snapshot m_last;          ///< what stays while nothing new comes
    std::vector<Tool> m_read; ///< the tools that its readings are of
    bool m_frameWhole = true; ///< the latest one
    std::optional<app::Picture> m_visible;
    std::uint64_t m_visibleStamp = 0;
    double m_nextVisible = 0.0; ///< s
};

} // namespace irmcore::view
