#pragma once

#include "pictureview.h"
#include "settings.h"

#include "../cameraloop.h"

#include <QElapsedTimer>
#include <QMainWindow>

#include <functional>
#include <memory>

class QActionGroup;
class QDockWidget;
class QFileDialog;

namespace irmcore::view {

class CameraPanel;
class MeasurementPanel;
class PicturePanel;
class PlotPanel;
class ReadingsPanel;
class SimulationPanel;
class StatusLine;

/// How the window starts.
struct WindowPlan {
    Source source;
    bool fresh = false;      ///< nothing is read from the settings, nor written
    bool rangeGiven = false; ///< the source's range goes before the one that is remembered
    QString folder;          ///< absolute; files are looked for and written there first
};

/// The program's window: panels around a picture, and the camera that they speak to.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(WindowPlan plan, QWidget* parent = nullptr);
    ~MainWindow() override;

    Tools& tools() { return m_tools; }
    /// Null before the first.
    const std::shared_ptr<const Snapshot>& snapshot() const { return m_snapshot; }
    /// Seconds that the plot shows.
    double plotted() const;
    /// Lets go of the camera; waits so long at most. True when it has.
    bool leave(std::chrono::milliseconds patience);

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // mainwindow.cpp
    void makePanels();
    QDockWidget* makeDock(const char* name, const QString& title, QWidget* panel,
                          Qt::DockWidgetArea area, bool scrolls);
    void connectAll();
    void arrange();
    void restore();
    void remember();
    void takeNews();
    void showSlowly();
    void takeOwn();
    Wishes wishes() const;
    void sendWishes();
    void sendSimulation();
    void open(Source source);
    void say(const QString& text);

    // mainwindow_menus.cpp
    void makeActions();
    void makeMenus();
    void makeFileMenu();
    void makeEditMenu();
    void makeViewMenu();
    void makeHelpMenu();
    void makeToolBar();
    void showMode(MouseMode mode);
    QString sourceText() const;
    void updateTitle();

    // mainwindow_files.cpp
    void savePicture();
    void saveTemperatures();
    void savePlot();
    void openRecording();
    QFileDialog* makeDialog(const QString& title, const QString& filter, const QString& name);
    void askWhereTo(const QString& title, const QString& filter, const QString& name,
                    const std::function<QString(const QString&)>& write);

    // help.cpp
    void showKeys();
    void showAbout();

    WindowPlan m_plan;
    irmsim::Plan m_simulated; ///< of the simulated camera that the program began with
    Source m_source;          ///< what is open
    Tools m_tools;
    PictureView* m_picture;
    StatusLine* m_status;
    QAction* m_freeze;
    QAction* m_calibrate;
    QAction* m_remove;
    QAction* m_marks;
    QAction* m_fullScreen;
    QActionGroup* m_modes;
    ReadingsPanel* m_readings;
    MeasurementPanel* m_measurement;
    PicturePanel* m_look;
    CameraPanel* m_camera;
    SimulationPanel* m_simulation;
    PlotPanel* m_plot;
    std::vector<QDockWidget*> m_docks;
    QDockWidget* m_simulationDock = nullptr;
    QByteArray m_arrangement; ///< of the docks, as the program comes
    std::shared_ptr<const Snapshot> m_snapshot;
    /// What a person has set, while a camera with parameters of its own is looked at.
    struct Mine {
        Parameters parameters;
        int range;
    };
    std::optional<Mine> m_mine;
    std::optional<Mine> m_own;      ///< the camera's
    Mine m_ownShown{};              ///< as the fields show these
    std::uint64_t m_cameraSeen = 0; ///< the `Snapshot::camera` whose parameters are shown
    QElapsedTimer m_sinceSlow;
    bool m_simulatedShown = true;
    std::unique_ptr<CameraLoop> m_loop;
};

} // namespace irmcore::view
