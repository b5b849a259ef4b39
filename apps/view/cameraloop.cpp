#include "cameraloop.h"

#include "session.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <iterator>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace irmcore::view {

namespace {

using Clock = std::chrono::steady_clock;

/// How many frames there were in the last second.
class Pace {
public:
    double count(Clock::time_point now) {
        m_frames.push_back(now);
        while (now - m_frames.front() > std::chrono::seconds(1))
            m_frames.pop_front();
        const double span = std::chrono::duration<double>(now - m_frames.front()).count();
        return span > 0.0 ? static_cast<double>(m_frames.size() - 1) / span : 0.0;
    }

private:
    std::deque<Clock::time_point> m_frames;
};

Clock::duration period(double framesASecond) {
    return std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(1.0 / std::clamp(framesASecond, 0.1, 1000.0)));
}

} // namespace

CameraLoop::CameraLoop(Source source, const Wishes& wishes)
    : m_news(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    m_orders.source = std::move(source);
    m_orders.wishes = wishes;
    m_thread = std::thread([this] { run(); });
}

CameraLoop::~CameraLoop() {
    leave(std::chrono::milliseconds(0));
    m_thread.join();
    ::close(m_news);
}

template <typename Change>
void CameraLoop::order(Change change) {
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        change(m_orders);
    }
    m_changed.notify_all();
}

void CameraLoop::wish(const Wishes& wishes) {
    order([&](Orders& orders) { orders.wishes = wishes; });
}

void CameraLoop::simulate(const Simulation& simulation) {
    order([&](Orders& orders) { orders.simulation = simulation; });
}

void CameraLoop::open(Source source) {
    order([&](Orders& orders) {
        orders.source = std::move(source);
        orders.simulation.reset();
        orders.jobs.clear(); // they were for the other camera
    });
}

void CameraLoop::post(Job job) {
    order([&](Orders& orders) { orders.jobs.push_back(std::move(job)); });
}

void CameraLoop::calibrate() {
    post([](Session& session) { session.calibrate(); });
}

void CameraLoop::showScene(const irmsim::ScenePlan& scene) {
    post([scene](Session& session) { session.showScene(scene); });
}

void CameraLoop::warmUp(double celsius, double timeConstant) {
    post([=](Session& session) { session.warmUp(celsius, timeConstant); });
}

std::shared_ptr<const Snapshot> CameraLoop::latest() {
    std::uint64_t news = 0;
    // Nothing to be read is right too: then there is nothing new.
    [[maybe_unused]] const ssize_t n = ::read(m_news, &news, sizeof news);
    const std::lock_guard<std::mutex> hold(m_lock);
    return m_latest;
}

bool CameraLoop::leave(std::chrono::milliseconds patience) {
    order([](Orders& orders) { orders.stop = true; });
    std::unique_lock<std::mutex> hold(m_lock);
    return m_changed.wait_for(hold, patience, [this] { return m_ended; });
}

void CameraLoop::publish(std::shared_ptr<const Snapshot> snapshot) {
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        m_latest = std::move(snapshot);
    }
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t n = ::write(m_news, &one, sizeof one); // full: it is readable
}

void CameraLoop::run() {
    std::unique_ptr<Session> session;
    std::optional<Source> awaited; // until the camera before it has been let go of
    Wishes wishes;
    Simulation simulation;
    std::vector<Job> jobs; // for the camera that is awaited
    Pace pace;
    Clock::time_point next = Clock::now();
    double framesASecond = 0.0;
    std::uint64_t number = 0;
    std::uint64_t camera = 0;
    for (;;) {
        Orders orders;
        {
            std::unique_lock<std::mutex> hold(m_lock);
            m_changed.wait_until(hold, next, [this] { return m_orders.any(); });
            orders = std::exchange(m_orders, {});
        }
        if (orders.stop)
            break;
        if (orders.wishes)
            wishes = *orders.wishes;
        if (orders.source) {
            awaited = std::move(orders.source);
            simulation = {};
            simulation.lens = awaited->plan.lens;
            jobs.clear();
            if (session)
                session->leave();
        }
        if (orders.simulation)
            simulation = *orders.simulation;
        if (awaited && (!session || session->left())) {
            session.reset(); // one camera at a time
            session = std::make_unique<Session>(std::move(*awaited), ++camera, wishes);
            awaited.reset();
            next = Clock::now();
        }
        std::move(orders.jobs.begin(), orders.jobs.end(), std::back_inserter(jobs));
        session->wish(wishes);
        if (!awaited) {
            session->simulate(simulation);
            for (const Job& job : std::exchange(jobs, {}))
                job(*session);
        }
        // What a person did is answered at once, and not only with the next frame.
        const bool fresh = Clock::now() >= next;
        auto snapshot = session->look(fresh);
        if (fresh) {
            const Clock::time_point now = Clock::now();
            next = std::max(next + period(session->framesASecond()), now);
            framesASecond = snapshot->present ? pace.count(now) : 0.0;
        }
        snapshot->number = ++number;
        snapshot->framesASecond = framesASecond;
        publish(std::move(snapshot));
    }
    if (session)
        session->leave();
    session.reset();
    const std::lock_guard<std::mutex> hold(m_lock);
    m_ended = true;
    m_changed.notify_all();
}

} // namespace irmcore::view
