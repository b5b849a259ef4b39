#include "camerapanel.h"

#include "fields.h"
#include "wording.h"

#include <QAction>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QToolButton>
#include <QVBoxLayout>

namespace irmcore::view {

namespace {

QToolButton* makeButton(QAction& action, const char* name) {
    auto* const button = new QToolButton;
    button->setDefaultAction(&action);
    button->setObjectName(QString::fromLatin1(name));
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return button;
}

QString agoText(double seconds) {
    const int whole = static_cast<int>(seconds);
    if (whole < 120)
        return QStringLiteral("%1 s").arg(whole);
    return QStringLiteral("%1 min %2 s").arg(whole / 60).arg(whole % 60);
}

QString coreText(CoreState core) {
    switch (core) {
    case CoreState::unknown:
        return QStringLiteral("not asked yet");
    case CoreState::answers:
        return QStringLiteral("answers");
    case CoreState::silent:
        return QStringLiteral("does not answer");
    }
    return {};
}

} // namespace

CameraPanel::CameraPanel(QAction& freeze, QAction& calibrate, QWidget* parent)
    : QWidget(parent), m_automatic(new QCheckBox(QStringLiteral("&Automatic calibration"))),
      m_shutter(makeShown("shutterTemp")), m_sensor(makeShown("sensorTemp")),
      m_drift(makeShown("drift")), m_since(makeShown("sinceCalibration")),
      m_count(makeShown("calibrations")), m_core(makeShown("coreState")) {
    m_automatic->setObjectName(QStringLiteral("automaticCalibration"));
    m_automatic->setChecked(true);
    m_automatic->setToolTip(
        QStringLiteral("The shutter closes by itself whenever the camera has drifted"));
    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(makeButton(freeze, "freeze"));
    buttons->addWidget(makeButton(calibrate, "calibrate"));
    auto* const state = new QGroupBox(QStringLiteral("State"));
    auto* const form = makeForm();
    form->addRow(QStringLiteral("Shutter"), m_shutter);
    form->addRow(QStringLiteral("Sensor"), m_sensor);
    form->addRow(QStringLiteral("Drift"), m_drift);
    form->addRow(QStringLiteral("Last calibration"), m_since);
    form->addRow(QStringLiteral("Calibrations"), m_count);
    form->addRow(QStringLiteral("Detector core"), m_core);
    state->setLayout(form);
    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(buttons);
    layout->addWidget(m_automatic);
    layout->addWidget(state);
    layout->addStretch();
    connect(m_automatic, &QCheckBox::toggled, this, &CameraPanel::changed);
}

bool CameraPanel::calibrates() const { return m_automatic->isChecked(); }

void CameraPanel::setCalibrates(bool calibrates) { showQuietly(m_automatic, calibrates); }

void CameraPanel::show(const Snapshot& snapshot) {
    const QString none(QChar(0x2013));
    const bool known = snapshot.present;
    setText(m_shutter, known ? degrees(snapshot.shutterTemp) : none);
    setText(m_sensor, known ? degrees(snapshot.sensorTemp) : none);
    setText(m_drift, known && snapshot.calibrations > 0
                         ? degrees(snapshot.drift) + QStringLiteral(" since then")
                         : none);
    setText(m_since, snapshot.calibrating ? QStringLiteral("going on")
                     : snapshot.calibrations > 0
                         ? agoText(snapshot.sinceCalibration) + QStringLiteral(" ago")
                         : QStringLiteral("none yet"));
    setText(m_count, QString::number(snapshot.calibrations));
    setText(m_core, coreText(snapshot.core));
}

} // namespace irmcore::view
