#include "plan.h"

#include "camera.h"
#include "tape.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace irmsim {

namespace {

constexpr std::string_view magic = "irmsim-plan 1";
constexpr std::array<const char*, 4> sceneKinds{"bench", "uniform", "gradient", "pgm"};

class Writer {
public:
    /// A line: a keyword and its values.
    template <typename... Values>
    void line(std::string_view keyword, const Values&... values) {
        m_text += keyword;
        (put(values), ...);
        m_text += '\n';
    }
    void bytes(const std::string& more) { m_text += more; }
    std::string take() { return std::move(m_text); }

private:
    void put(std::string_view word) { (m_text += ' ') += word; }
    void put(const char* word) { put(std::string_view(word)); }
    void put(const std::string& words) { put(std::string_view(words)); }
    void put(const std::vector<double>& numbers) {
        for (const double number : numbers)
            put(number);
    }
    template <typename Number>
    void put(Number number) {
        std::array<char, 40> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        put(std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())));
    }

    std::string m_text;
};

void write(Writer& out, const ScenePlan& scene) {
    const char* kind = sceneKinds[static_cast<std::size_t>(scene.kind)];
    if (scene.kind == ScenePlan::Kind::pgm) {
        out.line("scene", kind, scene.pgm.size());
        out.bytes(scene.pgm);
    } else {
        out.line("scene", kind, scene.width, scene.height, scene.from, scene.to);
    }
}

/// Takes a plan apart. After a failure every further word is empty and every number is refused.
class Reader {
public:
    explicit Reader(std::string_view bytes) : m_left(bytes) {}

    /// Begins the next line. False at the end of the bytes.
    bool nextLine() {
        const std::size_t end = m_left.find('\n');
        if (end == std::string_view::npos)
            return false;
        m_line = m_left.substr(0, end);
        m_left.remove_prefix(end + 1);
        return true;
    }
    std::string_view line() const { return m_line; }

    std::string_view word() {
        const std::size_t end = std::min(m_line.find(' '), m_line.size());
        const std::string_view word = m_line.substr(0, end);
        m_line.remove_prefix(std::min(end + 1, m_line.size()));
        return word;
    }

    /// Reads a number within the bounds into `to`.
    template <typename Number>
    bool number(Number& to, double low = -1e9, double high = 1e9) {
        const std::string_view text = word();
        Number value{};
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size())
            return false;
        if constexpr (!std::is_same_v<Number, std::uint64_t>)
            if (!(static_cast<double>(value) >= low && static_cast<double>(value) <= high))
                return false;
        to = value;
        return true;
    }

    bool flag(bool& to) {
        int value = 0;
        const bool read = number(value, 0, 1);
        to = value != 0;
        return read;
    }

    bool bytes(std::size_t count, std::string& to) {
        if (m_left.size() < count)
            return false;
        to = m_left.substr(0, count);
        m_left.remove_prefix(count);
        return true;
    }

private:
    std::string_view m_left;
    std::string_view m_line;
};

bool readScene(Reader& in, ScenePlan& scene) {
    const std::string_view kind = in.word();
    for (std::size_t i = 0; i < sceneKinds.size(); ++i) {
        if (kind != sceneKinds[i])
            continue;
        scene.kind = static_cast<ScenePlan::Kind>(i);
        std::size_t size = 0;
        if (scene.kind == ScenePlan::Kind::pgm)
            return in.number(size) && in.bytes(size, scene.pgm);
        return in.number(scene.width, 1, 1024) && in.number(scene.height, 1, 1024) &&
               in.number(scene.from) && in.number(scene.to);
    }
    return false;
}

bool readEvent(Reader& in, Event& event) {
    std::int64_t at = 0;
    if (!in.number(at, 0, 1e18))
        return false;
    event.at = Time(at);
    const std::string_view name = in.word();
    for (std::size_t i = 0; i < whats.size(); ++i) {
        if (name != whats[i].name)
            continue;
        event.what = static_cast<What>(i);
        for (std::size_t value = 0; value < whats[i].values; ++value)
            if (!in.number(event.values[value]))
                return false;
        event.text = in.line();
        return true;
    }
    return false;
}

