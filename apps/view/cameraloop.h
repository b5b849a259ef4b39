#pragma once

#include "../../sim/plan.h"
#include "snapshot.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace irmcore::view {

class Session;

/// Which camera to look at.
struct Source {
    SourceKind kind = SourceKind::simulated;
    irmsim::Plan plan;     ///< of a simulated one
    std::string recording; ///< file, absolute
    std::string directory; ///< camera directory, absolute; empty: a sample one, for a real camera
                           ///< the present one
    int width = 384;       ///< of a real camera's frames: 384 or 160
    double framesASecond = 25.0;
};

/// The camera on a thread of its own: the library's one host. All calls return at once, whatever
/// the camera does. Thread-bound to the window's thread.
class CameraLoop {
public:
    /// Something to be done by the camera's thread, once.
    using Job = std::function<void(Session&)>;

    /// Starts with `source`; the first snapshot comes as soon as there is a frame or a trouble.
    CameraLoop(Source source, const Wishes& wishes);
    /// Lets go of the camera. Waits for it, with a silent core up to 40 s: for what a command
    /// awaits, and a question. See `leave`.
    ~CameraLoop();
    CameraLoop(const CameraLoop&) = delete;
    CameraLoop& operator=(const CameraLoop&) = delete;

    void wish(const Wishes& wishes);
    void simulate(const Simulation& simulation);
    /// Another camera instead. What is wished stays; simulation goes back to its defaults.
    void open(Source source);
    void post(Job job);
    void calibrate();
    /// Puts another scene before the simulated camera.
    void showScene(const irmsim::ScenePlan& scene);
    /// Has the simulated camera warm up to `celsius` inside with a time constant in s.
    void warmUp(double celsius, double timeConstant);

    /// The latest snapshot, null before the first; the descriptor is quiet then until the next.
    std::shared_ptr<const Snapshot> latest();
    /// Readable while there is a snapshot that `latest` has not given.
    int newsDescriptor() const { return m_news; }

    /// Asks the thread to let go of the camera, and waits so long at most. True when it has.
    bool leave(std::chrono::milliseconds patience);

private:
    void run();
    void publish(std::shared_ptr<const Snapshot> snapshot);

    struct Orders {
        std::optional<Source> source;
        std::optional<Wishes> wishes;
        std::optional<Simulation> simulation;
        std::vector<Job> jobs;
        bool stop = false;
        bool any() const { return source || wishes || simulation || !jobs.empty() || stop; }
    };

    template <typename Change>
    void order(Change change);

    std::mutex m_lock; // for what follows
    std::condition_variable m_changed;
    Orders m_orders;
    std::shared_ptr<const Snapshot> m_latest;
    bool m_ended = false;

    int m_news; // eventfd
    std::thread m_thread;
};

} // namespace irmcore::view
