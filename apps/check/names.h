#pragma once

#include <QString>
#include <QStringList>

namespace irmcore::app::check {

/// The one of `names` that `wrong` was most likely meant to be: the same but for case, or but for
/// a letter or two, or the beginning of it. Empty when none is near.
QString nearest(const QString& wrong, const QStringList& names);

} // namespace irmcore::app::check