bool readLine(Reader& in, std::string_view keyword, Plan& plan) {
    if (keyword == "scene")
        return readScene(in, plan.scenes.emplace_back());
    if (keyword == "surroundings") {
        Surroundings& s = plan.surroundings;
        return in.number(s.emissivity) && in.number(s.distance) && in.number(s.humidity) &&
               in.number(s.envTemp) && in.number(s.reflectedTemp);
    }
    if (keyword == "range")
        return in.number(plan.range, 0, 1);
    if (keyword == "lens")
        return in.number(plan.lens, 0, 6);
    if (keyword == "inside")
        return in.number(plan.inside.emplace());
    if (keyword == "warmUp") {
        WarmUp& w = plan.warmUp.emplace();
        return in.number(w.shutterStart) && in.number(w.shutterEnd) && in.number(w.sensorStart) &&
               in.number(w.sensorEnd) && in.number(w.timeConstant);
    }
    if (keyword == "noise")
        return in.number(plan.noise) && in.number(plan.seed);
    if (keyword == "frameRate")
        return in.number(plan.frameRate);
    if (keyword == "wallFactor")
        return in.number(plan.wallFactor);
    if (keyword == "pty")
        return in.flag(plan.pty);
    if (keyword == "replay") {
        ReplayPlan& r = plan.replay.emplace();
        return in.number(r.tape, 0, 1e6) && in.flag(r.loop);
    }
    if (keyword == "event")
        return readEvent(in, plan.events.emplace_back());
    return false;
}

} // namespace

std::string writePlan(const Plan& plan) {
    Writer out;
    out.line(magic);
    write(out, plan.scene);
    for (const ScenePlan& scene : plan.scenes)
        write(out, scene);
    const Surroundings& s = plan.surroundings;
    out.line("surroundings", s.emissivity, s.distance, s.humidity, s.envTemp, s.reflectedTemp);
    out.line("range", plan.range);
    out.line("lens", plan.lens);
    if (plan.inside)
        out.line("inside", *plan.inside);
    if (const auto& w = plan.warmUp)
        out.line("warmUp", w->shutterStart, w->shutterEnd, w->sensorStart, w->sensorEnd,
                 w->timeConstant);
    out.line("noise", plan.noise, plan.seed);
    out.line("frameRate", plan.frameRate);
    out.line("wallFactor", plan.wallFactor);
    out.line("pty", plan.pty ? 1 : 0);
    for (const Event& event : plan.events) {
        const WhatOf& what = whats[static_cast<std::size_t>(event.what)];
        const auto* first = event.values.data();
        out.line("event", event.at.count(), what.name,
                 std::vector<double>(first, first + what.values), event.text);
    }
    if (const auto& r = plan.replay)
        out.line("replay", r->tape, r->loop ? 1 : 0);
    out.line("end");
    return out.take();
}

std::optional<Plan> parsePlan(std::string_view bytes, std::string& error) {
    Reader in(bytes);
    if (!in.nextLine() || in.line() != magic) {
        error = "the camera's plan is of another version";
        return std::nullopt;
    }
    Plan plan;
    while (in.nextLine()) {
        const std::string line(in.line());
        const std::string_view keyword = in.word();
        if (keyword == "end" && !plan.scenes.empty()) {
            plan.scene = plan.scenes.front();
            plan.scenes.erase(plan.scenes.begin());
            return plan;
        }
        if (!readLine(in, keyword, plan)) {
            error = "the camera's plan has a wrong line '" + line + "'";
            return std::nullopt;
        }
    }
    error = "the camera's plan is not complete";
    return std::nullopt;
}

bool setUp(Camera& camera, const Plan& plan, std::string& error) {
    if (plan.replay) {
        const auto tape = Tape::map(plan.replay->tape, error);
        if (tape)
            camera.logging(false).replay(*tape, plan.replay->loop);
        return tape.has_value();
    }
    auto scene = plan.scene.draw(error);
    if (!scene)
        return false;
    camera.scene(std::move(*scene)).surroundings(plan.surroundings).range(plan.range);
    camera.lens(plan.lens).noise(plan.noise, plan.seed).frameRate(plan.frameRate);
    camera.serialOnPty(plan.pty).logging(false);
    if (plan.inside)
        camera.insideTemp(*plan.inside);
    if (plan.warmUp)
        camera.warmUp(*plan.warmUp);
    camera.scenario(Scenario(plan.events, plan.scenes)).tieToWallClock(plan.wallFactor);
    return true;
}

} // namespace irmsim
