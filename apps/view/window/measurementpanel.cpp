#include "measurementpanel.h"

#include "fields.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace irmcore::view {

namespace {

constexpr NumberField emissivityField{"emissivity", 0.01, 1.0, 0.01, 3, ""};
constexpr NumberField distanceField{"distance", 0.0, 1000.0, 0.5, 1, " m"};
constexpr NumberField humidityField{"humidity", 1.0, 100.0, 5.0, 0, " %"};
constexpr NumberField airField{"air", -40.0, 49.0, 1.0, 1, " °C"};
constexpr NumberField reflectedField{"reflected", -40.0, 100.0, 1.0, 1, " °C"};
constexpr NumberField offsetField{"offset", -100.0, 100.0, 0.1, 1, " °C"};

bool fits(double value, const NumberField& field, double perUnit = 1.0) {
    return value * perUnit >= field.low && value * perUnit <= field.high;
}

} // namespace

Parameters MeasurementPanel::checked(const Parameters& parameters) {
    Parameters result;
    if (fits(parameters.emissivity, emissivityField))
        result.emissivity = parameters.emissivity;
    if (fits(parameters.distance, distanceField))
        result.distance = parameters.distance;
    if (fits(parameters.humidity, humidityField, 100.0))
        result.humidity = parameters.humidity;
    if (fits(parameters.air, airField))
        result.air = parameters.air;
    if (fits(parameters.reflected, reflectedField))
        result.reflected = parameters.reflected;
    if (fits(parameters.offset, offsetField))
        result.offset = parameters.offset;
    return result;
}

MeasurementPanel::MeasurementPanel(QWidget* parent)
    : QWidget(parent), m_emissivity(makeField(emissivityField)),
      m_distance(makeField(distanceField)), m_humidity(makeField(humidityField)),
      m_air(makeField(airField)), m_reflected(makeField(reflectedField)),
      m_offset(makeField(offsetField)), m_range(new QComboBox), m_lens(makeShown("lens")) {
    m_range->setObjectName(QStringLiteral("range"));
    m_range->addItem(QString::fromUtf8("−20 to 150 °C"), 0);
    m_range->addItem(QString::fromUtf8("0 to 400 °C"), 1);
    m_emissivity->setToolTip(QStringLiteral("Share of the radiation that the object gives off "
                                            "by itself; the rest it reflects"));
    m_reflected->setToolTip(QStringLiteral("Temperature of what the object reflects"));
    m_offset->setToolTip(QStringLiteral("Added to every reading"));
    auto* const form = makeForm();
    form->addRow(QStringLiteral("E&missivity"), m_emissivity);
    form->addRow(QStringLiteral("&Distance"), m_distance);
    form->addRow(QStringLiteral("H&umidity"), m_humidity);
    form->addRow(QStringLiteral("&Air"), m_air);
    form->addRow(QStringLiteral("&Reflected"), m_reflected);
    form->addRow(QStringLiteral("&Offset"), m_offset);
    form->addRow(QStringLiteral("Ran&ge"), m_range);
    form->addRow(QStringLiteral("Lens"), m_lens);
    auto* const defaults = new QPushButton(QStringLiteral("Defaul&ts"));
    defaults->setObjectName(QStringLiteral("parameterDefaults"));
    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(defaults, 0, Qt::AlignRight);
    layout->addStretch();
    for (QDoubleSpinBox* field :
         {m_emissivity, m_distance, m_humidity, m_air, m_reflected, m_offset})
        connect(field, qOverload<double>(&QDoubleSpinBox::valueChanged), this,
                &MeasurementPanel::changed);
    connect(m_range, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &MeasurementPanel::changed);
    connect(defaults, &QPushButton::clicked, this, [this] {
        set(Parameters{}, range());
        Q_EMIT changed();
    });
    set(Parameters{}, 0);
}

Parameters MeasurementPanel::parameters() const {
    Parameters result;
    result.emissivity = m_emissivity->value();
    result.distance = m_distance->value();
    result.humidity = m_humidity->value() / 100.0;
    result.air = m_air->value();
    result.reflected = m_reflected->value();
    result.offset = m_offset->value();
    return result;
}

int MeasurementPanel::range() const { return m_range->currentData().toInt(); }

void MeasurementPanel::set(const Parameters& parameters, int range) {
    showQuietly(m_emissivity, parameters.emissivity);
    showQuietly(m_distance, parameters.distance);
    showQuietly(m_humidity, parameters.humidity * 100.0);
    showQuietly(m_air, parameters.air);
    showQuietly(m_reflected, parameters.reflected);
    showQuietly(m_offset, parameters.offset);
    showQuietly(m_range, range);
}

void MeasurementPanel::show(const Snapshot& snapshot) {
    m_range->setEnabled(snapshot.source != SourceKind::recording);
    setText(m_lens, snapshot.lens < 0 ? QStringLiteral("none") : QString::number(snapshot.lens));
}

} // namespace irmcore::view
