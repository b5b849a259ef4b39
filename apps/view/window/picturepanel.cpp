#include "picturepanel.h"

#include "fields.h"
#include "picturechoices.h"
#include "swatches.h"
#include "wording.h"

#include <QGroupBox>
#include <QSignalBlocker>
#include <QSlider>
#include <QStandardItemModel>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace irmcore::view {

namespace {

template <std::size_t N>
QComboBox* makeChoice(const char* name, const std::array<Entry, N>& entries) {
    auto* const box = new QComboBox;
    box->setObjectName(QString::fromLatin1(name));
    for (const Entry& entry : entries)
        box->addItem(QString::fromUtf8(entry.text), entry.data);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    return box;
}

} // namespace

PicturePanel::PicturePanel(QWidget* parent)
    : QWidget(parent), m_palette(new QComboBox), m_window(makeChoice("window", windowEntries)),
      m_low(makeField(lowField)), m_high(makeField(highField)),
      m_isotherm(new QGroupBox(QStringLiteral("&Isotherm"))),
      m_isoType(makeChoice("isothermType", isoEntries)), m_isoLow(makeField(isoLowField)),
      m_isoHigh(makeField(isoHighField)), m_isoColour(new QComboBox),
      m_mode(makeChoice("composition", modeEntries)), m_inset(makeChoice("inset", insetEntries)),
      m_blend(new QSlider(Qt::Horizontal)) {
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(makeColours());
    layout->addWidget(makeIsotherm());
    layout->addWidget(makeComposition());
    layout->addStretch();
    set(Look{}, IsothermWish{});
    connectAll();
}

QGroupBox* PicturePanel::makeColours() {
    constexpr QSize icon(72, 14);
    m_palette->setObjectName(QStringLiteral("palette"));
    m_palette->setIconSize(icon);
    for (const NamedPalette& palette : namedPalettes)
        m_palette->addItem(swatch(palette.index, icon), QString::fromLatin1(palette.name),
                           static_cast<int>(palette.index));
    auto* const box = new QGroupBox(QStringLiteral("Colours"));
    auto* const form = makeForm();
    form->addRow(QStringLiteral("&Palette"), m_palette);
    form->addRow(QStringLiteral("Win&dow"), m_window);
    form->addRow(QStringLiteral("Lo&wer end"), m_low);
    form->addRow(QStringLiteral("&Upper end"), m_high);
    box->setLayout(form);
    return box;
}

QGroupBox* PicturePanel::makeIsotherm() {
    m_isotherm->setObjectName(QStringLiteral("isotherm"));
    m_isotherm->setCheckable(true);
    m_isoColour->setObjectName(QStringLiteral("isothermColour"));
    for (const ColourEntry& colour : isoColours)
        m_isoColour->addItem(QString::fromLatin1(colour.text), QString::fromLatin1(colour.name));
    auto* const form = makeForm();
    form->addRow(QStringLiteral("T&ype"), m_isoType);
    form->addRow(QStringLiteral("Fro&m"), m_isoLow);
    form->addRow(QStringLiteral("T&o"), m_isoHigh);
    form->addRow(QStringLiteral("Colou&r"), m_isoColour);
    m_isotherm->setLayout(form);
    return m_isotherm;
}

QGroupBox* PicturePanel::makeComposition() {
    m_blend->setObjectName(QStringLiteral("blend"));
    m_blend->setRange(0, 100);
    m_blend->setPageStep(10);
    auto* const box = new QGroupBox(QStringLiteral("Composition"));
    auto* const form = makeForm();
    form->addRow(QStringLiteral("&Show"), m_mode);
    form->addRow(QStringLiteral("I&nset"), m_inset);
    form->addRow(QStringLiteral("&Blend"), m_blend);
    box->setLayout(form);
    return box;
}

void PicturePanel::connectAll() {
    const auto tell = [this] {
        enable();
        Q_EMIT changed();
    };
    for (QComboBox* box : {m_palette, m_isoType, m_isoColour, m_mode, m_inset})
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, tell);
    connect(m_window, qOverload<int>(&QComboBox::currentIndexChanged), this, [this, tell] {
        takeWindow();
        tell();
    });
    // The ends never cross: the one that is changed pushes the other.
    const auto pair = [this, tell](QDoubleSpinBox* low, QDoubleSpinBox* high) {
        connect(low, qOverload<double>(&QDoubleSpinBox::valueChanged), this,
                [high, tell](double value) {
                    if (high->value() < value + leastWindow)
                        showQuietly(high, value + leastWindow);
                    tell();
                });
        connect(high, qOverload<double>(&QDoubleSpinBox::valueChanged), this,
                [low, tell](double value) {
                    if (low->value() > value - leastWindow)
                        showQuietly(low, value - leastWindow);
                    tell();
                });
    };
    pair(m_low, m_high);
    pair(m_isoLow, m_isoHigh);
    connect(m_isotherm, &QGroupBox::toggled, this, tell);
    connect(m_blend, &QSlider::valueChanged, this, tell);
}

