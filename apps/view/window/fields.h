#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QString>

namespace irmcore::view {

/// The limits of a number that a person types.
struct NumberField {
    const char* name; ///< of the object
    double low;
    double high;
    double step;
    int decimals;
    const char* unit; ///< UTF-8, with its space
};

/// A field for numbers; it tells them when they are complete, not at every key.
QDoubleSpinBox* makeField(const NumberField& field);

// These show a value without telling of a change.
void showQuietly(QDoubleSpinBox* field, double value);
void showQuietly(QCheckBox* box, bool checked);
/// Chooses the entry with this data.
void showQuietly(QComboBox* box, int data);

/// A label for a value that is only shown.
QLabel* makeShown(const char* name);
/// Sets a text only where it is another.
void setText(QLabel* label, const QString& text);

/// A form with the distances that all panels have.
QFormLayout* makeForm();

} // namespace irmcore::view
