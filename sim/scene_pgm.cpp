#include "scene.h"

#include <cstddef>
#include <fstream>

namespace irmsim {

namespace {

/// The fields of a PGM header, which blanks and comment lines part.
class Header {
public:
    explicit Header(std::string_view bytes) : m_bytes(bytes) {}

    bool magic() {
        const bool right = m_bytes.substr(0, 2) == "P5";
        m_at = 2;
        return right;
    }

    /// The next decimal number; -1 when something else stands there or it is beyond 100000.
    int number() {
        skipBlanks();
        int value = -1;
        while (m_at < m_bytes.size() && m_bytes[m_at] >= '0' && m_bytes[m_at] <= '9') {
            value = (value < 0 ? 0 : value) * 10 + (m_bytes[m_at++] - '0');
            if (value > 100000)
                return -1;
        }
        return value;
    }

    /// The single blank between header and pixels.
    bool end() { return m_at < m_bytes.size() && blank(m_bytes[m_at++]); }

    std::string_view rest() const { return m_bytes.substr(m_at); }

private:
    static bool blank(char c) {
        return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
    }

    void skipBlanks() {
        while (m_at < m_bytes.size() && (blank(m_bytes[m_at]) || m_bytes[m_at] == '#')) {
            if (m_bytes[m_at] == '#')
                while (m_at < m_bytes.size() && m_bytes[m_at] != '\n')
                    ++m_at;
            else
                ++m_at;
        }
    }

    std::string_view m_bytes;
    std::size_t m_at = 0;
};

} // namespace

std::optional<Scene> Scene::parsePgm(std::string_view bytes, std::string& error) {
    Header header(bytes);
    if (!header.magic()) {
        error = "not a binary PGM: the file does not begin with P5";
        return std::nullopt;
    }
    const int width = header.number();
    const int height = header.number();
    const int maxval = header.number();
    if (width < 0 || height < 0 || maxval < 0 || !header.end()) {
        error = "malformed PGM header: width, height and maxval are expected";
        return std::nullopt;
    }
    if (!(width == 384 && height == 288) && !(width == 160 && height == 120)) {
        error = "a scene is 384x288 or 160x120, this one is " + std::to_string(width) + "x" +
                std::to_string(height);
        return std::nullopt;
    }
    if (maxval != 65535) {
        error = "maxval is " + std::to_string(maxval) + ", a scene has 65535";
        return std::nullopt;
    }
    const std::string_view words = header.rest();
    const std::size_t expected = std::size_t{2} * static_cast<std::size_t>(width * height);
    if (words.size() != expected) {
        error = "the header announces " + std::to_string(expected) + " bytes of pixels, " +
                std::to_string(words.size()) + " follow it";
        return std::nullopt;
    }

    Scene scene(width, height, 0.0);
    for (std::size_t i = 0; i < scene.m_celsius.size(); ++i) {
        const unsigned high = static_cast<unsigned char>(words[2 * i]);
        const unsigned low = static_cast<unsigned char>(words[2 * i + 1]);
        scene.m_celsius[i] = (high * 256 + low) / 100.0 - 273.15;
    }
    return scene;
}

std::optional<Scene> Scene::fromPgm(const std::string& path, std::string& error) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        error = path + ": cannot be opened";
        return std::nullopt;
    }
    // More than any scene with its comments; what is longer fails on its length.
    constexpr std::size_t limit = 1U << 20;
    std::string bytes(limit, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(limit));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    if (file.bad() || (bytes.empty() && !file.eof())) {
        error = path + ": cannot be read";
        return std::nullopt;
    }
    auto scene = parsePgm(bytes, error);
    if (!scene)
        error = path + ": " + error;
    return scene;
}

} // namespace irmsim
