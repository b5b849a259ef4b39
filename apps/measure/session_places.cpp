// What is measured at the places of a plan: spots, areas and extremes by the FPGA, lines and frames
// from its raw counts.
#include "session.h"

#include <array>

namespace irmcore::app::measuring {

namespace {

using Kind = Finding::Kind;

// Spots 0 to 11 and these areas share addresses with nothing else of the FPGA.
constexpr std::array areaSlots{0, 1, 2, 3, 4, 6, 7, 8};

std::uint16_t word(int value) { return static_cast<std::uint16_t>(value); }

Measured measured(const IrTempStru& reading, std::optional<Pixel> at) {
    return {at, reading.ad, QString::fromLatin1(reading.status), static_cast<double>(reading.temp)};
}

/// Whether a count came: one whose read failed is 0, which is below every table.
bool came(const IrTempStru& reading) { return reading.ad != 0; }

/// Coldest, hottest and mean of the pixels that are "OK"; empty when there are none.
std::vector<Measured> summaryOf(const ThermalFrame& frame) {
    double sum = 0.0;
    int pixels = 0;
    std::array<Pixel, 2> extremes{}; // hottest, coldest
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < frame.width; ++x) {
            const std::size_t i = frame.index({x, y});
            if (frame.status[i] != 0)
                continue;
            if (pixels == 0)
                extremes = {Pixel{x, y}, Pixel{x, y}};
            if (frame.celsius[i] > frame.celsius[frame.index(extremes[0])])
                extremes[0] = {x, y};
            if (frame.celsius[i] < frame.celsius[frame.index(extremes[1])])
                extremes[1] = {x, y};
            sum += static_cast<double>(frame.celsius[i]);
            ++pixels;
        }
    if (pixels == 0)
        return {};
    return {frame.at(extremes[0]),
            frame.at(extremes[1]),
            {std::nullopt, std::nullopt, QStringLiteral("OK"), sum / pixels}};
}

} // namespace

bool Session::readArea(int number, const Span& span, std::vector<Finding>& to) {
    _area rectangle{{word(span.from.x), word(span.from.y), word(span.to.x), word(span.to.y)}};
    _area_val counts{};
    Area_Temp readings{};
    if (m_host->getAreaTemp(areaSlots[static_cast<std::size_t>(number) - 1], rectangle, PARA_SYSTEM,
                            {}, counts, readings) != 0)
        return false;
    const auto within = [&](int x, int y) {
        return x >= span.from.x && x <= span.to.x && y >= span.from.y && y <= span.to.y;
    };
    if (!came(readings.tempMax) || !came(readings.tempMin) || !came(readings.tempAvg) ||
        !within(counts.pos[0], counts.pos[1]) || !within(counts.pos[2], counts.pos[3]))
        return false;
    to.push_back({Kind::area,
                  number,
                  span,
                  {measured(readings.tempMax, Pixel{counts.pos[0], counts.pos[1]}),
                   measured(readings.tempMin, Pixel{counts.pos[2], counts.pos[3]}),
                   measured(readings.tempAvg, std::nullopt)}});
    return true;
}

bool Session::readFrame(Batch& batch, QString& error) {
    batch.frame = readThermalFrame(*m_host, m_plan.width == 384);
    if (!batch.frame)
        error = QStringLiteral("the frame did not come whole");
    return batch.frame.has_value();
}

bool Session::readPlaces(Batch& batch, QString& error) {
    bool taken = true;
    int number = 0;
    for (const Pixel& spot : m_plan.spots) {
        _fpga_point at{word(spot.x), word(spot.y)};
        IrTempStru reading{};
        taken = m_host->getSpotTemp(number, 0, PARA_SYSTEM, {}, at, reading) == 0 &&
                came(reading) && taken;
        batch.findings.push_back({Kind::spot, ++number, {}, {measured(reading, spot)}});
    }
    for (const Kind kind : {Kind::hottest, Kind::coldest}) {
        if (!(kind == Kind::hottest ? m_plan.hottest : m_plan.coldest))
            continue;
        _fpga_point at{};
        IrTempStru reading{};
        const int type = kind == Kind::hottest ? 1 : 2;
        taken = m_host->getSpotTemp(0, type, PARA_SYSTEM, {}, at, reading) == 0 && taken;
        batch.findings.push_back({kind, 0, {}, {measured(reading, Pixel{at.x, at.y})}});
    }
    number = 0;
    for (const Span& area : m_plan.areas)
        taken = readArea(++number, area, batch.findings) && taken;
    if (!taken) {
        error = QStringLiteral("the board does not take or deliver a place");
        return false;
    }
    if (!m_plan.needsFrame())
        return true;
    if (!readFrame(batch, error))
        return false;
    number = 0;
    for (const Span& line : m_plan.lines) {
        Finding finding{Kind::line, ++number, line, {}};
        for (const Pixel& pixel : pixelsOf(line))
            finding.values.push_back(batch.frame->at(pixel));
        batch.findings.push_back(std::move(finding));
    }
    if (!m_plan.frames.empty())
        batch.findings.push_back({Kind::frame, 0, {}, summaryOf(*batch.frame)});
    return true;
}

} // namespace irmcore::app::measuring
