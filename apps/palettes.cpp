#include "commands.h"
#include "pictures.h"
#include "results.h"

#include <QFileInfo>

namespace irmcore::app {

namespace {

constexpr char help[] =
    "Usage: irmcore palettes FILE\n\n"
    "Writes a sheet of the nine palettes into FILE, as PNG: each as the colour bar and the\n"
    "built-in scene on the simulated camera's screen.\n";

} // namespace

int runPalettes(const QStringList& words) {
    const QStringList arguments = words.mid(1);
    if (arguments.contains(QStringLiteral("--help"))) {
        std::fputs(help, stdout);
        return exitClean;
    }
    if (arguments.size() != 1 || arguments.constFirst().isEmpty() ||
        arguments.constFirst().startsWith(QLatin1Char('-'))) {
        complain(QStringLiteral("usage: irmcore palettes FILE"));
        return exitUsage;
    }
    const Results results(false);
    return drawPalettes(QFileInfo(arguments.constFirst()).absoluteFilePath());
}

} // namespace irmcore::app
