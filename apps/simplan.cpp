#include "simplan.h"

#include "commands.h"
#include "optionreader.h"
#include "options.h"
#include "scenario.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include <array>
#include <cstdio>
#include <utility>

namespace irmcore::app {

namespace {

using irmsim::Plan;
using irmsim::Surroundings;

/// An option that takes a number, and where it goes.
struct NumberOption {
    const char* name;
    const char* unit;
    const char* help;
    double Surroundings::*field;
    double low;
    double high;
};

constexpr std::array surroundingsOptions{
    NumberOption{"ambient", "celsius",
                 "temperature of the air and of what the objects reflect (25)",
                 &Surroundings::envTemp, -40.0, 49.0},
    NumberOption{"reflected", "celsius", "temperature of what the objects reflect, if another",
                 &Surroundings::reflectedTemp, -40.0, 100.0},
    NumberOption{"emissivity", "fraction", "emissivity of the objects (0.95)",
                 &Surroundings::emissivity, 0.1, 1.0},
    NumberOption{"distance", "metres", "distance to the objects (5)", &Surroundings::distance, 0.0,
                 1000.0},
    NumberOption{"humidity", "fraction", "relative humidity of the air (0.6)",
                 &Surroundings::humidity, 0.01, 1.0},
};

void takeScene(OptionReader& options, Plan& plan) {
    const QString size = options.text("size");
    if (size == QLatin1String("160x120")) {
        plan.scene.width = 160;
        plan.scene.height = 120;
    } else if (options.has("size") && size != QLatin1String("384x288")) {
        options.refuse("size", QStringLiteral("384x288 or 160x120"));
    }
    if (!options.has("scene"))
        return;
    const std::string name = options.text("scene").toLocal8Bit().toStdString();
    std::vector<std::string> words{name};
    if (name.rfind("uniform:", 0) == 0 || name.rfind("gradient:", 0) == 0) {
        words.clear();
        for (const QString& word : options.text("scene").split(QLatin1Char(':')))
            words.push_back(word.toStdString());
    }
    std::string error;
    if (auto scene = sceneOf(words, plan.scene, {}, error))
        plan.scene = std::move(*scene);
    else if (options.wrong.isEmpty())
        options.wrong = QStringLiteral("--scene: ") + QString::fromLocal8Bit(error.c_str());
}

void takeSurroundings(OptionReader& options, Plan& plan) {
    for (const NumberOption& number : surroundingsOptions) {
        options.number(number.name, number.low, number.high, plan.surroundings.*number.field);
        if (number.field == &Surroundings::envTemp)
            plan.surroundings.reflectedTemp = plan.surroundings.envTemp;
    }
}

void takeInside(OptionReader& options, Plan& plan) {
    double inside = 0.0;
    options.number("inside", -60.0, 120.0, inside);
    if (options.has("inside"))
        plan.inside = inside;
    if (!options.has("warm-up"))
        return;
    double start = 0.0;
    double end = 0.0;
    double timeConstant = irmsim::WarmUp{}.timeConstant;
    if (!OptionReader::numbers(options.text("warm-up"), -60.0, 1e6, {&start, &end, &timeConstant},
                               1) ||
        start > 120.0 || end > 120.0 || timeConstant < 0.0)
        options.refuse("warm-up", QStringLiteral("START:END or START:END:SECONDS, -60 to 120 °C"));
    plan.warmUp = irmsim::WarmUp::inside(start, end, timeConstant);
}

/// Noise in AD, or in mK of an object at 30 °C.
void takeNoise(OptionReader& options, Plan& plan) {
    int seed = 1;
    options.whole("seed", 0, 2147483647, seed);
    plan.seed = static_cast<std::uint64_t>(seed);
    if (!options.has("noise"))
        return;
    QString text = options.text("noise");
    double perUnit = 1.0;
    if (text.endsWith(QLatin1String("mK"))) {
        irmsim::Detector detector;
        detector.setRange(plan.range);
        detector.setLens(plan.lens);
        detector.setTemperatures(detector.referenceTemp(), detector.referenceTemp());
        detector.setSurroundings(plan.surroundings);
        perUnit = (detector.counts(30.5) - detector.counts(29.5)) / 1000.0;
        text.chop(2);
    } else if (text.endsWith(QLatin1String("AD"))) {
        text.chop(2);
    }
    if (!OptionReader::numbers(text, 0.0, 10000.0, {&plan.noise}))
        options.refuse("noise", QStringLiteral("a deviation like 2AD or 50mK"));
    plan.noise *= perUnit;
}

void takeClock(OptionReader& options, Plan& plan) {
    options.number("frame-rate", 0.1, 1000.0, plan.frameRate);
    const QString clock = options.text("clock");
    if (clock == QLatin1String("wall"))
        plan.wallFactor = 1.0;
    else if (options.has("clock") && clock != QLatin1String("sim") &&
             (!clock.startsWith(QLatin1String("wall:")) ||
              !OptionReader::numbers(clock.mid(5), 0.001, 1e6, {&plan.wallFactor})))
        options.refuse("clock", QStringLiteral("sim, wall or wall:FACTOR"));
}

void takePort(OptionReader& options, Plan& plan) {
    const QString port = options.text("port");
    plan.pty = port == QLatin1String("pty");
    if (options.has("port") && !plan.pty && port != QLatin1String("virtual"))
        options.refuse("port", QStringLiteral("virtual or pty"));
}

void takeScenario(OptionReader& options, SimRun& run) {
    if (!options.has("scenario") || !options.wrong.isEmpty())
        return;
    std::string error;
    auto scenario =
        readScenario(options.text("scenario").toLocal8Bit().toStdString(), run.plan.scene, error);
    if (!scenario) {
        options.wrong = QString::fromLocal8Bit(error.c_str());
        return;
    }
    run.plan.scenes = std::move(scenario->scenes);
    run.plan.events = std::move(scenario->events);
    for (irmsim::Event& event : run.plan.events)
        if (!run.verbose)
            event.text.clear();
}

void addOptions(QCommandLineParser& parser) {
    parser.addOptions(cameraOptions());
    parser.addOptions(
        {option("camera",
                "camera directory, which becomes the host's working directory. Without it: the "
                "present one if it has etc/calc_len*, else a fresh sample directory",
                "dir"),
         option("keep", "the sample directory is not removed afterwards"),
         option("port", "the core's serial port: virtual (the default) or pty", "port"),
         option("verbose", "say what is run, and what the scenario does when it does it"),
         option("help", "this text")});
    for (const NumberOption& number : surroundingsOptions)
        parser.addOption(option(number.name, number.help, number.unit));
    addHost(parser);
}

/// Whether an option that only concerns the camera is set.
bool cameraAsked(const QCommandLineParser& parser, const QList<QCommandLineOption>& others) {
    QStringList names{QStringLiteral("verbose")};
    for (const QCommandLineOption& other : others)
        names += other.names();
    for (const QString& name : parser.optionNames())
        if (!names.contains(name))
            return true;
    return false;
}

} // namespace

QList<QCommandLineOption> cameraOptions() {
    return {
        option("scene",
               "what the camera looks at: bench (black bodies, the default), uniform:CELSIUS, "
               "gradient:LEFT:RIGHT, or a binary PGM file of hundredths of a kelvin",
               "scene"),
        option("size", "frame of a built-in scene: 384x288 (the default) or 160x120", "size"),
        option("scenario", "script of what happens to the camera", "file"),
        option("range", "range that the camera starts in: 0 or 1 (0)", "index"),
        option("lens", "lens, 0 to 6 (0)", "index"),
        option("inside", "inside temperature (26.5 in range 0, 43 in range 1)", "celsius"),
        option("warm-up", "shutter and sensor warm up, 600 s unless said otherwise",
               "start:end[:seconds]"),
        option("noise", "standard deviation of a pixel, in AD or for an object at 30 °C: 2AD, 50mK",
               "deviation"),
        option("seed", "seed of the noise (1)", "number"),
        option("clock", "sim (frames and sleeps make the time, the default), wall or wall:FACTOR",
               "clock"),
        option("frame-rate", "frames a second (25)", "hertz")};
}

void takeCamera(OptionReader& options, SimRun& run) {
    options.whole("range", 0, 1, run.plan.range);
    options.whole("lens", 0, 6, run.plan.lens);
    takeScene(options, run.plan);
    takeInside(options, run.plan);
    takeNoise(options, run.plan);
    takeClock(options, run.plan);
    takeScenario(options, run);
}

std::optional<SimRun> parseSimRun(const QStringList& words, int& exitCode) {
    const QString description = QStringLiteral(
        "Runs a program on the simulated camera, unchanged: its calls on the camera's devices are "
        "answered within it.\nA child of the program runs without the camera; a program that it "
        "turns into (exec) finds a fresh one.\nThe exit code is the program's own: 128 and the "
        "signal when one ended it, 127 when it is not there, 126 when\nit cannot be executed; 3 "
        "for wrong usage, 2 when it cannot be run on a simulated camera.");
    return parseRun({QStringLiteral("sim run"), description, {}, nullptr}, words, exitCode);
}

std::optional<SimRun> parseRun(const RunCommand& command, const QStringList& words, int& exitCode) {
    QCommandLineParser parser;
    parser.setApplicationDescription(command.description);
    parser.addOptions(command.options);
    addOptions(parser);
    exitCode = exitUsage;
    if (!parseWords(parser, words, command.name, exitCode))
        return std::nullopt;
    SimRun run;
    run.cameraDirectory = parser.value(QStringLiteral("camera"));
    run.keep = parser.isSet(QStringLiteral("keep"));
    run.verbose = parser.isSet(QStringLiteral("verbose"));
    run.host = parser.positionalArguments();
    run.asked = cameraAsked(parser, command.options);
    OptionReader options(parser);
    takeSurroundings(options, run.plan);
    takeCamera(options, run);
    takePort(options, run.plan);
    if (options.wrong.isEmpty() && options.has("camera") && !QFileInfo(run.cameraDirectory).isDir())
        options.refuse("camera", QStringLiteral("a directory"));
    if (options.wrong.isEmpty() && run.host.isEmpty())
        options.wrong =
            QStringLiteral("%1 needs a program to run: irmcore %1 -- HOST").arg(command.name);
    if (options.wrong.isEmpty() && command.take)
        options.wrong = command.take(parser, run);
    if (!options.wrong.isEmpty()) {
        complain(options.wrong);
        return std::nullopt;
    }
    return run;
}

} // namespace irmcore::app
