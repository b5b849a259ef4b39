#include "demoplan.h"

#include "../core/range.h"
#include "commands.h"
#include "options.h"

#include <QCommandLineParser>

#include <array>
#include <cstdio>

namespace irmcore::app {

namespace {

/// An option that takes a number, and where it goes.
struct NumberOption {
    const char* name;
    const char* unit;
    const char* help;
    double irmsim::Surroundings::*field;
    double low;
    double high;
};

using irmsim::Surroundings;
constexpr std::array numberOptions{
    NumberOption{"emissivity", "fraction", "emissivity of the objects (0.95)",
                 &Surroundings::emissivity, 0.1, 1.0},
    NumberOption{"distance", "metres", "distance to the objects (5)", &Surroundings::distance, 0.0,
                 1000.0},
    NumberOption{"humidity", "fraction", "relative humidity of the air (0.6)",
                 &Surroundings::humidity, 0.01, 1.0},
    NumberOption{"air", "celsius", "temperature of the air (25)", &Surroundings::envTemp, -40.0,
                 49.0},
    NumberOption{"reflected", "celsius", "temperature of what the objects reflect (25)",
                 &Surroundings::reflectedTemp, -40.0, 100.0},
};

/// Reads the numbers; a text on what is wrong with one.
QString takeNumbers(const QCommandLineParser& parser, Surroundings& surroundings) {
    for (const NumberOption& number : numberOptions) {
        const QString name = QString::fromLatin1(number.name);
        if (!parser.isSet(name))
            continue;
        bool ok = false;
        const double value = parser.value(name).toDouble(&ok);
        if (!ok || !(value >= number.low && value <= number.high))
            return QStringLiteral("--%1 takes a number from %2 to %3, not '%4'")
                .arg(name)
                .arg(number.low)
                .arg(number.high)
                .arg(parser.value(name));
        surroundings.*number.field = value;
    }
    return {};
}

QString takeScene(const QCommandLineParser& parser, DemoPlan& plan) {
    const QString size = parser.value(QStringLiteral("size"));
    if (size == QLatin1String("160x120"))
        plan.scene = irmsim::Scene::bench(160, 120);
    else if (size != QLatin1String("384x288"))
        return QStringLiteral("--size takes 384x288 or 160x120, not '%1'").arg(size);
    if (!parser.isSet(QStringLiteral("scene")))
        return {};
    const QString file = parser.value(QStringLiteral("scene"));
    std::string error;
    const auto scene = irmsim::Scene::fromPgm(file.toLocal8Bit().toStdString(), error);
    if (!scene)
        return QString::fromStdString(error);
    plan.scene = *scene;
    return {};
}

QString takeRange(const QCommandLineParser& parser, DemoPlan& plan) {
    plan.range = rangeFor(plan.scene);
    if (!parser.isSet(QStringLiteral("range")))
        return {};
    bool ok = false;
    plan.range = parser.value(QStringLiteral("range")).toInt(&ok);
    return ok && (plan.range == 0 || plan.range == 1)
               ? QString()
               : QStringLiteral("--range takes 0 (-20 to 150 °C) or 1 (0 to 400 °C), not '%1'")
                     .arg(parser.value(QStringLiteral("range")));
}

} // namespace

int rangeFor(const irmsim::Scene& scene) {
    std::array<int, 2> inside{};
    for (int y = 0; y < scene.height(); ++y)
        for (int x = 0; x < scene.width(); ++x)
            for (int range = 0; range < 2; ++range) {
                const RangeLimits limits = limitsOfRange(range);
                const double celsius = scene.at(x, y);
                if (celsius >= limits.min && celsius <= limits.max)
                    ++inside[static_cast<std::size_t>(range)];
            }
    return inside[1] > inside[0] ? 1 : 0;
}

std::optional<DemoPlan> parseDemo(const QStringList& words, int& exitCode) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Runs the library on the simulated camera and holds every reading against the scene's "
        "true temperature.\nExit code 0 when all are within their bound, 2 when one is not."));
    parser.addOptions({option("scene",
                              "a real frame instead of the built-in scene: binary PGM, "
                              "384x288 or 160x120, hundredths of a kelvin",
                              "file"),
                       option("range",
                              "measuring range 0 or 1 instead of the one that fits the "
                              "scene",
                              "index"),
                       option("accuracy", "sweep both ranges and print the largest errors"),
                       option("warm-up", "let the camera warm up and print the largest errors, as "
                                         "documented and with steps left out"),
                       option("json", "one JSON object a line"),
                       option("verbose", "show the library's own lines on standard error"),
                       option("help", "this text")});
    QCommandLineOption size =
        option("size", "frame of the built-in scene: 384x288 or 160x120", "size");
    size.setDefaultValue(QStringLiteral("384x288"));
    parser.addOption(size);
    addPictureOptions(parser);
    for (const NumberOption& number : numberOptions)
        parser.addOption(option(number.name, number.help, number.unit));

    exitCode = exitUsage;
    if (!parseWords(parser, words, QStringLiteral("demo"), exitCode))
        return std::nullopt;
    if (!parser.positionalArguments().isEmpty()) {
        complain(QStringLiteral("demo takes options only, not '%1'")
                     .arg(parser.positionalArguments().constFirst()));
        return std::nullopt;
    }
    DemoPlan plan;
    plan.accuracy = parser.isSet(QStringLiteral("accuracy"));
    plan.warmUp = parser.isSet(QStringLiteral("warm-up"));
    plan.json = parser.isSet(QStringLiteral("json"));
    plan.verbose = parser.isSet(QStringLiteral("verbose"));
    QString wrong = takeNumbers(parser, plan.surroundings);
    if (wrong.isEmpty())
        wrong = takeScene(parser, plan);
    if (wrong.isEmpty())
        wrong = takeRange(parser, plan);
    if (wrong.isEmpty())
        wrong = takePicture(parser, plan.picture);
    if (!wrong.isEmpty()) {
        complain(wrong);
        return std::nullopt;
    }
    return plan;
}

} // namespace irmcore::app
