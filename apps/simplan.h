#pragma once

#include "../sim/plan.h"

#include <QCommandLineOption>
#include <QList>
#include <QString>
#include <QStringList>

class QCommandLineParser;

#include <functional>
#include <optional>

namespace irmcore::app {

class OptionReader;

/// What `irmcore sim run` is to do.
struct SimRun {
    irmsim::Plan plan;
    QString cameraDirectory; ///< empty: the present directory, or a sample one
    bool keep = false;       ///< the sample directory stays
    bool verbose = false;
    bool asked = false; ///< an option of the camera was given
    QStringList host;   ///< the program and its arguments, at least one word
};

/// The run that the words of `irmcore sim run` ask for; the first of them is skipped. Without one,
/// `exitCode` says how the program ends: what was wrong, or the help that was asked for, has been
/// printed.
std::optional<SimRun> parseSimRun(const QStringList& words, int& exitCode);

/// The options that set a simulated camera up.
QList<QCommandLineOption> cameraOptions();
/// Reads them into a run whose surroundings are set.
void takeCamera(OptionReader& options, SimRun& run);

/// A command that takes the options of `sim run` and some of its own.
struct RunCommand {
    QString name; ///< "trace"
    QString description;
    QList<QCommandLineOption> options;
    /// Looks at them; returns what is wrong with them.
    std::function<QString(const QCommandLineParser&, const SimRun&)> take;
};
std::optional<SimRun> parseRun(const RunCommand& command, const QStringList& words, int& exitCode);

} // namespace irmcore::app
