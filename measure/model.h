#pragma once

/// @file
/// The parameters of the object temperature model, as `TempHandler` uses them.

namespace irmcore {

/// What a conversion depends on besides table and shutter term.
struct Model {
    float emiss;      ///< emissivity
    float offset;     ///< added to the object temperature, °C
    float envTemp;    ///< air temperature, °C
    float reflecTemp; ///< temperature of the reflected surroundings, °C
    float trans;      ///< transmission of the air
    int rangeMin;     ///< lower limit of the measuring range, °C
    int rangeMax;     ///< upper limit, °C
    bool calibrating; ///< also report the table temperature of the count itself
};

/// What of a conversion depends on the model alone: made once, used for every count.
struct Terms {
    Model of;            ///< the model they were made from
    double perSeen;      ///< 1 / (emissivity x transmission); not a number where only the
                         ///< prescribed way of calculating will do
    double surroundings; ///< what reflection and air take from it, K^4
    double magnitude;    ///< the same sum without signs
    float rangeMin;      ///< lower limit, °C
    float rangeMax;      ///< upper limit, °C
};

} // namespace irmcore
