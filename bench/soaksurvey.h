#pragma once

#include "apps/driver.h"
#include "support/host.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <type_traits>
#include <vector>

/// What two façades are compared by, of which one has run for long and the other is fresh.
namespace irmsoak {

inline constexpr int width = 80; // of the scene
inline constexpr int height = 60;

/// All of a camera that the library can see, and what the temperatures were at its last
/// calibration. Plain bytes: the fresh camera's process gets them in a file.
struct State {
    int lens;
    double shutter, sensor;       ///< °C, at the calibration
    double shutterNow, sensorNow; ///< °C
    irmsim::Surroundings air;
    std::array<std::uint8_t, 0x4000> registers;
    std::array<std::uint16_t, std::size_t{width} * height> frame;
};
static_assert(std::is_trivially_copyable_v<State>);

inline std::string text(const IrTempStru& r) {
    return irmtest::joined(r.status, r.ad, r.temp, r.correctAD, r.deltaAD, r.biaoDingTemp);
}

/// FNV-1a.
inline std::uint64_t digest(const void* data, std::size_t bytes) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    const auto* at = static_cast<const std::uint8_t*>(data);
    for (std::size_t i = 0; i < bytes; ++i)
        hash = (hash ^ at[i]) * 0x100000001B3U;
    return hash;
}

/// Every kind of reading, a line each, floating point in the digits that make it up. First it sets
/// what a host sets and start-up does not read back. The whole frame comes last, since the next one
/// follows it.
class Survey {
public:
    static constexpr TempSetup frameSetup{0.8F, 60.0F, 1.5F, 0};

    Survey(FPGA& host, irmsim::Camera& camera) : m_host(host), m_camera(camera) {}

    std::string take() {
        settle();
        put("temperatures", m_host.getSensorTemp(), m_host.getShutterTemp(),
            m_host.getModifyShutterTemp(), m_host.getModifyValue(), m_host.updateDeltaTemp());
        tables();
        for (const TempSetup& setup : setups)
            spots(setup);
        window();
        palettes();
        registers();
        frame();
        return m_text;
    }

private:
    static constexpr std::array<TempSetup, 3> setups{
        TempSetup{0.95F, 5.0F, 0.0F, 0}, frameSetup, {0.3F, 0.0F, -2.0F, 0}};

    template <typename... Values>
    void put(const char* what, const Values&... values) {
        m_text += irmtest::joined(what, values...) + '\n';
    }

    void settle() {
        m_host.setImageMode(IMAGE_IR);
        m_host.setLenTemp(25.0F);
        m_host.startBiaoDing(false);
        m_host.setLevelSpanMode(LEVELSPAN_AUTO);
        m_host.setIsoPara(Isotherm{});
        m_host.setIsoSwitch(false);
        m_host.startLevelSpanControl(true);
    }

    void tables() {
        const TempInfoTab tab = m_host.getTempInfoTab();
        put("table", tab.lenTemp, tab.sensorTemp, tab.shutterTemp, tab.maxAD, tab.minAD,
            tab.tempNum, tab.baseTemp);
        for (int i = 0; i < tab.tempNum; ++i)
            put("entry", tab.temp[i], tab.ad[i]);
        put("modify", m_minModifyTemp, m_maxModifyTemp, digest(s_modify, sizeof s_modify),
            m_host.checkBiaoDingTab());
        put("limits", m_levelSpanMinAD, m_levelSpanMaxAD, m_host.getLenIndex());
        const TempSetup setup = m_host.getSystemTempSetup();
        put("parameters", setup.emiss, setup.dist, setup.offset);
        for (int celsius = -30; celsius <= 420; celsius += 50)
            put("corrected", m_host.BiaoDingXiuzheng(0, 0, 33.0F, celsius, 33000),
                m_host.BiaoDingXiuzhengGet(0, 0, 33.0F, celsius, 33000));
    }

