#pragma once

#include "../sim/detector.h"
#include "../sim/observer.h"

#include <array>

namespace irmcore::app {

inline constexpr char recordingFormat[] = "irmcore-recording";

/// The calls as recordings and traces name them, in the order of Observation::Call.
inline constexpr std::array<const char*, 8> callNames{
    "open", "seek", "read", "write", "close", "getAttributes", "setAttributes", "flush"};
static_assert(callNames.size() == static_cast<std::size_t>(irmsim::Observation::Call::flush) + 1);

/// The surroundings as a recording names them.
struct SurroundingsKey {
    const char* name;
    double irmsim::Surroundings::*field;
};
inline constexpr std::array<SurroundingsKey, 5> surroundingsKeys{
    {{"emissivity", &irmsim::Surroundings::emissivity},
     {"distance", &irmsim::Surroundings::distance},
     {"humidity", &irmsim::Surroundings::humidity},
     {"ambient", &irmsim::Surroundings::envTemp},
     {"reflected", &irmsim::Surroundings::reflectedTemp}}};

} // namespace irmcore::app
