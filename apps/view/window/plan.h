#pragma once

#include "mainwindow.h"

#include <QStringList>

#include <optional>

namespace irmcore::view {

/// What the program's words ask for.
struct ViewPlan {
    WindowPlan window;
    bool verbose = false; ///< the library's own lines stay on standard output
    QString screenshot;   ///< absolute; empty: the window stays open
};

/// Reads the words, of which the first is the program. Without a plan `exitCode` says how the
/// program ends; what there is to say has been printed. Takes an application object.
std::optional<ViewPlan> parsePlan(const QStringList& words, int& exitCode);

} // namespace irmcore::view