    void spots(const TempSetup& setup) {
        for (const ParaMode_t mode : {PARA_SYSTEM, PARA_CUSTOM}) {
            IrTempStru reading{};
            for (unsigned i = 0; i < 16; ++i) {
                const auto at = [i](unsigned size) {
                    return static_cast<std::uint16_t>((2 * i + 1) * size / 32);
                };
                _fpga_point spot{at(width), at(height)};
                m_host.getSpotTemp(static_cast<int>(i % 11), 0, mode, setup, spot, reading);
                put("spot", text(reading));
                m_host.getLineTemp(static_cast<int>(1 + i % 2), mode, setup, spot, reading);
                put("line", text(reading));
            }
            for (const Image_Mode_t shown : {IMAGE_IR_MIX_CCD, IMAGE_IR}) {
                m_host.setImageMode(shown);
                for (const int type : {1, 2}) {
                    _fpga_point spot{};
                    m_host.getSpotTemp(0, type, mode, setup, spot, reading);
                    put("extreme", spot.x, spot.y, text(reading));
                }
            }
            _area area{{10, 5, 60, 50}};
            _area_val counts{};
            Area_Temp temps{};
            m_host.getAreaTemp(2, area, mode, setup, counts, temps);
            put("area", digest(&counts, sizeof counts), text(temps.tempMax), text(temps.tempMin),
                text(temps.tempAvg));
        }
    }

    void window() {
        IrTempStru low{}, high{};
        const auto ends = [&](const char* what) {
            m_host.getMinMaxTemp(&low, &high);
            put(what, text(low), text(high));
        };
        ends("FPGA's window");
        m_host.calcLevelSpan(LEVELSPAN_AUTO, true);
        ends("window over extremes");
        m_host.calcLevelSpan(LEVELSPAN_ZFT, false);
        ends("window over histogram");
        m_host.handLevelSpan(15.0F, 45.0F);
        ends("window by hand");
        m_host.getAutoMinMaxTemp(&low, &high);
        put("automatic window", text(low), text(high));
    }

    void palettes() {
        for (int reference = 0; reference < 4; ++reference) {
            Isotherm iso{};
            iso.reference = reference;
            iso.lowRatio = 0.25F;
            iso.highRatio = 0.75F;
            m_host.setStandardPaletteIndex(static_cast<COLOR_TABLE>(reference));
            m_host.setIsoPara(iso);
            m_host.setIsoSwitch(true);
            std::array<std::uint8_t, 1044> shown{};
            for (std::uint32_t i = 0; i < shown.size(); ++i)
                shown[i] = m_camera.board().kept(0x1300 + i);
            put("coloured", digest(shown.data(), shown.size()));
        }
        m_host.setIsoSwitch(false);
    }

    void registers() {
        for (std::uint32_t row = 0; row < 0x4000; row += 64) {
            std::string bytes;
            for (std::uint32_t i = 0; i < 64; ++i)
                bytes += irmtest::hex(m_camera.board().kept(row + i));
            put("registers", irmtest::hex(row), bytes);
        }
    }

    void frame() {
        constexpr int columns = 160, rows = 120;
        std::vector<unsigned short> ad(std::size_t{columns} * rows);
        std::vector<float> celsius(ad.size());
        std::vector<unsigned char> status(ad.size());
        m_host.fpga_read_IRAD(ad.data());
        for (const ParaMode_t mode : {PARA_SYSTEM, PARA_CUSTOM}) {
            put("frame", m_host.getFrameTemp(ad.data(), columns * rows, mode, frameSetup,
                                             celsius.data(), status.data()));
            for (std::size_t at = 0; at < ad.size(); at += columns)
                put("row", digest(&ad[at], 2 * columns),
                    digest(&celsius[at], sizeof(float) * columns), digest(&status[at], columns));
        }
    }

    FPGA& m_host;
    irmsim::Camera& m_camera;
    std::string m_text;
};

/// The survey of a fresh façade on a fresh camera in the given state, after the start that
/// docs/driving.md describes.
inline std::string freshSurvey(const State& state) {
    irmsim::Camera camera;
    camera.logging(false).frameRate(30).surroundings(state.air).lens(state.lens);
    camera.temperatures(state.shutter, state.sensor);
    irmsim::Frame frame;
    frame.width = width;
    frame.height = height;
    frame.ad.assign(state.frame.begin(), state.frame.end());
    camera.board().show(frame);
    camera.board().write(0, state.registers.data(), state.registers.size());
    camera.install();
    FPGA host;
    host.init();
    irmcore::app::Driver(host, camera, {}).start();
    camera.temperatures(state.shutterNow, state.sensorNow);
    return Survey(host, camera).take();
}

inline bool save(const State& state, const char* file) {
    std::ofstream out(file, std::ios::binary);
    out.write(reinterpret_cast<const char*>(&state), sizeof state);
    return static_cast<bool>(out.flush());
}

inline bool load(State& state, const char* file) {
    return static_cast<bool>(
        std::ifstream(file, std::ios::binary).read(reinterpret_cast<char*>(&state), sizeof state));
}

} // namespace irmsoak
