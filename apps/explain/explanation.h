#pragma once

#include "../../core/range.h"
#include "../../measure/breakdown.h"
#include "../../measure/temphandler.h"

#include <array>
#include <cstddef>

namespace irmcore::app {

/// The measurement parameters of a reading.
struct Parameters {
    TempSetup setup{0.95F, 5.0F, 0.0F, 0};
    float humid = 0.6F;       ///< relative, a fraction
    float envTemp = 25.0F;    ///< °C
    float reflecTemp = 25.0F; ///< °C
};

/// Gives a model all parameters. False when it does not take the setup; then it keeps its own.
bool load(TempHandler& handler, const Parameters& parameters);

/// The parameters as the conversions take them.
Model modelOf(const Parameters& parameters, const RangeLimits& limits);

/// What a count's temperature depends on besides the parameters.
struct Basis {
    TempInfoTab table{};       ///< at the inside temperature
    float shutterDelta = 0.0F; ///< shutter term, AD
    float deltaTemp = 0.0F;    ///< drift correction, °C
    RangeLimits limits{};      ///< of the measuring range
};

/// The reading of a count, taken apart.
Breakdown breakDown(const Basis& basis, const Parameters& parameters, unsigned int ad);

/// What may be a little wrong.
enum class Source { emissivity, distance, humidity, air, reflected, offset, delta, noise };
inline constexpr std::size_t sources = 8;

/// A source of error, and how wrong it is taken to be.
struct SourceInfo {
    Source source;
    const char* name; ///< that of its option, with "-error" behind
    const char* unit;
    double error; ///< standard uncertainty where nothing else is said
};
inline constexpr std::array<SourceInfo, sources> sourceInfos{{
    {Source::emissivity, "emissivity", "", 0.02},
    {Source::distance, "distance", "m", 1.0},
    {Source::humidity, "humidity", "", 0.1},
    {Source::air, "air", "°C", 2.0},
    {Source::reflected, "reflected", "°C", 2.0},
    {Source::offset, "offset", "°C", 0.1},
    {Source::delta, "delta", "°C", 0.2},
    {Source::noise, "ad", "AD", 2.0},
}};

/// What errors do to a reading, in the order of `sourceInfos`.
struct Uncertainty {
    std::array<double, sources> errors{};  ///< standard uncertainties, in their own units
    std::array<double, sources> effects{}; ///< °C; not a number where the reading has none there
    double combined = 0.0;                 ///< °C: the root of the sum of their squares
};

/// The effects of `errors` on the reading of a count: the slope of its temperature before the
/// limits over each source, taken between one error below and one above, times the error. Where
/// there is nothing to one side (an emissivity of more than 1, a count outside the table) the slope
/// is that of the other side.
Uncertainty uncertaintyOf(const Basis& basis, const Parameters& parameters, unsigned int ad,
                          const std::array<double, sources>& errors);

/// Transmission of the air, and what it is made of.
struct Air {
    float trans;         ///< the product of the next two
    float water;         ///< transmission of water vapour
    float carbonDioxide; ///< transmission of carbon dioxide
    float precipitable;  ///< mm of precipitable water
    float path;          ///< km
};
Air airOf(const Parameters& parameters);

} // namespace irmcore::app
