#include "scenario.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <utility>

namespace irmcore::app {

namespace {

using irmsim::Event;
using irmsim::ScenePlan;
using irmsim::What;
using Words = std::vector<std::string>;

/// A number that a command takes.
struct Bounds {
    double low;
    double high;
    bool whole;
};
constexpr Bounds celsius{-273.15, 2000.0, false};
constexpr Bounds insideCelsius{-60.0, 120.0, false};
constexpr Bounds position{-10000.0, 10000.0, false};
constexpr Bounds side{1, 1024, true};
constexpr Bounds seconds{0.0, 1e8, false};

/// Whether a word is a number within the bounds; if so, `to` is that.
bool numberOf(const std::string& word, const Bounds& bounds, double& to) {
    double value = 0.0;
    const char* end = word.data() + word.size();
    const auto found = std::from_chars(word.data(), end, value);
    if (found.ec != std::errc() || found.ptr != end || !(value >= bounds.low) ||
        !(value <= bounds.high) || (bounds.whole && value != std::trunc(value)))
        return false;
    to = value;
    return true;
}

std::string shortest(double number) {
    std::array<char, 40> digits{};
    return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr};
}

/// A command of one or two words, and the number or the switch that is its value.
struct Command {
    const char* first;
    const char* second;
    What what;
    bool takesNumber;
    Bounds number;
    double constant;
};
constexpr Bounds none{};
constexpr std::array commands{
    Command{"inside", "", What::inside, true, insideCelsius, 0},
    Command{"sensor", "", What::sensor, true, insideCelsius, 0},
    Command{"shutter", "", What::shutter, true, insideCelsius, 0},
    Command{"ambient", "", What::ambient, true, {-40.0, 49.0, false}, 0},
    Command{"lens", "", What::lens, true, {0, 6, true}, 0},
    Command{"range", "", What::range, true, {0, 1, true}, 0},
    Command{"freeze", "on", What::freeze, false, none, 1},
    Command{"freeze", "off", What::freeze, false, none, 0},
    Command{"core", "silent", What::coreSilent, false, none, 0},
    Command{"core", "late", What::coreLate, true, seconds, 0},
    Command{"core", "garbled", What::coreGarbled, true, {0, 128, true}, 0},
    Command{"core", "normal", What::coreNormal, false, none, 0},
    Command{"core", "power-up", What::corePowerUp, false, none, 0},
    Command{"device", "gone", What::device, false, none, 0},
    Command{"device", "back", What::device, false, none, 1},
    Command{"port", "gone", What::port, false, none, 0},
    Command{"port", "back", What::port, false, none, 1},
};

constexpr std::array<std::pair<const char*, int>, 8> errors{{{"EIO", EIO},
                                                             {"ENODEV", ENODEV},
                                                             {"EAGAIN", EAGAIN},
                                                             {"EINTR", EINTR},
                                                             {"EBUSY", EBUSY},
                                                             {"ENXIO", ENXIO},
                                                             {"EINVAL", EINVAL},
                                                             {"ETIMEDOUT", ETIMEDOUT}}};

/// Takes a script apart. The first thing that is wrong is kept in `wrong`; from then on every word
/// is taken as missing.
class Script {
public:
    Script(std::string folder, const ScenePlan& size) : m_folder(std::move(folder)), m_size(size) {}

    bool line(const std::string& text);
    Scenario result;
    std::string wrong;

private:
    bool atEnd() const { return m_next == m_words.size(); }
    bool fail(const std::string& why) {
        if (wrong.empty())
            wrong = why;
        for (char& letter : wrong) // words may hold anything
            if (const auto code = static_cast<unsigned char>(letter); code < 0x20 || code == 0x7F)
                letter = '?';
        return false;
    }
    bool unexpected() { return fail("'" + m_words[m_next] + "' is not expected here"); }
    /// The next word if it is this one.
    bool accept(const char* word) {
        const bool is = !atEnd() && m_words[m_next] == word;
        m_next += is ? 1 : 0;
        return is;
    }
    std::string word(const char* what) {
        if (!atEnd())
            return m_words[m_next++];
        fail(std::string(what) + " is missing after '" + m_words[m_next - 1] + "'");
        return {};
    }
    bool number(const Bounds& bounds, double& to);
    bool time();
    bool command();
    bool simple(const std::string& first);
    bool scene();
    bool target();
    bool transfer();

