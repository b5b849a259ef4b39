#pragma once

#include "../../../sim/stage.h"
#include "../snapshot.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFileDialog;
class QGroupBox;
class QLayout;
class QPushButton;
class QStackedWidget;

namespace irmcore::view {

/// The surroundings of the simulated camera.
class SimulationPanel : public QWidget {
    Q_OBJECT
public:
    /// Scenes are looked for in `folder` first, which is absolute.
    explicit SimulationPanel(QString folder, QWidget* parent = nullptr);

    Simulation simulation() const;
    /// As for a camera that has just been opened; nothing is told of.
    void reset(int lens, QSize frame);
    void moveTarget(const Pixel& centre);
    void setSilent(bool silent);
    void setUnplugged(bool unplugged);

Q_SIGNALS:
    void changed();
    void sceneWanted(const irmsim::ScenePlan& scene);
    void warmUpWanted(double celsius, double timeConstant);
    void said(const QString& text);

private:
    QGroupBox* makeScene();
    QGroupBox* makeWarmUp();
    QGroupBox* makeThings();
    void connectAll();
    void sendScene();
    void openFile();
    void takeFile(const QString& file);

    QString m_folder;
    QComboBox* m_scene;
    QStackedWidget* m_sceneFields;
    QDoubleSpinBox* m_uniform;
    QDoubleSpinBox* m_from;
    QDoubleSpinBox* m_to;
    QPushButton* m_browse;
    QDoubleSpinBox* m_warmTo;
    QDoubleSpinBox* m_timeConstant;
    QPushButton* m_warmUp;
    QComboBox* m_lens;
    QCheckBox* m_targetOn;
    QDoubleSpinBox* m_targetTemp;
    QCheckBox* m_silent;
    QCheckBox* m_unplugged;
    QFileDialog* m_dialog = nullptr;
    SimulatedTarget m_target;
    QSize m_frame{384, 288};
};

} // namespace irmcore::view
