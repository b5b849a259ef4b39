#pragma once

#include "simplan.h"

#include <QStringList>

#include <functional>

namespace irmcore::app {

/// `irmcore sim run`: its words, the first of which is skipped. Returns the host's exit code.
int runSimRun(const QStringList& words);

/// Who watches a host, and where it runs.
struct Watch {
    int courier = -1;              ///< pipe for the host's observations
    std::function<void()> started; ///< called once the host has it
    bool board = false;            ///< on the machine's own devices, without a camera
    /// Called with the host's working directory before it starts; false keeps it from starting.
    std::function<bool(const QString& directory)> prepared;
};

/// Runs a host as parsed. Returns its exit code, or 2, 126, 127 when it cannot be run: what is
/// wrong has been said.
int runParsed(const SimRun& run, const Watch& watch);

} // namespace irmcore::app
