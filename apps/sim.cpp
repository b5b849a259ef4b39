#include "../sim/cameradir.h"
#include "commands.h"
#include "simrun.h"

#include <cstdio>

namespace irmcore::app {

namespace {

constexpr char help[] =
    "Usage: irmcore sim run [OPTIONS] -- HOST [ARGUMENTS...]\n"
    "       irmcore sim camera DIR\n\n"
    "run: runs a program on the simulated camera; 'irmcore sim run --help' says more.\n\n"
    "camera: writes a sample camera directory into DIR: Parameter/Setting and the calibration "
    "tables\n"
    "etc/calc_len*_temp*.conf, measured on the simulated detector. Files that are there already\n"
    "are not touched, and nothing is written then.\n";

} // namespace

int runSim(const QStringList& words) {
    const QStringList arguments = words.mid(1);
    if (!arguments.isEmpty() && arguments.constFirst() == QLatin1String("run"))
        return runSimRun(arguments);
    if (arguments.contains(QStringLiteral("--help"))) {
        std::fputs(help, stdout);
        return exitClean;
    }
    if (arguments.size() != 2 || arguments.constFirst() != QLatin1String("camera") ||
        arguments.constLast().startsWith(QLatin1Char('-'))) {
        complain(
            QStringLiteral("usage: irmcore sim run [OPTIONS] -- HOST, or irmcore sim camera DIR"));
        return exitUsage;
    }
    std::string error;
    if (!irmsim::writeCameraDirectory(arguments.constLast().toLocal8Bit().toStdString(),
                                      irmsim::CameraDirectory{}, error)) {
        complain(QString::fromStdString(error));
        return exitErrors;
    }
    return exitClean;
}

} // namespace irmcore::app
