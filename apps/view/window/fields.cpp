#include "fields.h"

#include <QSignalBlocker>

namespace irmcore::view {

QDoubleSpinBox* makeField(const NumberField& field) {
    auto* const box = new QDoubleSpinBox;
    box->setObjectName(QString::fromLatin1(field.name));
    box->setDecimals(field.decimals);
    box->setRange(field.low, field.high);
    box->setSingleStep(field.step);
    box->setSuffix(QString::fromUtf8(field.unit));
    box->setKeyboardTracking(false);
    box->setAccelerated(true);
    return box;
}

void showQuietly(QDoubleSpinBox* field, double value) {
    const QSignalBlocker blocker(field);
    field->setValue(value);
}

void showQuietly(QCheckBox* box, bool checked) {
    const QSignalBlocker blocker(box);
    box->setChecked(checked);
}

void showQuietly(QComboBox* box, int data) {
    const QSignalBlocker blocker(box);
    box->setCurrentIndex(box->findData(data));
}

QLabel* makeShown(const char* name) {
    auto* const label = new QLabel(QString(QChar(0x2013)));
    label->setObjectName(QString::fromLatin1(name));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

void setText(QLabel* label, const QString& text) {
    if (label->text() != text)
        label->setText(text);
}

QFormLayout* makeForm() {
    auto* const form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    form->setHorizontalSpacing(12);
    form->setVerticalSpacing(6);
    return form;
}

} // namespace irmcore::view
