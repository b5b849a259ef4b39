#pragma once

#include "../snapshot.h"

#include <QWidget>

class QComboBox;
class QDoubleSpinBox;
class QLabel;

namespace irmcore::view {

/// Measurement parameters and range.
class MeasurementPanel : public QWidget {
    Q_OBJECT
public:
    explicit MeasurementPanel(QWidget* parent = nullptr);

    Parameters parameters() const;
    int range() const;
    /// Shows them; nothing is told of.
    void set(const Parameters& parameters, int range);
    void show(const Snapshot& snapshot);

    /// The parameters with what lies outside the fields' limits, or is no number, as the default.
    static Parameters checked(const Parameters& parameters);

Q_SIGNALS:
    void changed();

private:
    QDoubleSpinBox* m_emissivity;
    QDoubleSpinBox* m_distance;
    QDoubleSpinBox* m_humidity; ///< percent
    QDoubleSpinBox* m_air;
    QDoubleSpinBox* m_reflected;
    QDoubleSpinBox* m_offset;
    QComboBox* m_range;
    QLabel* m_lens;
};

} // namespace irmcore::view
