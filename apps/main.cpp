// The command `irmcore`: the library's tools in one program.
#include "commands.h"
#include "curves/charts.h"
#include "pictures.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace app = irmcore::app;

namespace {

struct Command {
    const char* name;
    const char* summary;
    int (*run)(const QStringList& words);
};

constexpr std::array commands{
    Command{"calibrate", "make a calibration table from black bodies", app::runCalibrate},
    Command{"check", "say what is wrong with the files of a camera", app::runCheck},
    Command{"demo", "measure a scene on the simulated camera", app::runDemo},
    Command{"diff", "compare two cameras' directories, in °C", app::runDiff},
    Command{"explain", "take one reading apart, and say what small errors do to it",
            app::runExplain},
    Command{"measure", "measure spots, areas, lines and frames", app::runMeasure},
    Command{"palettes", "write a sheet of all palettes as PNG", app::runPalettes},
    Command{"plot", "draw what a camera's directory holds as SVG", app::runPlot},
    Command{"record", "run a program and record what the camera does", app::runRecord},
    Command{"replay", "run a program on a recorded camera", app::runReplay},
    Command{"sim", "the simulated camera: run a program on it, write its sample directory",
            app::runSim},
    Command{"trace", "run a program and log its transfers with the camera", app::runTrace},
};

/// Whether an option of a command is there, whatever its value.
bool isGiven(int argc, char** argv, std::string_view option) {
    return std::any_of(argv + std::min(argc, 2), argv + argc, [option](std::string_view word) {
        return word.substr(0, option.size()) == option;
    });
}

/// The application object that a command takes: drawing takes others than the rest.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv) {
    const std::string_view command = argc > 1 ? argv[1] : "";
    if (command == "plot" && isGiven(argc, argv, "--output"))
        return app::makeChartApplication(argc, argv);
    return app::makeApplication(argc, argv,
                                command == "palettes" ||
                                    (command == "demo" && isGiven(argc, argv, "--picture")));
}

void printHelp(std::FILE* to) {
    std::fputs("Usage: irmcore COMMAND [OPTIONS]\n\nCommands:\n", to);
    for (const Command& command : commands)
        std::fprintf(to, "  %-9s %s\n", command.name, command.summary);
    std::fputs("\n'irmcore COMMAND --help' says more. Exit codes: 0 clean, 2 errors, "
               "3 wrong usage;\ncommands that run a program end with that program's code.\n",
               to);
}

} // namespace

void app::complain(const QString& text) {
    std::fprintf(stderr, "irmcore: %s\n", text.toLocal8Bit().constData());
}

int main(int argc, char** argv) {
    if (::fcntl(STDOUT_FILENO, F_GETFD) < 0) {
        // The next file to be opened would get the results.
        std::fputs("irmcore: standard output is closed\n", stderr);
        return app::exitErrors;
    }
    const auto application = makeApplication(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("irmcore"));
    QCoreApplication::setApplicationVersion(QStringLiteral(IRMCORE_VERSION));
    std::setlocale(LC_NUMERIC, "C"); // numbers carry a point whatever the user's language
    QStringList words;
    for (int i = 1; i < argc; ++i)
        words.append(QString::fromLocal8Bit(argv[i]));
    if (words.isEmpty()) {
        printHelp(stderr);
        return app::exitUsage;
    }
    const QString& name = words.constFirst();
    if (name == QLatin1String("--help") || name == QLatin1String("-h")) {
        printHelp(stdout);
        return app::exitClean;
    }
    if (name == QLatin1String("--version")) {
        std::printf("irmcore %s\n", IRMCORE_VERSION);
        return app::exitClean;
    }
    for (const Command& command : commands)
        if (name == QLatin1String(command.name))
            return command.run(words);
    app::complain(QStringLiteral("there is no command '%1'; see irmcore --help").arg(name));
    return app::exitUsage;
}