/// A window by hand begins as the one that is shown.
void PicturePanel::takeWindow() {
    if (m_window->currentData().toInt() != LEVELSPAN_HAND || !m_barLow.ok() || !m_barHigh.ok())
        return;
    showQuietly(m_low, m_barLow.celsius);
    showQuietly(m_high, std::max(m_barHigh.celsius, m_low->value() + leastWindow));
}

void PicturePanel::enable() {
    const bool byHand = m_window->currentData().toInt() == LEVELSPAN_HAND;
    m_low->setEnabled(byHand);
    m_high->setEnabled(byHand);
    const bool isotherm = m_isotherm->isChecked();
    const int type = m_isoType->currentData().toInt();
    m_isoLow->setEnabled(isotherm && type != 2);
    m_isoHigh->setEnabled(isotherm && type != 0);
    const int mode = m_mode->currentData().toInt();
    m_inset->setEnabled(mode == IMAGE_CCD_PIPE_IR || mode == IMAGE_IR_PIPE_CCD);
    m_blend->setEnabled(mode == IMAGE_CCD_MIX_IR || mode == IMAGE_IR_MIX_CCD);
}

Look PicturePanel::look() const {
    Look look;
    look.palette = static_cast<COLOR_TABLE>(m_palette->currentData().toInt());
    look.window = static_cast<Mode_t>(m_window->currentData().toInt());
    look.low = m_low->value();
    look.high = m_high->value();
    look.mode = static_cast<Image_Mode_t>(m_mode->currentData().toInt());
    look.inset = static_cast<Image_Position_t>(m_inset->currentData().toInt());
    look.blend = m_blend->value() / 100.0;
    return look;
}

IsothermWish PicturePanel::isotherm() const {
    IsothermWish wish;
    wish.on = m_isotherm->isChecked();
    wish.type = m_isoType->currentData().toInt();
    wish.low = m_isoLow->value();
    wish.high = m_isoHigh->value();
    wish.colour = toLocal(m_isoColour->currentData().toString());
    return wish;
}

void PicturePanel::set(const Look& look, const IsothermWish& isotherm) {
    showQuietly(m_palette, look.palette);
    showQuietly(m_window, look.window);
    showQuietly(m_low, look.low);
    showQuietly(m_high, look.high);
    showQuietly(m_mode, look.mode);
    showQuietly(m_inset, look.inset);
    const QSignalBlocker blockBlend(m_blend);
    m_blend->setValue(static_cast<int>(std::lround(look.blend * 100.0)));
    const QSignalBlocker blockIsotherm(m_isotherm);
    m_isotherm->setChecked(isotherm.on);
    showQuietly(m_isoType, isotherm.type);
    showQuietly(m_isoLow, isotherm.low);
    showQuietly(m_isoHigh, isotherm.high);
    const QSignalBlocker blockColour(m_isoColour);
    m_isoColour->setCurrentIndex(std::max(colourIndex(isotherm.colour), 0));
    enable();
}

void PicturePanel::show(const Snapshot& snapshot) {
    m_barLow = snapshot.barLow;
    m_barHigh = snapshot.barHigh;
    const int kind = (snapshot.mixes ? 1 : 0) + (snapshot.hasVisible ? 2 : 0);
    if (m_kind == kind)
        return;
    m_kind = kind;
    auto* const model = qobject_cast<QStandardItemModel*>(m_mode->model());
    for (int row = 0; model != nullptr && row < model->rowCount(); ++row) {
        const int mode = m_mode->itemData(row).toInt();
        model->item(row)->setEnabled(snapshot.mixes || mode == IMAGE_IR);
    }
    if (!snapshot.mixes)
        m_mode->setToolTip(QStringLiteral("A recording has no visible picture"));
    else if (!snapshot.hasVisible)
        m_mode->setToolTip(QStringLiteral("On the camera's own screen; here it stays infrared"));
    else
        m_mode->setToolTip(QString());
}

} // namespace irmcore::view
