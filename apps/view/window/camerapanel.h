#pragma once

#include "../snapshot.h"

#include <QWidget>

class QAction;
class QCheckBox;
class QLabel;

namespace irmcore::view {

/// Freezing, calibration and how the camera is.
class CameraPanel : public QWidget {
    Q_OBJECT
public:
    /// The actions outlive the panel.
    CameraPanel(QAction& freeze, QAction& calibrate, QWidget* parent = nullptr);

    bool calibrates() const;
    void setCalibrates(bool calibrates);
    void show(const Snapshot& snapshot);

Q_SIGNALS:
    void changed();

private:
    QCheckBox* m_automatic;
    QLabel* m_shutter;
    QLabel* m_sensor;
    QLabel* m_drift;
    QLabel* m_since;
    QLabel* m_count;
    QLabel* m_core;
};

} // namespace irmcore::view
