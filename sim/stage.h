#pragma once

#include "clock.h"
#include "scene.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace irmsim {

/// A scene to be drawn.
struct ScenePlan {
    enum class Kind { bench, uniform, gradient, pgm };
    Kind kind = Kind::bench;
    int width = 384; ///< these of the drawn ones
    int height = 288;
    double from = 0.0; ///< °C: of the uniform one, of the gradient's first column
    double to = 0.0;   ///< °C: of the gradient's last column
    std::string pgm;   ///< a file's bytes

    /// Nothing, and a text in `error`, when the file is not a scene.
    std::optional<Scene> draw(std::string& error) const;
};

/// Rectangular targets before a scene; those with a higher number hide the others. Not locked.
class Stage {
public:
    struct Body {
        double x = 0.0; ///< of its centre, column
        double y = 0.0; ///< row
        int width = 0;  ///< 0: not to be seen
        int height = 0;
        double celsius = 0.0;
    };

    /// The scene behind the targets.
    void setBackdrop(Scene scene) { m_backdrop = std::move(scene); }

    /// Places a target, where it stays.
    void place(std::size_t target, const Body& body);
    /// Has a target go straight from where it is, to be there `over` later.
    void move(std::size_t target, double x, double y, Time now, Time over);
    void heat(std::size_t target, double celsius);
    void hide(std::size_t target);

    /// Moves what is on its way. True when the picture has changed since the last call.
    bool bring(Time now);
    bool moving() const;
    /// The scene with its targets; the backdrop must have been set.
    Scene picture() const;

private:
    struct Target {
        Body body;
        Body from; // of a journey
        Body to;
        Time start{0};
        Time takes{0}; // 0: at rest
    };
    Target& at(std::size_t target);

    std::optional<Scene> m_backdrop;
    std::vector<Target> m_targets;
    bool m_changed = false;
};

} // namespace irmsim
