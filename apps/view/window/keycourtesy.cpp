#include "keycourtesy.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QComboBox>
#include <QGroupBox>
#include <QKeyEvent>

namespace irmcore::view {

bool KeyCourtesy::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::ShortcutOverride)
        return QObject::eventFilter(watched, event);
    auto* const key = static_cast<QKeyEvent*>(event);
    const bool plain = (key->modifiers() & ~Qt::ShiftModifier) == 0;
    const bool space = key->key() == Qt::Key_Space;
    const bool letter = key->key() >= Qt::Key_A && key->key() <= Qt::Key_Z;
    const bool presses = qobject_cast<QAbstractButton*>(watched) != nullptr ||
                         qobject_cast<QGroupBox*>(watched) != nullptr;
    const bool chooses = qobject_cast<QComboBox*>(watched) != nullptr ||
                         qobject_cast<QAbstractItemView*>(watched) != nullptr;
    if (plain && ((space && (presses || chooses)) || (letter && chooses))) {
        key->accept();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace irmcore::view