    std::string m_folder;
    ScenePlan m_size;
    Words m_words;
    std::size_t m_next = 0;
    Event m_event;
    irmsim::Time m_before{0};
    Words m_targets;
};

bool Script::number(const Bounds& bounds, double& to) {
    const std::string text = word("a number");
    return !text.empty() &&
           (numberOf(text, bounds, to) ||
            fail("'" + text + "' is no " + (bounds.whole ? "whole " : "") + "number from " +
                 shortest(bounds.low) + " to " + shortest(bounds.high)));
}

bool Script::time() {
    if (accept("after")) {
        double later = 0.0;
        if (!number(seconds, later))
            return false;
        m_event.at = m_before + irmsim::timeOf(later);
        constexpr irmsim::Time latest = std::chrono::hours(10000);
        return m_event.at < latest ||
               fail("'" + m_words[m_next - 1] + "' leads beyond 10000 hours");
    }
    if (!accept("at"))
        return fail("'" + m_words[0] + "' is neither 'at' nor 'after'");
    const std::string text = word("a time");
    const std::size_t minutes = text.find(':');
    const std::size_t rest = text.find(':', std::min(minutes, text.size() - 1) + 1);
    std::array<double, 3> parts{};
    if (text.empty())
        return false;
    if (minutes == std::string::npos || rest == std::string::npos ||
        !numberOf(text.substr(0, minutes), {0, 9999, true}, parts[0]) ||
        !numberOf(text.substr(minutes + 1, rest - minutes - 1), {0, 59, true}, parts[1]) ||
        !numberOf(text.substr(rest + 1), {0, 59.999999999, false}, parts[2]))
        return fail("'" + text + "' is no time like 00:10:30 or 00:10:30.5");
    m_event.at = irmsim::timeOf(parts[0] * 3600 + parts[1] * 60 + parts[2]);
    return m_event.at >= m_before || fail("'" + text + "' is before the line above");
}

bool Script::scene() {
    m_event.what = What::scene;
    m_event.values[0] = static_cast<double>(result.scenes.size());
    if (atEnd())
        return !word("a scene").empty();
    std::string error;
    const Words words(m_words.begin() + static_cast<std::ptrdiff_t>(m_next), m_words.end());
    m_next = m_words.size();
    auto found = sceneOf(words, m_size, m_folder, error);
    if (!found)
        return fail(error);
    result.scenes.push_back(std::move(*found));
    return true;
}

bool Script::target() {
    const std::string name = word("a name");
    const auto known = std::find(m_targets.begin(), m_targets.end(), name);
    auto& v = m_event.values;
    v[0] = static_cast<double>(known - m_targets.begin());
    const bool isNew = known == m_targets.end();
    if (accept("at")) {
        constexpr std::size_t most = 1000;
        if (isNew && m_targets.size() == most)
            return fail("'" + name + "' is one target too many");
        if (isNew)
            m_targets.push_back(name);
        m_event.what = What::targetAt;
        return number(position, v[1]) && number(position, v[2]) &&
               (accept("size") || fail("'size' is missing")) && number(side, v[3]) &&
               number(side, v[4]) && (accept("temp") || fail("'temp' is missing")) &&
               number(celsius, v[5]);
    }
    if (isNew && !atEnd())
        return fail("'" + name + "' is placed by no line above");
    if (accept("move")) {
        m_event.what = What::targetMove;
        return number(position, v[1]) && number(position, v[2]) &&
               (!accept("over") || number(seconds, v[3]));
    }
    if (accept("temp")) {
        m_event.what = What::targetTemp;
        return number(celsius, v[1]);
    }
    m_event.what = What::targetOff;
    return accept("off") || (atEnd() ? !word("a command").empty() : unexpected());
}

bool Script::transfer() {
    m_event.what = What::transfer;
    auto& v = m_event.values;
    if (accept("normal"))
        return true;
    if (!accept("fail"))
        return atEnd() ? !word("'fail' or 'normal'").empty() : unexpected();
    if (!number({1, 1e6, true}, v[0]))
        return false;
    v[1] = EIO;
    if (accept("short")) {
        v[1] = 0;
        if (!number({0, 1e6, true}, v[2]))
            return false;
    } else {
        for (const auto& [name, value] : errors)
            if (accept(name))
                v[1] = value;
    }
    v[3] = accept("from-then-on") ? 1 : 0;
    if (v[3] == 0)
        accept("once");
    return true;
}

bool Script::simple(const std::string& first) {
    bool known = false;
    for (const Command& command : commands) {
        if (first != command.first)
            continue;
        known = true;
        if (command.second[0] != '\0' && !accept(command.second))
            continue;
        m_event.what = command.what;
        m_event.values[0] = command.constant;
        return !command.takesNumber || number(command.number, m_event.values[0]);
    }
    if (!known)
        return fail("'" + first + "' is no command");
    return atEnd() ? !word("a word").empty() : unexpected();
}

bool Script::command() {
    const std::string first = word("a command");
    if (first == "scene")
        return scene();
    if (first == "target")
        return target();
    if (first == "transfer")
        return transfer();
    if (first == "warm-up") {
        m_event.what = What::warmUp;
        m_event.values[1] = irmsim::WarmUp{}.timeConstant;
        return number(insideCelsius, m_event.values[0]) &&
               (atEnd() || number(seconds, m_event.values[1]));
    }
    return !first.empty() && simple(first);
}

bool Script::line(const std::string& text) {
    m_words.clear();
    m_next = 0;
    m_event = Event{};
    for (std::size_t from = 0; from < text.size();) {
        const std::size_t begin = text.find_first_not_of(" \t\r", from);
        if (begin == std::string::npos || text[begin] == '#')
            break;
        from = std::min(text.find_first_of(" \t\r", begin), text.size());
        m_words.push_back(text.substr(begin, from - begin));
        m_event.text += (m_event.text.empty() ? "" : " ") + m_words.back();
    }
    if (m_words.empty())
        return true;
    if (!time() || !command())
        return false;
    if (!atEnd())
        return unexpected();
    m_before = m_event.at;
    result.events.push_back(m_event);
    return true;
}

} // namespace

