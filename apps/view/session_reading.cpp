// What is read of a frame, and its colours.
#include "session.h"

#include "../../display/window.h"
#include "../screen.h"
#include "../screen_colouring.h"
#include "../visible.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <optional>
#include <vector>

namespace irmcore::view {

namespace {

using app::measuring::ThermalFrame;

constexpr int spotSlots = 12; // these share addresses with nothing else of the FPGA, as these:
constexpr std::array areaSlots{0, 1, 2, 3, 4, 6, 7, 8};
constexpr double betweenVisibles = 1.0; // s

std::uint16_t word(int value) { return static_cast<std::uint16_t>(std::clamp(value, 0, 0xFFFF)); }

/// A count that did not come is 0, below every table: that is no reading.
Value valueOf(const IrTempStru& reading, Pixel at) {
    if (reading.ad == 0)
        return {at};
    return {at, reading.ad, reading.status, static_cast<double>(reading.temp)};
}

bool holds(const ThermalFrame& frame, Pixel at) {
    return at.x >= 0 && at.y >= 0 && at.x < frame.width && at.y < frame.height;
}

Value valueOf(const ThermalFrame& frame, Pixel at) {
    const app::measuring::Measured pixel = frame.at(at);
    return {at, static_cast<std::uint16_t>(pixel.ad.value_or(0)), pixel.status.toStdString(),
            pixel.celsius};
}

std::vector<Pixel> pixelsOf(const Tool& tool) {
    if (tool.kind == ToolKind::line)
        return app::measuring::pixelsOf(tool.place);
    const Span area = app::measuring::asArea(tool.place);
    std::vector<Pixel> pixels;
    for (int y = area.from.y; y <= area.to.y; ++y)
        for (int x = area.from.x; x <= area.to.x; ++x)
            pixels.push_back({x, y});
    return pixels;
}

/// The temperature of a count by the frame's own pixels, straight between those next to it.
Value valueOfCount(const ThermalFrame& frame, std::uint16_t ad) {
    std::size_t below = frame.counts.size();
    std::size_t above = below;
    for (std::size_t i = 0; i < frame.counts.size(); ++i) {
        const std::uint16_t count = frame.counts[i];
        if (count <= ad && (below == frame.counts.size() || count > frame.counts[below]))
            below = i;
        if (count >= ad && (above == frame.counts.size() || count < frame.counts[above]))
            above = i;
    }
    const double low = static_cast<double>(frame.celsius[below]);
    const double high = static_cast<double>(frame.celsius[above]);
    const int span = frame.counts[above] - frame.counts[below];
    const double share = span > 0 ? static_cast<double>(ad - frame.counts[below]) / span : 0.0;
    const std::size_t nearer = share < 0.5 ? below : above;
    return {{},
            ad,
            app::measuring::statusName(frame.status[nearer]).toStdString(),
            low + share * (high - low)};
}

/// Highest, lowest and mean of a tool's pixels, of those inside the frame. An area's mean is that
/// of its mean count, a line's that of the temperatures, with the first status among them that is
/// not "OK".
ToolReading readIn(const ThermalFrame& frame, const Tool& tool) {
    ToolReading result{tool.id, tool.kind, {}, {}, {}};
    std::optional<Pixel> hottest;
    std::optional<Pixel> coldest;
    double sum = 0.0;
    std::uint64_t counts = 0;
    std::uint64_t pixels = 0;
    for (const Pixel& pixel : pixelsOf(tool)) {
        if (!holds(frame, pixel))
            continue;
        const std::size_t i = frame.index(pixel);
        if (!hottest || frame.counts[i] > frame.counts[frame.index(*hottest)])
            hottest = pixel;
        if (!coldest || frame.counts[i] < frame.counts[frame.index(*coldest)])
            coldest = pixel;
        if (pixels == 0 || (frame.status[i] != 0 && result.mean.ok()))
            result.mean.status = app::measuring::statusName(frame.status[i]).toStdString();
        sum += static_cast<double>(frame.celsius[i]);
        counts += frame.counts[i];
        ++pixels;
    }
    if (pixels == 0)
        return result;
    result.hottest = valueOf(frame, *hottest);
    result.coldest = valueOf(frame, *coldest);
    if (tool.kind == ToolKind::area)
        result.mean = valueOfCount(frame, static_cast<std::uint16_t>(counts / pixels));
    else
        result.mean.celsius = sum / static_cast<double>(pixels);
    return result;
}

std::uint32_t argb(app::Rgb c) {
    return 0xFF000000U | std::uint32_t{c.r} << 16U | std::uint32_t{c.g} << 8U | c.b;
}

} // namespace

/// Reads the present frame. False when it did not come whole: the one before stays.
bool Session::readFrame() {
    if (m_source.kind == SourceKind::simulated)
        m_source.width = simulatedWidth();
    auto frame = app::measuring::readThermalFrame(*m_host, m_source.width > 160);
    if (!frame)
        return false;
    m_last.frame = std::move(*frame);
    m_frameSettled = !m_rounds || m_rounds->settled();
    m_last.taken = std::chrono::steady_clock::now();
    return true;
}

/// Readings stay with the frame at hand; tools that have been placed or moved since are read in it.
void Session::readHeld(Snapshot& s) {
    std::vector<ToolReading> readings;
    for (const Tool& tool : m_wishes.tools) {
        const auto before = std::find(m_read.begin(), m_read.end(), tool);
        readings.push_back(before == m_read.end()
                               ? readIn(m_last.frame, tool)
                               : s.readings[static_cast<std::size_t>(before - m_read.begin())]);
    }
    s.readings = std::move(readings);
}

void Session::readTools(Snapshot& s) {
    s.readings.clear();
    int spots = 0;
    int areas = 0;
    for (const Tool& tool : m_wishes.tools)
        s.readings.push_back(read(tool, tool.kind == ToolKind::spot ? spots++ : areas++));
    for (const int type : {1, 2}) {
        _fpga_point at{};
        IrTempStru reading{};
        const bool came = m_host->getSpotTemp(0, type, PARA_SYSTEM, {}, at, reading) == 0;
        (type == 1 ? s.hottest : s.coldest) = came ? valueOf(reading, {at.x, at.y}) : Value{};
    }
    IrTempStru low{};
    IrTempStru high{};
    m_host->getMinMaxTemp(&low, &high);
    s.barLow = valueOf(low, {});
    s.barHigh = valueOf(high, {});
}

ToolReading Session::read(const Tool& tool, int number) {
    ToolReading result{tool.id, tool.kind, {}, {}, {}};
    const Span place = app::measuring::asArea(tool.place);
    const ThermalFrame& frame = m_last.frame;
    if (tool.kind == ToolKind::line)
        return readIn(frame, tool);
    if (!holds(frame, place.from) || !holds(frame, place.to))
        return readIn(frame, tool); // the FPGA takes no part of an area
    if (tool.kind == ToolKind::spot) {
        _fpga_point at{word(place.from.x), word(place.from.y)};
        IrTempStru reading{};
        if (m_host->getSpotTemp(number % spotSlots, 0, PARA_SYSTEM, {}, at, reading) == 0)
            result.hottest = valueOf(reading, place.from);
        result.coldest = result.mean = result.hottest;
        return result;
    }
    _area rectangle{{word(place.from.x), word(place.from.y), word(place.to.x), word(place.to.y)}};
    _area_val counts{};
    Area_Temp temps{};
    const int slot = areaSlots[static_cast<std::size_t>(number) % areaSlots.size()];
    if (m_host->getAreaTemp(slot, rectangle, PARA_SYSTEM, {}, counts, temps) == 0) {
        result.hottest = valueOf(temps.tempMax, {counts.pos[0], counts.pos[1]});
        result.coldest = valueOf(temps.tempMin, {counts.pos[2], counts.pos[3]});
        result.mean = valueOf(temps.tempAvg, {});
    }
    return result;
}

/// The core's thread calls the camera too, and a scenario may be playing.
irmsim::Scene Session::simulatedScene() const {
    const std::lock_guard<std::mutex> hold(irmsim::cameraLock());
    return m_camera->scene();
}

int Session::simulatedWidth() const {
    const std::lock_guard<std::mutex> hold(irmsim::cameraLock());
    return m_camera->scene().width();
}

void Session::colour(Snapshot& s) {
    app::ColourState state;
    m_host->fpga_colorTable_get(state.table.data(), static_cast<int>(state.table.size()));
    state.level = m_host->fpga_get_level();
    state.gain = gainOf(m_host->fpga_get_span());
    state.isotherm = m_wishes.isotherm.on;
    state.isoType = static_cast<std::uint32_t>(m_wishes.isotherm.type);
    state.isoMin = m_host->isothermLow();
    state.isoMax = m_host->isothermHigh();
    const app::Colouring colouring(state);
    for (std::size_t i = 0; i < s.bar.size(); ++i)
        s.bar[i] = argb(colouring.entry(i));
    if (m_source.kind == SourceKind::simulated && m_wishes.look.mode != IMAGE_IR) {
        compose(s);
        return;
    }
    s.picture.width = s.frame.width;
    s.picture.height = s.frame.height;
    s.picture.pixels.resize(s.frame.counts.size());
    std::transform(s.frame.counts.begin(), s.frame.counts.end(), s.picture.pixels.begin(),
                   [&](std::uint16_t ad) { return argb(colouring.of(ad)); });
}

/// What the simulated camera's screen shows, with the visible camera's picture. That one is taken
/// once a second, when the scene has changed.
void Session::compose(Snapshot& s) {
    const irmsim::Scene scene = simulatedScene();
    const bool other = !m_visible || m_visibleStamp != scene.stamp();
    if (!m_visible || (other && seconds() >= m_nextVisible)) {
        m_visible = app::visiblePicture(scene);
        m_visibleStamp = scene.stamp();
        m_nextVisible = seconds() + betweenVisibles;
    }
    const std::lock_guard<std::mutex> hold(irmsim::cameraLock());
    const app::Picture screen = app::screen(m_camera->board(), *m_visible);
    s.picture.width = screen.width;
    s.picture.height = screen.height;
    s.picture.pixels.resize(screen.pixels.size());
    std::transform(screen.pixels.begin(), screen.pixels.end(), s.picture.pixels.begin(), argb);
}

} // namespace irmcore::view
