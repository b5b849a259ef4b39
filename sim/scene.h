#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace irmsim {

/// A place in a scene that is worth measuring.
struct Target {
    std::string name;
    int x; ///< column
    int y; ///< row
};

/// What the camera looks at: an object temperature in °C for every pixel. A value, copied freely.
/// Reentrant.
class Scene {
public:
    /// The same temperature everywhere. Sizes are cut to 1..1024.
    static Scene uniform(int width, int height, double celsius);

    /// `left` in the first column, `right` in the last, straight between.
    static Scene gradient(int width, int height, double left, double right);

    /// A room at about 22 °C with seven black bodies from -10 to 140 °C and a warm hand. The same
    /// picture in any size, made for 384x288 and 160x120.
    static Scene bench(int width, int height);

    /// A scene from a binary PGM file: P5, 384x288 or 160x120, maxval 65535, words of two bytes,
    /// high byte first, in hundredths of a kelvin. Nothing, and a text in `error`, when the file
    /// is anything else.
    static std::optional<Scene> fromPgm(const std::string& path, std::string& error);

    /// `fromPgm` on the bytes of a file. Any bytes at all may be given.
    static std::optional<Scene> parsePgm(std::string_view bytes, std::string& error);

    int width() const { return m_width; }
    int height() const { return m_height; }

    /// Temperature at a pixel, °C. A position outside gives the nearest pixel's.
    double at(int x, int y) const;

    double min() const; ///< coldest pixel, °C
    double max() const; ///< hottest pixel, °C

    /// Paints one pixel. A position outside changes nothing.
    void set(int x, int y, double celsius);

    /// Paints a rectangle whose first and last columns and rows are given; what lies outside the
    /// scene is left out.
    void fill(int x0, int y0, int x1, int y1, double celsius);

    /// The built-in scene's places to measure; empty for the others.
    const std::vector<Target>& targets() const { return m_targets; }

    /// Two scenes of the same stamp have the same pixels: it changes with every painting.
    std::uint64_t stamp() const { return m_stamp; }

private:
    Scene(int width, int height, double celsius);

    int m_width;
    int m_height;
    std::vector<double> m_celsius; // row by row
    std::vector<Target> m_targets;
    std::uint64_t m_stamp;
};

} // namespace irmsim
