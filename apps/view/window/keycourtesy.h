#pragma once

#include <QObject>

namespace irmcore::view {

/// Leaves keys without a modifier to the widgets that have a use for them: else Space would freeze
/// the picture where it should press a button, and letters would choose tools instead of entries
/// of a list. Installed on the application.
class KeyCourtesy : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace irmcore::view