std::optional<ScenePlan> sceneOf(const Words& words, const ScenePlan& size,
                                 const std::string& folder, std::string& error) {
    ScenePlan scene = size;
    scene.kind = ScenePlan::Kind::bench;
    const auto temperatures = [&](ScenePlan::Kind kind, std::size_t count) {
        scene.kind = kind;
        std::array<double*, 2> to{&scene.from, &scene.to};
        for (std::size_t i = 0; i < count; ++i) {
            const std::string word = i + 1 < words.size() ? words[i + 1] : "";
            if (word.empty() && error.empty())
                error = "a number is missing after '" + words[std::min(i, words.size() - 1)] + "'";
            else if (error.empty() && !numberOf(word, celsius, *to[i]))
                error = "'" + word + "' is no number from " + shortest(celsius.low) + " to " +
                        shortest(celsius.high);
        }
        if (error.empty() && words.size() > count + 1)
            error = "'" + words[count + 1] + "' is not expected here";
    };
    error.clear();
    if (words[0] == "uniform") {
        temperatures(ScenePlan::Kind::uniform, 1);
    } else if (words[0] == "gradient") {
        temperatures(ScenePlan::Kind::gradient, 2);
    } else if (words.size() > 1) {
        error = "'" + words[1] + "' is not expected here";
    } else if (words[0] != "bench") {
        const std::string path = words[0][0] == '/' ? words[0] : folder + words[0];
        std::ifstream file(path, std::ios::binary);
        constexpr std::size_t limit = 1U << 20; // more than any scene with its comments
        scene.kind = ScenePlan::Kind::pgm;
        scene.pgm.resize(limit);
        file.read(scene.pgm.data(), static_cast<std::streamsize>(limit));
        scene.pgm.resize(static_cast<std::size_t>(file.gcount()));
        if (!file.is_open()) {
            error = std::strerror(errno);
        } else if (const auto drawn = scene.draw(error)) {
            scene.width = drawn->width(); // of those that come after it, too
            scene.height = drawn->height();
        }
        if (!error.empty())
            error = "'" + words[0] + "' is no scene: " + error;
    }
    return error.empty() ? std::optional(std::move(scene)) : std::nullopt;
}

std::optional<Scenario> readScenario(const std::string& file, const ScenePlan& size,
                                     std::string& error) {
    std::ifstream in(file);
    if (!in) {
        error = file + ": " + std::strerror(errno);
        return std::nullopt;
    }
    Script script(file.substr(0, file.rfind('/') + 1), size);
    std::string text;
    for (unsigned number = 1; std::getline(in, text); ++number) {
        if (!script.line(text)) {
            error = file + ":" + std::to_string(number) + ": " + script.wrong;
            return std::nullopt;
        }
    }
    if (in.bad()) {
        error = file + ": cannot be read";
        return std::nullopt;
    }
    return std::move(script.result);
}

} // namespace irmcore::app
