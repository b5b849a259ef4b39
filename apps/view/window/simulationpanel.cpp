#include "simulationpanel.h"

#include "../../scenario.h"
#include "fields.h"
#include "wording.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QVBoxLayout>
#include <utility>

#include <algorithm>
#include <utility>

namespace irmcore::view {

namespace {

using Kind = irmsim::ScenePlan::Kind;

constexpr NumberField uniformField{"sceneUniform", -60.0, 600.0, 1.0, 1, " °C"};
constexpr NumberField fromField{"sceneFrom", -60.0, 600.0, 1.0, 1, " °C"};
constexpr NumberField toField{"sceneTo", -60.0, 600.0, 1.0, 1, " °C"};
constexpr NumberField warmField{"warmTo", -20.0, 80.0, 1.0, 1, " °C"};
constexpr NumberField timeField{"timeConstant", 0.0, 3600.0, 10.0, 0, " s"};
constexpr NumberField targetField{"targetTemp", -60.0, 600.0, 1.0, 1, " °C"};
constexpr int lenses = 7;

QWidget* page(QLayout* layout) {
    auto* const widget = new QWidget;
    layout->setContentsMargins(0, 0, 0, 0);
    widget->setLayout(layout);
    return widget;
}

} // namespace

SimulationPanel::SimulationPanel(QString folder, QWidget* parent)
    : QWidget(parent), m_folder(std::move(folder)), m_scene(new QComboBox),
      m_sceneFields(new QStackedWidget), m_uniform(makeField(uniformField)),
      m_from(makeField(fromField)), m_to(makeField(toField)),
      m_browse(new QPushButton(QStringLiteral("&Browse…"))), m_warmTo(makeField(warmField)),
      m_timeConstant(makeField(timeField)), m_warmUp(new QPushButton(QStringLiteral("&Warm up"))),
      m_lens(new QComboBox), m_targetOn(new QCheckBox(QStringLiteral("Tar&get at"))),
      m_targetTemp(makeField(targetField)),
      m_silent(new QCheckBox(QStringLiteral("&Detector core silent"))),
      m_unplugged(new QCheckBox(QStringLiteral("&Unplug the device"))) {
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(makeScene());
    layout->addWidget(makeWarmUp());
    layout->addWidget(makeThings());
    layout->addStretch();
    m_uniform->setValue(30.0);
    m_from->setValue(20.0);
    m_to->setValue(80.0);
    m_warmTo->setValue(45.0);
    m_timeConstant->setValue(irmsim::WarmUp{}.timeConstant);
    reset(0, m_frame);
    connectAll();
}

QGroupBox* SimulationPanel::makeScene() {
    m_scene->setObjectName(QStringLiteral("scene"));
    m_scene->addItem(QStringLiteral("Bench of black bodies"), static_cast<int>(Kind::bench));
    m_scene->addItem(QStringLiteral("Uniform"), static_cast<int>(Kind::uniform));
    m_scene->addItem(QStringLiteral("Gradient"), static_cast<int>(Kind::gradient));
    m_scene->addItem(QStringLiteral("PGM file"), static_cast<int>(Kind::pgm));
    m_browse->setObjectName(QStringLiteral("browseScene"));
    auto* const uniform = makeForm();
    uniform->addRow(QStringLiteral("&Temperature"), m_uniform);
    auto* const gradient = new QHBoxLayout;
    auto* const to = new QLabel(QStringLiteral("t&o"));
    to->setBuddy(m_to);
    auto* const from = new QLabel(QStringLiteral("Fro&m"));
    from->setBuddy(m_from);
    gradient->addWidget(from);
    gradient->addWidget(m_from, 1);
    gradient->addWidget(to);
    gradient->addWidget(m_to, 1);
    auto* const file = new QHBoxLayout;
    file->addStretch();
    file->addWidget(m_browse);
    m_sceneFields->addWidget(new QWidget);
    m_sceneFields->addWidget(page(uniform));
    m_sceneFields->addWidget(page(gradient));
    m_sceneFields->addWidget(page(file));
    auto* const box = new QGroupBox(QStringLiteral("&Scene"));
    auto* const layout = new QVBoxLayout(box);
    layout->addWidget(m_scene);
    layout->addWidget(m_sceneFields);
    box->setFocusProxy(m_scene);
    return box;
}

QGroupBox* SimulationPanel::makeWarmUp() {
    m_warmUp->setObjectName(QStringLiteral("warmUp"));
    auto* const form = makeForm();
    form->addRow(QStringLiteral("&Inside"), m_warmTo);
    form->addRow(QStringLiteral("Time const&ant"), m_timeConstant);
    auto* const box = new QGroupBox(QStringLiteral("Inside of the camera"));
    auto* const layout = new QVBoxLayout(box);
    layout->addLayout(form);
    layout->addWidget(m_warmUp, 0, Qt::AlignRight);
    return box;
}

QGroupBox* SimulationPanel::makeThings() {
    m_lens->setObjectName(QStringLiteral("simulatedLens"));
    for (int lens = 0; lens < lenses; ++lens)
        m_lens->addItem(QString::number(lens), lens);
    m_targetOn->setObjectName(QStringLiteral("target"));
    m_targetOn->setToolTip(
        QStringLiteral("A warm rectangle before the scene, to be dragged in the picture"));
    m_silent->setObjectName(QStringLiteral("coreSilent"));
    m_unplugged->setObjectName(QStringLiteral("unplug"));
    auto* const form = makeForm();
    form->addRow(m_targetOn, m_targetTemp);
    form->addRow(QStringLiteral("Le&ns"), m_lens);
    auto* const box = new QGroupBox(QStringLiteral("What happens to it"));
    auto* const layout = new QVBoxLayout(box);
    layout->addLayout(form);
    layout->addWidget(m_silent);
    layout->addWidget(m_unplugged);
    return box;
}

void SimulationPanel::connectAll() {
    connect(m_scene, qOverload<int>(&QComboBox::activated), this, [this](int index) {
        m_sceneFields->setCurrentIndex(index);
        if (m_scene->currentData().toInt() == static_cast<int>(Kind::pgm))
            openFile();
        else
            sendScene();
    });
    for (QDoubleSpinBox* field : {m_uniform, m_from, m_to})
        connect(field, qOverload<double>(&QDoubleSpinBox::valueChanged), this,
                &SimulationPanel::sendScene);
    connect(m_browse, &QPushButton::clicked, this, &SimulationPanel::openFile);
    connect(m_warmUp, &QPushButton::clicked, this, [this] {
        Q_EMIT warmUpWanted(m_warmTo->value(), m_timeConstant->value());
        Q_EMIT said(
            QStringLiteral("The camera goes to %1 inside.").arg(degrees(m_warmTo->value())));
    });
    connect(m_lens, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &SimulationPanel::changed);
    connect(m_targetOn, &QCheckBox::toggled, this, [this](bool on) {
        m_targetTemp->setEnabled(on);
        Q_EMIT changed();
    });
    connect(m_targetTemp, qOverload<double>(&QDoubleSpinBox::valueChanged), this,
            &SimulationPanel::changed);
    connect(m_silent, &QCheckBox::toggled, this, &SimulationPanel::changed);
    connect(m_unplugged, &QCheckBox::toggled, this, &SimulationPanel::changed);
}

Simulation SimulationPanel::simulation() const {
    Simulation result;
    result.lens = m_lens->currentData().toInt();
    result.coreSilent = m_silent->isChecked();
    result.unplugged = m_unplugged->isChecked();
    if (m_targetOn->isChecked()) {
        result.target = m_target;
        result.target->celsius = m_targetTemp->value();
    }
    return result;
}

void SimulationPanel::reset(int lens, QSize frame) {
    m_frame = frame;
    m_target = SimulatedTarget{};
    m_target.centre = {frame.width() / 2, frame.height() / 2};
    m_target.width = std::max(frame.width() / 10, 4);
    m_target.height = m_target.width;
    const QSignalBlocker blockScene(m_scene);
    m_scene->setCurrentIndex(0);
    m_sceneFields->setCurrentIndex(0);
    showQuietly(m_lens, lens);
    showQuietly(m_targetOn, false);
    showQuietly(m_targetTemp, m_target.celsius);
    m_targetTemp->setEnabled(false);
    showQuietly(m_silent, false);
    showQuietly(m_unplugged, false);
}

void SimulationPanel::moveTarget(const Pixel& centre) {
    m_target.centre = centre;
    Q_EMIT changed();
}

void SimulationPanel::setSilent(bool silent) { m_silent->setChecked(silent); }

void SimulationPanel::setUnplugged(bool unplugged) { m_unplugged->setChecked(unplugged); }

void SimulationPanel::sendScene() {
    irmsim::ScenePlan scene;
    scene.kind = static_cast<Kind>(m_scene->currentData().toInt());
    scene.width = m_frame.width();
    scene.height = m_frame.height();
    scene.from = scene.kind == Kind::uniform ? m_uniform->value() : m_from->value();
    scene.to = m_to->value();
    if (scene.kind != Kind::pgm)
        Q_EMIT sceneWanted(scene);
}

void SimulationPanel::openFile() {
    if (m_dialog == nullptr) {
        m_dialog = new QFileDialog(this, QStringLiteral("Scene"), m_folder,
                                   QStringLiteral("Scenes of hundredths of a kelvin (*.pgm)"));
        m_dialog->setFileMode(QFileDialog::ExistingFile);
        connect(m_dialog, &QFileDialog::fileSelected, this, &SimulationPanel::takeFile);
    }
    m_dialog->setWindowModality(Qt::NonModal);
    m_dialog->show();
    m_dialog->raise();
}

void SimulationPanel::takeFile(const QString& file) {
    irmsim::ScenePlan size;
    size.width = m_frame.width();
    size.height = m_frame.height();
    std::string error;
    const auto scene = app::sceneOf({toLocal(file)}, size, {}, error);
    if (!scene) {
        Q_EMIT said(fromLocal(error));
        return;
    }
    Q_EMIT said(QStringLiteral("The camera looks at %1.").arg(QFileInfo(file).fileName()));
    Q_EMIT sceneWanted(*scene);
}

} // namespace irmcore::view
