#pragma once

#include "../bench.h"
#include "explanation.h"

#include <QString>

#include <optional>

namespace irmcore::app {

/// Which camera directory, and in which state the camera is.
struct CameraChoice {
    QString directory;             ///< empty: a sample directory in a temporary place
    std::optional<int> range;      ///< the directory's own otherwise
    int lens = 0;                  ///< 0 to 6
    std::optional<double> shutter; ///< °C; the reference inside temperature otherwise
    std::optional<double> sensor;  ///< °C; the same
};

/// The parameters that the library took from its working directory.
Parameters readParameters(FPGA& host);

/// The library in a camera directory, as it would stand in that camera after a shutter calibration:
/// table read and brought to the inside temperature, shutter term, parameters. The directory is the
/// working directory meanwhile; nothing is written to it.
class OpenedCamera {
public:
    explicit OpenedCamera(const CameraChoice& choice);

    /// What went wrong with it; empty when it can be used.
    const QString& error() const { return m_error; }
    FPGA& host() { return m_bench->host(); }
    int range() const { return m_range; }
    int lens() const { return m_lens; }
    Parameters parameters() { return readParameters(host()); }
    /// Table and shutter term in force, no drift.
    Basis basis();

    /// The table as stored, for the reference inside temperature.
    TempInfoTab stored();
    /// The table that a shutter update installs at an inside temperature in °C.
    TempInfoTab warmedTo(double inside);

private:
    std::optional<Bench> m_bench;
    int m_range = 0;
    int m_lens;
    QString m_error;
};

} // namespace irmcore::app
