#pragma once

#include "courierreader.h"
#include "simplan.h"

#include <functional>
#include <optional>

namespace irmcore::app {

/// A host that is to be run under observation.
struct ObservedRun {
    SimRun run;
    bool real = false; ///< on the machine's own devices, else on the simulated camera
    std::function<bool(const QString& directory)> prepared; ///< as that of Watch
};

/// Reads the words of a command that runs a host under observation: its own options, those of
/// `sim run`, and `--real` and `--sim`. Without these two the host runs on the machine's own
/// devices if the FPGA is among them and no option of the camera is given. As `parseRun` beyond
/// that.
std::optional<ObservedRun> parseObserved(RunCommand command, const QStringList& words,
                                         int& exitCode);

/// Runs the host, and tells of every observation, in order, on a thread of its own: when this
/// returns, of all of them. Which camera it is, and what keeps the observations from being
/// complete, is said on standard error. Returns the host's exit code, as `runParsed`.
///
/// A `hear` that waits makes the host wait, as soon as the pipe is full. `idle` is called on the
/// same thread when there has been nothing for a tenth of a second.
int runObserved(const ObservedRun& observed, const CourierReader::Hear& hear,
                const std::function<void()>& idle = nullptr);

} // namespace irmcore::app
