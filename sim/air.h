#pragma once

namespace irmsim {

/// Share of the radiation that an air path lets through, 0 to 1: water vapour times carbon dioxide.
/// `envTemp` in °C, of which the whole degree counts, as the vapour table has no others;
/// `humidity` a fraction; `distance` in metres, not rounded. Reentrant.
double airTransmission(double envTemp, double humidity, double distance);

} // namespace irmsim
