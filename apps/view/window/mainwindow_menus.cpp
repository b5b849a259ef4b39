#include "mainwindow.h"

#include "readingspanel.h"
#include "toolicons.h"
#include "wording.h"

#include <QAction>
#include <QActionGroup>
#include <QDockWidget>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

#include <array>
#include <utility>

namespace irmcore::view {

namespace {

struct ModeEntry {
    MouseMode mode;
    ToolIcon icon;
    const char* name; ///< of the object
    const char* text;
    const char* key;
    const char* help;
};
constexpr std::array modeEntries{
    ModeEntry{MouseMode::select, ToolIcon::select, "modeSelect", "Select", "V",
              "Select, move and resize what is on the picture"},
    ModeEntry{MouseMode::spot, ToolIcon::spot, "modeSpot", "Spot", "S", "Click to place a spot"},
    ModeEntry{MouseMode::line, ToolIcon::line, "modeLine", "Line", "L",
              "Drag from one end to the other"},
    ModeEntry{MouseMode::area, ToolIcon::area, "modeArea", "Area", "A",
              "Drag from corner to corner"},
};

QAction* makeAction(QObject* owner, const char* name, const QString& text,
                    const QKeySequence& key = {}) {
    auto* const action = new QAction(text, owner);
    action->setObjectName(QString::fromLatin1(name));
    if (!key.isEmpty()) {
        action->setShortcut(key);
        QString plain = text;
        plain.remove(QLatin1Char('&')).remove(QChar(0x2026));
        action->setToolTip(
            QStringLiteral("%1 (%2)").arg(plain, key.toString(QKeySequence::NativeText)));
    }
    return action;
}

} // namespace

void MainWindow::makeActions() {
    m_freeze = makeAction(this, "freezeAction", QStringLiteral("Free&ze"), Qt::Key_Space);
    m_freeze->setCheckable(true);
    m_calibrate = makeAction(this, "calibrateAction", QStringLiteral("Cali&brate now"), Qt::Key_F5);
    m_calibrate->setIconText(QStringLiteral("Calibrate"));
    m_remove = makeAction(this, "removeAction", QStringLiteral("&Delete"), QKeySequence::Delete);
    m_remove->setEnabled(false);
    connect(m_remove, &QAction::triggered, this, [this] { m_tools.remove(m_tools.selected()); });
    m_marks = makeAction(this, "marksAction", QStringLiteral("&Hottest and coldest"),
                         QKeySequence(QStringLiteral("M")));
    m_marks->setCheckable(true);
    m_marks->setChecked(true);
    connect(m_marks, &QAction::toggled, m_picture, &PictureView::setMarks);
    m_fullScreen =
        makeAction(this, "fullScreenAction", QStringLiteral("&Full screen"), Qt::Key_F11);
    m_fullScreen->setCheckable(true);
    connect(m_fullScreen, &QAction::triggered, this,
            [this](bool full) { full ? showFullScreen() : showNormal(); });
    const QColor colour = palette().color(QPalette::ButtonText);
    m_marks->setIcon(toolIcon(ToolIcon::marks, colour));
    m_freeze->setIcon(toolIcon(ToolIcon::freeze, colour));
    m_calibrate->setIcon(toolIcon(ToolIcon::calibrate, colour));
    m_modes = new QActionGroup(this);
    for (const ModeEntry& entry : modeEntries) {
        QAction* const action = makeAction(m_modes, entry.name, QString::fromLatin1(entry.text),
                                           QKeySequence(QString::fromLatin1(entry.key)));
        action->setToolTip(QStringLiteral("%1 (%2)").arg(QString::fromLatin1(entry.help),
                                                         QString::fromLatin1(entry.key)));
        action->setIcon(toolIcon(entry.icon, palette().color(QPalette::ButtonText)));
        action->setCheckable(true);
        action->setChecked(entry.mode == MouseMode::select);
        const MouseMode mode = entry.mode;
        connect(action, &QAction::triggered, this, [this, mode] {
            m_picture->setMode(mode);
            m_picture->setFocus();
        });
    }
}

void MainWindow::showMode(MouseMode mode) {
    for (std::size_t i = 0; i < modeEntries.size(); ++i)
        if (modeEntries[i].mode == mode)
            m_modes->actions()[static_cast<int>(i)]->trigger();
}

void MainWindow::makeMenus() {
    makeFileMenu();
    makeEditMenu();
    makeViewMenu();
    QMenu* const camera = menuBar()->addMenu(QStringLiteral("&Camera"));
    camera->addAction(m_freeze);
    camera->addAction(m_calibrate);
    makeHelpMenu();
}

void MainWindow::makeFileMenu() {
    QMenu* const file = menuBar()->addMenu(QStringLiteral("&File"));
    const auto add = [&](const char* name, const QString& text, const QKeySequence& key,
                         auto what) {
        QAction* const action = makeAction(this, name, text, key);
        connect(action, &QAction::triggered, this, what);
        file->addAction(action);
    };
    add("savePicture", QStringLiteral("&Save picture…"), QKeySequence::Save,
        [this] { savePicture(); });
    add("saveTemperatures", QStringLiteral("Save &temperatures…"), Qt::CTRL | Qt::Key_T,
        [this] { saveTemperatures(); });
    file->addSeparator();
    add("openSimulated", QStringLiteral("Open si&mulated camera"), {}, [this] {
        Source source = m_plan.source;
        source.kind = SourceKind::simulated;
        source.plan = m_simulated;
        open(std::move(source));
    });
    add("openReal", QStringLiteral("Open &real camera"), {}, [this] {
        Source source = m_plan.source;
        source.kind = SourceKind::real;
        open(std::move(source));
    });
    add("openRecording", QStringLiteral("&Open recording…"), QKeySequence::Open,
        [this] { openRecording(); });
    file->addSeparator();
    add("quit", QStringLiteral("&Quit"), Qt::CTRL | Qt::Key_Q, [this] { close(); });
}

void MainWindow::makeEditMenu() {
    QMenu* const edit = menuBar()->addMenu(QStringLiteral("&Edit"));
    QAction* const undo = m_tools.history().createUndoAction(this, QStringLiteral("&Undo"));
    undo->setObjectName(QStringLiteral("undo"));
    undo->setShortcut(QKeySequence::Undo);
    QAction* const redo = m_tools.history().createRedoAction(this, QStringLiteral("&Redo"));
    redo->setObjectName(QStringLiteral("redo"));
    // Without a desktop Qt has but one of them.
    redo->setShortcuts({Qt::CTRL | Qt::SHIFT | Qt::Key_Z, Qt::CTRL | Qt::Key_Y});
    QAction* const clear = makeAction(this, "clearTools", QStringLiteral("C&lear tools"));
    connect(clear, &QAction::triggered, &m_tools, &Tools::clear);
    QAction* const copy =
        makeAction(this, "copyReadings", QStringLiteral("&Copy readings"), QKeySequence::Copy);
    connect(copy, &QAction::triggered, this, [this] {
        m_readings->copy();
        say(QStringLiteral("The readings are on the clipboard."));
    });
    edit->addActions({undo, redo});
    edit->addSeparator();
    edit->addActions({m_remove, clear});
    edit->addSeparator();
    edit->addAction(copy);
}

void MainWindow::makeViewMenu() {
    QMenu* const view = menuBar()->addMenu(QStringLiteral("&View"));
    QMenu* const panels = view->addMenu(QStringLiteral("&Panels"));
    panels->setObjectName(QStringLiteral("panelsMenu"));
    // The panels come after the menus.
    connect(panels, &QMenu::aboutToShow, this, [this, panels] {
        panels->clear();
        for (QDockWidget* dock : m_docks)
            panels->addAction(dock->toggleViewAction());
    });
    view->addAction(m_marks);
    view->addSeparator();
    view->addAction(m_fullScreen);
    QAction* const reset = makeAction(this, "resetLayout", QStringLiteral("&Reset layout"));
    connect(reset, &QAction::triggered, this, [this] {
        restoreState(m_arrangement);
        m_simulationDock->setVisible(m_simulatedShown);
    });
    view->addAction(reset);
}

void MainWindow::makeHelpMenu() {
    QMenu* const help = menuBar()->addMenu(QStringLiteral("&Help"));
    QAction* const keys = makeAction(this, "keys", QStringLiteral("&Keys"), Qt::Key_F1);
    connect(keys, &QAction::triggered, this, &MainWindow::showKeys);
    QAction* const about = makeAction(this, "about", QStringLiteral("&About"));
    connect(about, &QAction::triggered, this, &MainWindow::showAbout);
    help->addActions({keys, about});
}

void MainWindow::makeToolBar() {
    QToolBar* const bar = addToolBar(QStringLiteral("Tools"));
    bar->setObjectName(QStringLiteral("toolBar"));
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->setIconSize({18, 18});
    bar->addActions(m_modes->actions());
    bar->addSeparator();
    bar->addAction(m_marks);
    bar->addSeparator();
    bar->addAction(m_freeze);
    bar->addAction(m_calibrate);
}

QString MainWindow::sourceText() const {
    switch (m_source.kind) {
    case SourceKind::simulated:
        return QStringLiteral("simulated camera");
    case SourceKind::real:
        return QStringLiteral("real camera");
    case SourceKind::recording:
        return QStringLiteral("recording ") + QFileInfo(fromLocal(m_source.recording)).fileName();
    }
    return {};
}

void MainWindow::updateTitle() {
    setWindowTitle(sourceText() + QString::fromUtf8(" – irmcore-view"));
}

} // namespace irmcore::view
