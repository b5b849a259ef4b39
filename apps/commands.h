#pragma once

#include <QStringList>

/// The subcommands of `irmcore`. Each takes its own words (the first is its name), prints help or
/// what is wrong with them, and returns the program's exit code.
namespace irmcore::app {

enum ExitCode : int {
    exitClean = 0,
    exitErrors = 2, ///< the work could not be done, or a result is wrong
    exitUsage = 3,
};

int runCalibrate(const QStringList& words);
int runCheck(const QStringList& words);
int runDemo(const QStringList& words);
int runDiff(const QStringList& words);
int runExplain(const QStringList& words);
int runMeasure(const QStringList& words);
int runRecord(const QStringList& words);
int runReplay(const QStringList& words);
int runPalettes(const QStringList& words);
int runPlot(const QStringList& words);
int runSim(const QStringList& words);
int runTrace(const QStringList& words);

/// Puts one line on standard error: "irmcore: " and the text.
void complain(const QString& text);

} // namespace irmcore::app
