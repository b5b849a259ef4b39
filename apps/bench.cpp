#include "bench.h"

#include "../sim/cameradir.h"

#include <QDir>

namespace irmcore::app {

Bench::Bench(const irmsim::Scene& scene, const irmsim::Surroundings& surroundings, int range)
    : m_temporary(std::in_place), m_previousDirectory(QDir::currentPath()) {
    if (!m_temporary->isValid()) {
        m_error = m_temporary->errorString();
        return;
    }
    std::string error;
    if (!irmsim::writeCameraDirectory(m_temporary->path().toLocal8Bit().toStdString(),
                                      {surroundings, range}, error)) {
        m_error = QString::fromStdString(error);
        return;
    }
    start(m_temporary->path(), scene, surroundings, range);
}

Bench::Bench(const QString& directory, const irmsim::Scene& scene,
             const irmsim::Surroundings& surroundings, int range)
    : m_previousDirectory(QDir::currentPath()) {
    start(directory, scene, surroundings, range);
}

void Bench::start(const QString& directory, const irmsim::Scene& scene,
                  const irmsim::Surroundings& surroundings, int range) {
    if (!QDir::setCurrent(directory)) {
        m_error = QStringLiteral("cannot enter %1").arg(directory);
        return;
    }
    m_camera.scene(scene).surroundings(surroundings).range(range).logging(false);
    if (!m_camera.install()) {
        m_error = QStringLiteral("another simulated camera is installed");
        return;
    }
    m_host = std::make_unique<FPGA>();
}

Bench::~Bench() {
    m_host.reset();
    QDir::setCurrent(m_previousDirectory);
}

} // namespace irmcore::app
