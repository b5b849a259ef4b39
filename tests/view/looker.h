#pragma once

#include "apps/view/session.h"
#include "sim/observer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// What the tests of the window's camera share.
namespace irmtest {

using namespace irmcore::view;

/// A scene of 160x120 at 22 °C, with single pixels of other temperatures.
struct Mark {
    int x;
    int y;
    double celsius;
};

inline irmsim::ScenePlan marked(const std::vector<Mark>& marks, double celsius = 22.0) {
    const auto word = [](double t) {
        const auto kelvin = static_cast<unsigned>(std::lround((t + 273.15) * 100.0));
        return std::string{static_cast<char>(kelvin >> 8U), static_cast<char>(kelvin & 0xFFU)};
    };
    irmsim::ScenePlan scene;
    scene.kind = irmsim::ScenePlan::Kind::pgm;
    scene.pgm = "P5\n160 120\n65535\n";
    const std::size_t head = scene.pgm.size();
    for (int i = 0; i < 160 * 120; ++i)
        scene.pgm += word(celsius);
    for (const Mark& m : marks)
        scene.pgm.replace(head + 2 * static_cast<std::size_t>(m.y * 160 + m.x), 2, word(m.celsius));
    return scene;
}

/// The simulated camera with the bench in 160x120, its time so many times the wall's.
inline Source smallCamera(double factor) {
    Source source;
    source.plan.scene.width = 160;
    source.plan.scene.height = 120;
    source.plan.wallFactor = factor;
    return source;
}

/// What a sanitizer watches takes its time.
#ifdef SANITIZED
constexpr double hurry(double factor) { return factor / 3; }
#else
constexpr double hurry(double factor) { return factor; }
#endif

inline irmsim::Event at(double seconds, irmsim::What what, std::array<double, 6> values = {}) {
    return {irmsim::timeOf(seconds), what, values, {}};
}

inline Tool spotAt(int id, int x, int y) { return {id, ToolKind::spot, {{x, y}, {x, y}}}; }
inline Tool lineFrom(int id, Pixel from, Pixel to) { return {id, ToolKind::line, {from, to}}; }
inline Tool areaOf(int id, Pixel from, Pixel to) { return {id, ToolKind::area, {from, to}}; }

/// The bench's black bodies in 160x120: centres and truths.
inline const std::vector<Mark> bodies{{20, 30, -10.0}, {60, 30, 0.0},  {100, 30, 37.0},
                                      {140, 30, 60.0}, {20, 90, 80.0}, {60, 90, 100.0},
                                      {100, 90, 140.0}};

inline Wishes spotsOnBodies() {
    Wishes wishes;
    for (const Mark& body : bodies)
        wishes.tools.push_back(spotAt(static_cast<int>(wishes.tools.size()) + 1, body.x, body.y));
    return wishes;
}

/// What is written to the core, questions for the VSK left out: code, colon, payload.
class Ear {
public:
    Ear() { irmsim::setObserver(&m_observer); }
    ~Ear() { irmsim::setObserver(nullptr); }
    Ear(const Ear&) = delete;
    Ear& operator=(const Ear&) = delete;

    /// All so far, with blanks between: "82:78000000 30:00 31".
    std::string words() const {
        const std::lock_guard<std::mutex> hold(irmsim::cameraLock());
        std::string all;
        for (const auto& word : m_words)
            all += (all.empty() ? "" : " ") + word.first;
        return all;
    }
    std::size_t count() const {
        const std::lock_guard<std::mutex> hold(irmsim::cameraLock());
        return m_words.size();
    }
    /// When the word of this number came, s of the camera's time.
    double timeOf(std::size_t number) const {
        const std::lock_guard<std::mutex> hold(irmsim::cameraLock());
        return m_words.at(number).second;
    }

private:
    void hear(const irmsim::Observation& o) {
        constexpr long wrapping = 6; // a frame's bytes without its payload
        constexpr std::uint8_t question = 0x77;
        if (!o.port || o.call != irmsim::Observation::Call::write || o.result < wrapping ||
            o.bytes[2] == question)
            return;
        std::string word = hex(o.bytes[2]) + (o.bytes[3] > 0 ? ":" : "");
        for (long i = 4; i < o.result - 2; ++i)
            word += hex(o.bytes[i]);
        m_words.emplace_back(std::move(word), irmsim::secondsOf(o.time));
    }
    static std::string hex(unsigned byte) {
        constexpr char digits[] = "0123456789ABCDEF";
        return {digits[byte >> 4U], digits[byte & 15U]};
    }

    std::vector<std::pair<std::string, double>> m_words; // under the camera's lock
    irmsim::Observer m_observer{
        [](void* self, const irmsim::Observation& o) { static_cast<Ear*>(self)->hear(o); }, this};
};

/// The camera's thread, without a thread.
class Looker {
public:
    using Snap = std::shared_ptr<const Snapshot>;
    using Wanted = std::function<bool(const Snapshot&)>;

    explicit Looker(const Source& source, const Wishes& wishes = {})
        : m_session(source, 1, wishes) {}

    Session& session() { return m_session; }
    Snap look(bool fresh = true) { return m_session.look(fresh); }
    /// Looks until a snapshot is as described: that one, null without any within a minute.
    /// `witness` is shown all of them.
    Snap until(const Wanted& wanted, const std::function<void(const Snapshot&)>& witness = {}) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (std::chrono::steady_clock::now() < end) {
            const Snap snapshot = look();
            if (witness)
                witness(*snapshot);
            if (wanted(*snapshot))
                return snapshot;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return nullptr;
    }
    /// Calibrated, and nothing under way.
    Snap settle() { return until(atRest); }
    /// A snapshot of a calibration that is asked for now; the frame is the one at hand.
    Snap closed() {
        m_session.calibrate();
        Snap snapshot = look(false);
        // The core may be busy with something else first.
        for (int i = 0; i < 30000 && !snapshot->calibrating; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            snapshot = look(false);
        }
        return snapshot;
    }
    Snap after(double seconds, const std::function<void(const Snapshot&)>& witness = {}) {
        return until([=](const Snapshot& s) { return s.seconds >= seconds; }, witness);
    }
    static bool atRest(const Snapshot& s) { return s.present && s.settled && !s.calibrating; }

private:
    Session m_session;
};

inline bool says(const Snapshot& s, const std::string& words) {
    for (const std::string& trouble : s.troubles)
        if (trouble.find(words) != std::string::npos)
            return true;
    return false;
}

/// The spots on the bodies read their truths, those that the range holds.
inline void expectBodies(const Snapshot& s, double tolerance, const std::string& when) {
    ASSERT_EQ(s.readings.size(), bodies.size()) << when;
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        const Value& value = s.readings[i].hottest;
        if (s.range == 1 && bodies[i].celsius < 5.0)
            continue;
        EXPECT_EQ(value.status, "OK") << when << ", body " << i;
        EXPECT_NEAR(value.celsius, bodies[i].celsius, tolerance) << when << ", body " << i;
    }
}

} // namespace irmtest
