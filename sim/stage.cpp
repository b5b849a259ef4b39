#include "stage.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace irmsim {

namespace {

/// First and last pixel of `size` around a centre; far outside, positions are cut.
int firstPixel(double centre, int size) {
    const double nearest = std::round(std::fmin(std::fmax(centre, -1e6), 1e6));
    return static_cast<int>(nearest) - size / 2;
}

bool samePixels(const Stage::Body& a, const Stage::Body& b) {
    return firstPixel(a.x, a.width) == firstPixel(b.x, b.width) &&
           firstPixel(a.y, a.height) == firstPixel(b.y, b.height);
}

} // namespace

std::optional<Scene> ScenePlan::draw(std::string& error) const {
    switch (kind) {
    case Kind::uniform:
        return Scene::uniform(width, height, from);
    case Kind::gradient:
        return Scene::gradient(width, height, from, to);
    case Kind::pgm:
        return Scene::parsePgm(pgm, error);
    case Kind::bench:
        break;
    }
    return Scene::bench(width, height);
}

Stage::Target& Stage::at(std::size_t target) {
    if (target >= m_targets.size())
        m_targets.resize(target + 1);
    m_changed = true;
    return m_targets[target];
}

void Stage::place(std::size_t target, const Body& body) { at(target) = {body, body, body}; }

void Stage::move(std::size_t target, double x, double y, Time now, Time over) {
    Target& moved = at(target);
    moved.from = moved.body;
    moved.to = moved.body;
    moved.to.x = x;
    moved.to.y = y;
    moved.start = now;
    moved.takes = over;
    if (over <= Time(0))
        moved.body = moved.to;
}

void Stage::heat(std::size_t target, double celsius) {
    Target& heated = at(target);
    for (Body* body : {&heated.body, &heated.from, &heated.to})
        body->celsius = celsius;
}

void Stage::hide(std::size_t target) { at(target) = Target{}; }

bool Stage::bring(Time now) {
    for (Target& target : m_targets) {
        if (target.takes <= Time(0))
            continue;
        const double share =
            std::clamp(secondsOf(now - target.start) / secondsOf(target.takes), 0.0, 1.0);
        Body next = target.from;
        next.x += share * (target.to.x - target.from.x);
        next.y += share * (target.to.y - target.from.y);
        if (share >= 1.0) {
            next = target.to;
            target.takes = Time(0);
        }
        m_changed = m_changed || !samePixels(next, target.body);
        target.body = next;
    }
    return std::exchange(m_changed, false);
}

bool Stage::moving() const {
    return std::any_of(m_targets.begin(), m_targets.end(),
                       [](const Target& target) { return target.takes > Time(0); });
}

Scene Stage::picture() const {
    Scene picture = *m_backdrop;
    for (const Target& target : m_targets) {
        const Body& body = target.body;
        const int x = firstPixel(body.x, body.width);
        const int y = firstPixel(body.y, body.height);
        picture.fill(x, y, x + body.width - 1, y + body.height - 1, body.celsius);
    }
    return picture;
}

} // namespace irmsim
