#pragma once

#include "../core/fpga.h"
#include "../sim/camera.h"

#include <QTemporaryDir>

#include <memory>
#include <optional>

namespace irmcore::app {

/// The library on a simulated camera of its own: a camera directory as the working directory, the
/// simulated board behind the device path, and one `FPGA`. Everything is put back when it goes.
class Bench {
public:
    /// A camera in `range`, at its reference inside temperature, with a sample directory in a
    /// temporary place. Object and air are as in `surroundings`, and the host is told so.
    Bench(const irmsim::Scene& scene, const irmsim::Surroundings& surroundings, int range);
    /// The same with a camera directory that exists: the library reads its tables, factors and
    /// parameters, and nothing is written to it.
    Bench(const QString& directory, const irmsim::Scene& scene,
          const irmsim::Surroundings& surroundings, int range);
    ~Bench();
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    /// What went wrong with it; empty when it can be used.
    const QString& error() const { return m_error; }
    FPGA& host() { return *m_host; }
    irmsim::Camera& camera() { return m_camera; }

private:
    void start(const QString& directory, const irmsim::Scene& scene,
               const irmsim::Surroundings& surroundings, int range);

    std::optional<QTemporaryDir> m_temporary;
    QString m_previousDirectory;
    irmsim::Camera m_camera;
    std::unique_ptr<FPGA> m_host;
    QString m_error;
};

} // namespace irmcore::app
