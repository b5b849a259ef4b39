#include "mainwindow.h"

#include "camerapanel.h"
#include "measurementpanel.h"
#include "picturepanel.h"
#include "plotpanel.h"
#include "readingspanel.h"
#include "simulationpanel.h"
#include "statusline.h"

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDockWidget>
#include <QScrollArea>
#include <QSettings>
#include <QSocketNotifier>
#include <QStatusBar>

#include <utility>

namespace irmcore::view {

namespace {

constexpr int slowInterval = 200; // ms between two changes of what is read, not seen

QSize frameOf(const Source& source) {
    if (source.kind == SourceKind::simulated && source.plan.scene.width > 0 &&
        source.plan.scene.height > 0)
        return {source.plan.scene.width, source.plan.scene.height};
    return {384, 288};
}

} // namespace

MainWindow::MainWindow(WindowPlan plan, QWidget* parent)
    : QMainWindow(parent), m_plan(std::move(plan)), m_simulated(m_plan.source.plan),
      m_source(m_plan.source), m_picture(new PictureView(m_tools)),
      m_status(new StatusLine(*statusBar())) {
    setObjectName(QStringLiteral("mainWindow"));
    setCentralWidget(m_picture);
    setDockOptions(AnimatedDocks | AllowNestedDocks | AllowTabbedDocks);
    setTabPosition(Qt::RightDockWidgetArea, QTabWidget::North);
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    makeActions();
    makePanels();
    makeMenus();
    makeToolBar();
    arrange();
    m_arrangement = saveState();
    m_simulation->reset(m_source.plan.lens, frameOf(m_source));
    restore();
    updateTitle();
    m_loop = std::make_unique<CameraLoop>(m_source, wishes());
    sendSimulation();
    connectAll();
    m_picture->setFocus();
}

MainWindow::~MainWindow() = default;

void MainWindow::makePanels() {
    m_readings = new ReadingsPanel(m_tools);
    m_measurement = new MeasurementPanel;
    m_look = new PicturePanel;
    m_camera = new CameraPanel(*m_freeze, *m_calibrate);
    m_simulation = new SimulationPanel(m_plan.folder);
    m_plot = new PlotPanel(m_tools);
}

QDockWidget* MainWindow::makeDock(const char* name, const QString& title, QWidget* panel,
                                  Qt::DockWidgetArea area, bool scrolls) {
    auto* const dock = new QDockWidget(title, this);
    dock->setObjectName(QString::fromLatin1(name));
    if (scrolls) {
        auto* const scroll = new QScrollArea;
        scroll->setWidgetResizable(true);
        scroll->setFrameShape(QFrame::NoFrame);
        scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scroll->setFocusPolicy(Qt::NoFocus);
        scroll->setWidget(panel);
        scroll->setMinimumWidth(panel->minimumSizeHint().width());
        dock->setWidget(scroll);
    } else {
        dock->setWidget(panel);
    }
    addDockWidget(area, dock);
    m_docks.push_back(dock);
    return dock;
}

void MainWindow::arrange() {
    const auto right = Qt::RightDockWidgetArea;
    QDockWidget* const readings =
        makeDock("readingsDock", QStringLiteral("Readings"), m_readings, right, false);
    QDockWidget* const measurement =
        makeDock("measurementDock", QStringLiteral("Measurement"), m_measurement, right, true);
    QDockWidget* const picture =
        makeDock("pictureDock", QStringLiteral("Picture"), m_look, right, true);
    QDockWidget* const camera =
        makeDock("cameraDock", QStringLiteral("Camera"), m_camera, right, true);
    m_simulationDock =
        makeDock("simulationDock", QStringLiteral("Simulation"), m_simulation, right, true);
    QDockWidget* const plot =
        makeDock("plotDock", QStringLiteral("Plot"), m_plot, Qt::BottomDockWidgetArea, false);
    tabifyDockWidget(measurement, picture);
    tabifyDockWidget(picture, camera);
    tabifyDockWidget(camera, m_simulationDock);
    measurement->raise();
    resize(1280, 800);
    resizeDocks({readings, measurement}, {190, 510}, Qt::Vertical);
    resizeDocks({readings}, {380}, Qt::Horizontal);
    resizeDocks({plot}, {190}, Qt::Vertical);
}

void MainWindow::connectAll() {
    auto* const news = new QSocketNotifier(m_loop->newsDescriptor(), QSocketNotifier::Read, this);
    connect(news, &QSocketNotifier::activated, this, &MainWindow::takeNews);
    connect(&m_tools, &Tools::changed, this, &MainWindow::sendWishes);
    connect(&m_tools, &Tools::refused, this, &MainWindow::say);
    connect(&m_tools, &Tools::selectionChanged, this,
            [this](int id) { m_remove->setEnabled(id != 0); });
    connect(m_measurement, &MeasurementPanel::changed, this, &MainWindow::sendWishes);
    connect(m_look, &PicturePanel::changed, this, &MainWindow::sendWishes);
    connect(m_camera, &CameraPanel::changed, this, &MainWindow::sendWishes);
    connect(m_freeze, &QAction::toggled, this, &MainWindow::sendWishes);
    connect(m_calibrate, &QAction::triggered, this, [this] { m_loop->calibrate(); });
    connect(m_simulation, &SimulationPanel::changed, this, &MainWindow::sendSimulation);
    connect(m_simulation, &SimulationPanel::said, this, &MainWindow::say);
    connect(m_simulation, &SimulationPanel::sceneWanted, this,
            [this](const irmsim::ScenePlan& scene) { m_loop->showScene(scene); });
    connect(m_simulation, &SimulationPanel::warmUpWanted, this,
            [this](double celsius, double timeConstant) { m_loop->warmUp(celsius, timeConstant); });
    connect(m_picture, &PictureView::targetMoved, m_simulation, &SimulationPanel::moveTarget);
    connect(m_picture, &PictureView::said, this, &MainWindow::say);
    connect(m_picture, &PictureView::modeWanted, this, &MainWindow::showMode);
    connect(m_picture, &PictureView::pointerMoved, this, [this] {
        if (m_snapshot)
            m_status->show(*m_snapshot, m_picture->pointerText());
    });
    connect(m_plot, &PlotPanel::saveWanted, this, &MainWindow::savePlot);
}

void MainWindow::takeNews() {
    std::shared_ptr<const Snapshot> snapshot = m_loop->latest();
    if (!snapshot || snapshot == m_snapshot)
        return;
    m_snapshot = std::move(snapshot);
    if (m_snapshot->camera != m_cameraSeen)
        takeOwn();
    m_picture->show(m_snapshot);
    m_plot->show(*m_snapshot);
    const bool simulated = m_snapshot->source == SourceKind::simulated;
    if (simulated != m_simulatedShown) {
        m_simulatedShown = simulated;
        m_simulationDock->setVisible(simulated);
        m_simulationDock->toggleViewAction()->setVisible(simulated);
    }
    if (!m_sinceSlow.isValid() || m_sinceSlow.elapsed() >= slowInterval)
        showSlowly();
}

/// What a person reads changes less often than the picture.
void MainWindow::showSlowly() {
    m_sinceSlow.start();
    m_readings->show(m_snapshot);
    m_measurement->show(*m_snapshot);
    m_look->show(*m_snapshot);
    m_camera->show(*m_snapshot);
    m_status->show(*m_snapshot, m_picture->pointerText());
}

/// A camera that has measurement parameters of its own shows these; the person's come back with one
/// that has not.
void MainWindow::takeOwn() {
    if (!m_snapshot->present)
        return; // it is not known yet
    if (m_snapshot->ownParameters) {
        if (!m_mine)
            m_mine = Mine{m_measurement->parameters(), m_measurement->range()};
        m_measurement->set(*m_snapshot->ownParameters, m_snapshot->ownRange);
        m_own = Mine{*m_snapshot->ownParameters, m_snapshot->ownRange};
        m_ownShown = Mine{m_measurement->parameters(), m_measurement->range()};
    } else if (m_mine) {
        m_measurement->set(m_mine->parameters, m_mine->range);
        m_mine.reset();
    }
    if (!m_snapshot->ownParameters)
        m_own.reset();
    m_cameraSeen = m_snapshot->camera;
    m_plot->clear();
    sendWishes();
}

Wishes MainWindow::wishes() const {
    Wishes wishes;
    wishes.parameters = m_measurement->parameters();
    wishes.look = m_look->look();
    wishes.isotherm = m_look->isotherm();
    wishes.range = m_measurement->range();
    wishes.frozen = m_freeze->isChecked();
    wishes.calibrates = m_camera->calibrates();
    wishes.tools = m_tools.wished();
    wishes.camera = m_cameraSeen;
    if (m_own && wishes.parameters == m_ownShown.parameters) // finer than the fields show them
        wishes.parameters = m_own->parameters;
    if (m_own && wishes.range == m_ownShown.range)
        wishes.range = m_own->range;
    return wishes;
}

void MainWindow::sendWishes() { m_loop->wish(wishes()); }

void MainWindow::sendSimulation() {
    const Simulation simulation = m_simulation->simulation();
    m_picture->setTarget(m_source.kind == SourceKind::simulated ? simulation.target : std::nullopt);
    if (m_source.kind == SourceKind::simulated)
        m_loop->simulate(simulation);
}

void MainWindow::open(Source source) {
    m_source = std::move(source);
    say(QStringLiteral("Opening the %1…").arg(sourceText()));
    m_simulation->reset(m_source.plan.lens, frameOf(m_source));
    m_freeze->setChecked(false);
    m_plot->clear();
    m_loop->open(m_source);
    sendSimulation();
    updateTitle();
}

void MainWindow::say(const QString& text) { m_status->say(text); }

double MainWindow::plotted() const { return m_plot->history().length(); }

void MainWindow::restore() {
    m_measurement->set(Parameters{}, m_source.plan.range);
    if (m_plan.fresh)
        return;
    QSettings settings;
    const Remembered remembered = readRemembered(settings);
    m_measurement->set(remembered.parameters,
                       m_plan.rangeGiven ? m_source.plan.range : remembered.range);
    m_look->set(remembered.look, remembered.isotherm);
    m_marks->setChecked(remembered.marks);
    m_camera->setCalibrates(remembered.calibrates);
    m_tools.restore(remembered.tools);
    restoreGeometry(settings.value(QStringLiteral("geometry")).toByteArray());
    restoreState(settings.value(QStringLiteral("windowState")).toByteArray());
}

void MainWindow::remember() {
    if (m_plan.fresh)
        return;
    Remembered remembered;
    remembered.parameters = m_mine ? m_mine->parameters : m_measurement->parameters();
    remembered.look = m_look->look();
    remembered.isotherm = m_look->isotherm();
    remembered.range = m_mine ? m_mine->range : m_measurement->range();
    remembered.marks = m_marks->isChecked();
    remembered.calibrates = m_camera->calibrates();
    remembered.tools = m_tools.all();
    // The panel that only a simulated camera has is not gone for good.
    if (!m_simulatedShown)
        m_simulationDock->show();
    QSettings settings;
    writeRemembered(settings, remembered);
    settings.setValue(QStringLiteral("geometry"), saveGeometry());
    settings.setValue(QStringLiteral("windowState"), saveState());
}

void MainWindow::closeEvent(QCloseEvent* event) {
    remember();
    QMainWindow::closeEvent(event);
    // Also when a dialog is still open.
    QCoreApplication::quit();
}

/// The screen is also filled and left by what is remembered and by the desktop.
void MainWindow::changeEvent(QEvent* event) {
    if (event->type() == QEvent::WindowStateChange)
        m_fullScreen->setChecked(isFullScreen());
    QMainWindow::changeEvent(event);
}

bool MainWindow::leave(std::chrono::milliseconds patience) { return m_loop->leave(patience); }

} // namespace irmcore::view
