#pragma once

#include "opened.h"

#include <QStringList>

#include <array>
#include <optional>

namespace irmcore::app {

/// What `irmcore explain` is to do.
struct ExplainPlan {
    CameraChoice camera;
    std::optional<unsigned> ad;       ///< the count, or
    std::optional<float> temperature; ///< °C that it is looked up for
    std::optional<float> emissivity;  ///< these: the directory's own otherwise
    std::optional<float> distance;    ///< m
    std::optional<float> humidity;    ///< a fraction
    std::optional<float> air;         ///< °C
    std::optional<float> reflected;   ///< °C
    std::optional<float> offset;      ///< °C
    float delta = 0.0F;               ///< drift correction, °C
    std::array<double, sources> errors{};
    bool json = false;
    bool verbose = false;
};

/// The plan that the words of `irmcore explain` ask for. Without one, `exitCode` says how the
/// program ends: what was wrong, or the help that was asked for, has been printed.
std::optional<ExplainPlan> parseExplain(const QStringList& words, int& exitCode);

/// The parameters of a plan over those of the directory.
Parameters chosen(const ExplainPlan& plan, Parameters parameters);

} // namespace irmcore::app
