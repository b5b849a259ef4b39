#include "bench.h"

#include "../sim/cameradir.h"

#include <QDir>

namespace irmcore::app {

Bench::Bench(const irmsim::Scene& scene, const irmsim::Surroundings& surroundings, int range)
    : m_previousDirectory(QDir::currentPath()) {
    std::string error;
    if (!m_directory.isValid()) {
        m_error = m_directory.errorString();
        return;
    }
    if (!irmsim::writeCameraDirectory(m_directory.path().toLocal8Bit().toStdString(),
                                      {surroundings, range}, error)) {
        m_error = QString::fromStdString(error);
        return;
    }
    if (!QDir::setCurrent(m_directory.path())) {
        m_error = QStringLiteral("cannot enter %1").arg(m_directory.path());
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
