#pragma once

#include "../simplan.h"
#include "places.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace irmcore::app::measuring {

/// Parameters of the object and the air that were given; what is not comes from the camera's
/// settings.
struct GivenParameters {
    std::optional<double> emissivity; ///< fraction
    std::optional<double> distance;   ///< m
    std::optional<double> humidity;   ///< fraction
    std::optional<double> air;        ///< °C
    std::optional<double> reflected;  ///< °C
    std::optional<double> offset;     ///< °C
};

/// What the words of a frame's file mean.
enum class Scale { centikelvin, decikelvin, counts };

/// What `irmcore measure` is to do.
struct MeasurePlan {
    SimRun camera;     ///< the simulated one, and its directory for either
    bool real = false; ///< the machine's own instead
    int width = 0;     ///< of the frame
    int height = 0;
    std::optional<int> range; ///< to switch to; without it the one of the settings
    GivenParameters parameters;

    std::vector<Pixel> spots;
    bool hottest = false;
    bool coldest = false;
    std::vector<Span> areas;
    std::vector<Span> lines;
    std::vector<QString> frames; ///< files, absolute; the ending is the format
    Scale scale = Scale::centikelvin;

    std::optional<double> every; ///< s; without it once
    int count = 0;               ///< times; 0: until interrupted
    enum class Format { text, json, csv } format = Format::text;
    bool verbose = false;

    bool needsFrame() const { return !lines.empty() || !frames.empty(); }
};

/// The plan that the words of `irmcore measure` ask for. Without one, `exitCode` says how the
/// program ends: what was wrong, or the help that was asked for, has been printed.
std::optional<MeasurePlan> parseMeasure(const QStringList& words, int& exitCode);

} // namespace irmcore::app::measuring
