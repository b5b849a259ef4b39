#pragma once

#include "../snapshot.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QGroupBox;
class QSlider;

namespace irmcore::view {

/// How the picture is shown: palette, window, isotherm, composition.
class PicturePanel : public QWidget {
    Q_OBJECT
public:
    explicit PicturePanel(QWidget* parent = nullptr);

    Look look() const;
    IsothermWish isotherm() const;
    /// Shows them; nothing is told of.
    void set(const Look& look, const IsothermWish& isotherm);
    void show(const Snapshot& snapshot);

    /// What cannot be chosen here becomes the default.
    static Look checked(const Look& look);
    static IsothermWish checked(const IsothermWish& isotherm);

Q_SIGNALS:
    void changed();

private:
    QGroupBox* makeColours();
    QGroupBox* makeIsotherm();
    QGroupBox* makeComposition();
    void connectAll();
    void enable();
    void takeWindow();

    QComboBox* m_palette;
    QComboBox* m_window;
    QDoubleSpinBox* m_low;
    QDoubleSpinBox* m_high;
    QGroupBox* m_isotherm;
    QComboBox* m_isoType;
    QDoubleSpinBox* m_isoLow;
    QDoubleSpinBox* m_isoHigh;
    QComboBox* m_isoColour;
    QComboBox* m_mode;
    QComboBox* m_inset;
    QSlider* m_blend; ///< percent
    Value m_barLow;
    Value m_barHigh;
    int m_kind = -1; ///< of camera, by what it can mix; -1: not known yet
};

} // namespace irmcore::view
