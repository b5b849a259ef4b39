#include "scenereadings.h"

#include <array>
#include <cstdio>
#include <utility>

namespace irmcore::app {

namespace {

constexpr int areaSlot = 6; // shares addresses with no spot, line or colour table

std::uint16_t word(int value) { return static_cast<std::uint16_t>(value); }

/// The places to put spots on: the scene's own targets, or the centre and the quarter points.
std::vector<irmsim::Target> spotsOf(const irmsim::Scene& scene) {
    if (!scene.targets().empty())
        return scene.targets();
    const int w = scene.width();
    const int h = scene.height();
    return {{"centre", w / 2, h / 2},
            {"upper left quarter", w / 4, h / 4},
            {"upper right quarter", 3 * w / 4, h / 4},
            {"lower left quarter", w / 4, 3 * h / 4},
            {"lower right quarter", 3 * w / 4, 3 * h / 4}};
}

/// Takes readings one by one into a list.
class Reader {
public:
    explicit Reader(Bench& bench)
        : m_host(bench.host()), m_camera(bench.camera()), m_scene(m_camera.scene()) {}

    void spots() {
        int index = 0;
        for (const irmsim::Target& target : spotsOf(m_scene)) {
            _fpga_point at{word(target.x), word(target.y)};
            IrTempStru value{};
            // Slots 4 and 5 belong to the lines.
            m_host.getSpotTemp(index % 4, 0, PARA_SYSTEM, {}, at, value);
            add("spot " + target.name, at.x, at.y, value, m_camera.truthAt(at.x, at.y));
            ++index;
        }
    }

    void lines() {
        const _fpga_point row{word(m_scene.width() / 3), word(m_scene.height() / 4)};
        const _fpga_point column{word(5 * m_scene.width() / 8), word(m_scene.height() / 2)};
        line(1, row);
        line(2, column);
    }

    void area() {
        _area rectangle{{word(m_scene.width() / 8), word(m_scene.height() / 8),
                         word(m_scene.width() / 2), word(m_scene.height() / 2)}};
        _area_val val{};
        Area_Temp readings{};
        m_host.getAreaTemp(areaSlot, rectangle, PARA_SYSTEM, {}, val, readings);
        add("area maximum", val.pos[0], val.pos[1], readings.tempMax,
            m_camera.truthAt(val.pos[0], val.pos[1]));
        add("area minimum", val.pos[2], val.pos[3], readings.tempMin,
            m_camera.truthAt(val.pos[2], val.pos[3]));

        // The FPGA averages counts, and the curve is not straight: the truth of its mean is the
        // temperature of the mean count.
        double counts = 0.0;
        double celsius = 0.0;
        int pixels = 0;
        for (int y = rectangle.bounds[1]; y <= rectangle.bounds[3]; ++y)
            for (int x = rectangle.bounds[0]; x <= rectangle.bounds[2]; ++x, ++pixels) {
                counts += m_camera.detector().counts(m_scene.at(x, y));
                celsius += m_scene.at(x, y);
            }
        add("area mean", -1, -1, readings.tempAvg, m_camera.truthOf(counts / pixels));
        std::array<char, 64> note{};
        std::snprintf(note.data(), note.size(), "mean of the temperatures %.2f", celsius / pixels);
        m_readings.back().note = note.data();
    }

    void extremes() {
        for (const int type : {1, 2}) {
            _fpga_point at{};
            IrTempStru value{};
            m_host.getSpotTemp(0, type, PARA_SYSTEM, {}, at, value);
            add(type == 1 ? "hottest point" : "coldest point", at.x, at.y, value,
                m_camera.truthAt(at.x, at.y));
        }
    }

    void scale() {
        m_host.calcLevelSpan(LEVELSPAN_AUTO, false);
        IrTempStru low{};
        IrTempStru high{};
        m_host.getMinMaxTemp(&low, &high);
        add("scale bottom", -1, -1, low, m_camera.truthOf(low.ad));
        add("scale top", -1, -1, high, m_camera.truthOf(high.ad));
    }

    std::vector<Reading> take() { return std::move(m_readings); }

private:
    void line(int number, _fpga_point at) {
        m_host.fpga_set_line_position(number, at.x, at.y);
        m_host.fpga_display_line(number, true);
        IrTempStru value{};
        m_host.getLineTemp(number, PARA_SYSTEM, {}, at, value);
        add("line " + std::to_string(number), at.x, at.y, value, m_camera.truthAt(at.x, at.y));
    }

    void add(std::string what, int x, int y, const IrTempStru& value, double truth) {
        m_readings.push_back({std::move(what), x, y, value, truth, {}});
    }

    FPGA& m_host;
    irmsim::Camera& m_camera;
    const irmsim::Scene& m_scene;
    std::vector<Reading> m_readings;
};

} // namespace

std::vector<Reading> measureScene(Bench& bench) {
    Reader reader(bench);
    reader.spots();
    reader.lines();
    reader.area();
    reader.extremes();
    reader.scale();
    return reader.take();
}

std::vector<Reading> measureSpots(Bench& bench) {
    Reader reader(bench);
    reader.spots();
    return reader.take();
}

} // namespace irmcore::app
