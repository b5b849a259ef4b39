#include "plan.h"

#include "../commands.h"
#include "../optionreader.h"
#include "../options.h"

#include <QFileInfo>

#include <array>
#include <type_traits>

namespace irmcore::app::measuring {

namespace {

struct ParameterOption {
    const char* name;
    const char* unit;
    const char* help;
    std::optional<double> GivenParameters::*field;
    double low;
    double high;
};

constexpr std::array parameterOptions{
    ParameterOption{"emissivity", "fraction", "emissivity of the objects",
                    &GivenParameters::emissivity, 0.1, 1.0},
    ParameterOption{"distance", "metres", "distance to the objects", &GivenParameters::distance,
                    0.0, 1000.0},
    ParameterOption{"humidity", "fraction", "relative humidity of the air",
                    &GivenParameters::humidity, 0.01, 1.0},
    ParameterOption{"air", "celsius", "temperature of the air", &GivenParameters::air, -40.0, 49.0},
    ParameterOption{"reflected", "celsius", "temperature of what the objects reflect",
                    &GivenParameters::reflected, -40.0, 100.0},
    ParameterOption{"offset", "celsius", "added to every reading", &GivenParameters::offset, -100.0,
                    100.0},
};

// Slots of the FPGA that share addresses with no others.
constexpr std::size_t mostSpots = 12;
constexpr std::size_t mostAreas = 8;

void addOptions(QCommandLineParser& parser) {
    parser.addOptions(
        {option("real", "the machine's own camera instead of the simulated one"),
         option("directory",
                "camera directory with Parameter/ and etc/ (with --real the present one, else a "
                "sample)",
                "dir"),
         option("spot", "a pixel; may be given again, up to 12 times", "x,y"),
         option("hottest", "the frame's hottest pixel"),
         option("coldest", "the frame's coldest pixel"),
         option("area",
                "maximum, minimum and mean of a rectangle with these corners; may be given again, "
                "up to 8 times",
                "x1,y1,x2,y2"),
         option("line", "every pixel from one to the other; may be given again", "x1,y1,x2,y2"),
         option("frame",
                "the whole frame into this file, NAME.pgm, NAME.png or NAME.csv; may be given "
                "again. With --every the first %d or %04d in it is the reading's number, which "
                "else stands before the ending",
                "file"),
         option("scale",
                "what the words of --frame are: centikelvin (the default), decikelvin or counts",
                "unit"),
         option("every", "measure again and again, until interrupted", "seconds"),
         option("count", "of --every: so many times", "number"),
         option("json", "one JSON object a line for each place"), option("csv", "one line a pixel"),
         option("verbose", "show the library's own lines on standard error"),
         option("help", "this text")});
    for (const ParameterOption& parameter : parameterOptions)
        parser.addOption(option(parameter.name, parameter.help, parameter.unit));
    parser.addOptions(cameraOptions());
}

void takeParameters(OptionReader& options, MeasurePlan& plan) {
    irmsim::Surroundings& truth = plan.camera.plan.surroundings;
    for (const ParameterOption& parameter : parameterOptions) {
        if (!options.has(parameter.name))
            continue;
        double value = 0.0;
        options.number(parameter.name, parameter.low, parameter.high, value);
        plan.parameters.*parameter.field = value;
    }
    const GivenParameters& given = plan.parameters;
    truth.emissivity = given.emissivity.value_or(truth.emissivity);
    truth.distance = given.distance.value_or(truth.distance);
    truth.humidity = given.humidity.value_or(truth.humidity);
    truth.envTemp = given.air.value_or(truth.envTemp);
    truth.reflectedTemp = given.reflected.value_or(truth.reflectedTemp);
}

/// The options that only a simulated camera has.
void refuseWithReal(OptionReader& options) {
    for (const QCommandLineOption& own : cameraOptions()) {
        const QByteArray name = own.names().constFirst().toLatin1();
        if (name != "size" && name != "range" && options.has(name.constData()) &&
            options.wrong.isEmpty())
            options.wrong = QStringLiteral("--%1 goes with the simulated camera, not with --real")
                                .arg(QString::fromLatin1(name));
    }
}

void takeCameraAndSize(OptionReader& options, MeasurePlan& plan) {
    plan.camera.cameraDirectory = options.text("directory");
    if (options.has("directory") && !QFileInfo(plan.camera.cameraDirectory).isDir())
        options.refuse("directory", QStringLiteral("a directory"));
    takeCamera(options, plan.camera);
    if (!options.has("directory") && plan.camera.plan.lens > 1 && options.wrong.isEmpty())
        options.wrong = QStringLiteral("the sample directory has tables of lenses 0 and 1; another "
                                       "lens takes --directory");
    if (options.has("range"))
        plan.range = plan.camera.plan.range;
    std::string error;
    const auto scene = plan.camera.plan.scene.draw(error);
    if (scene) {
        plan.width = scene->width();
        plan.height = scene->height();
    } else if (options.wrong.isEmpty()) {
        options.wrong = QStringLiteral("--scene: ") + QString::fromLocal8Bit(error.c_str());
    }
}

/// Reads every value of a repeatable option by `parse`, and has `inside` look at it.
template <typename Place>
void takePlaces(const QCommandLineParser& parser, QString& wrong, const char* name,
                std::optional<Place> (*parse)(const QString&), const char* takes,
                const MeasurePlan& plan, std::vector<Place>& places) {
    const auto contains = [&](Pixel p) { return p.x < plan.width && p.y < plan.height; };
    for (const QString& text : parser.values(QString::fromLatin1(name))) {
        const std::optional<Place> place = parse(text);
        bool inside = place.has_value();
        if constexpr (std::is_same_v<Place, Pixel>)
            inside = inside && contains(*place);
        else
            inside = inside && contains(place->from) && contains(place->to);
        if (inside)
            places.push_back(*place);
        else if (wrong.isEmpty())
            wrong = QStringLiteral("--%1 takes %2 within %3x%4 pixels, not '%5'")
                        .arg(QLatin1String(name), QLatin1String(takes))
                        .arg(plan.width)
                        .arg(plan.height)
                        .arg(text);
    }
}

void takeFrames(const QCommandLineParser& parser, OptionReader& options, MeasurePlan& plan) {
    for (const QString& name : parser.values(QStringLiteral("frame"))) {
        const QFileInfo file(name);
        const QString ending = file.suffix();
        if (ending != QLatin1String("pgm") && ending != QLatin1String("png") &&
            ending != QLatin1String("csv") && options.wrong.isEmpty())
            options.wrong =
                QStringLiteral("--frame takes NAME.pgm, NAME.png or NAME.csv, not '%1'").arg(name);
        plan.frames.push_back(file.absoluteFilePath());
    }
    const QString scale = options.text("scale");
    if (scale == QLatin1String("decikelvin"))
        plan.scale = Scale::decikelvin;
    else if (scale == QLatin1String("counts"))
        plan.scale = Scale::counts;
    else if (options.has("scale") && scale != QLatin1String("centikelvin"))
        options.refuse("scale", QStringLiteral("centikelvin, decikelvin or counts"));
}

void takeTimes(OptionReader& options, MeasurePlan& plan) {
    double every = 0.0;
    options.number("every", 0.01, 1e6, every);
    if (options.has("every"))
        plan.every = every;
    else
        plan.count = 1;
    if (options.has("count"))
        options.whole("count", 1, 1000000000, plan.count);
    if (options.has("count") && !options.has("every") && options.wrong.isEmpty())
        options.wrong = QStringLiteral("--count goes with --every");
}

} // namespace

std::optional<MeasurePlan> parseMeasure(const QStringList& words, int& exitCode) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Measures with the simulated camera, or with --real with the machine's own: spots, areas, "
        "lines with their\nprofile, whole frames, once or again and again. Without a place the "
        "middle, the hottest and the coldest pixel.\nParameters that are not given are those of "
        "the camera's settings; simulated objects and air are as the\nparameters say."));
    addOptions(parser);
    exitCode = exitUsage;
    if (!parseWords(parser, words, QStringLiteral("measure"), exitCode))
        return std::nullopt;
    MeasurePlan plan;
    OptionReader options(parser);
    if (!parser.positionalArguments().isEmpty())
        options.wrong = QStringLiteral("measure takes options only, not '%1'")
                            .arg(parser.positionalArguments().constFirst());
    plan.real = options.has("real");
    plan.verbose = options.has("verbose");
    plan.camera.verbose = plan.verbose;
    if (options.has("json") && options.has("csv") && options.wrong.isEmpty())
        options.wrong = QStringLiteral("--json does not go with --csv");
    plan.format = options.has("json")  ? MeasurePlan::Format::json
                  : options.has("csv") ? MeasurePlan::Format::csv
                                       : MeasurePlan::Format::text;
    if (plan.real)
        refuseWithReal(options);
    takeParameters(options, plan);
    takeCameraAndSize(options, plan);
    takePlaces(parser, options.wrong, "spot", pixelOf, "X,Y", plan, plan.spots);
    takePlaces(parser, options.wrong, "area", spanOf, "X1,Y1,X2,Y2", plan, plan.areas);
    takePlaces(parser, options.wrong, "line", spanOf, "X1,Y1,X2,Y2", plan, plan.lines);
    takeFrames(parser, options, plan);
    takeTimes(options, plan);
    if (plan.spots.size() > mostSpots && options.wrong.isEmpty())
        options.wrong = QStringLiteral("the FPGA has room for %1 spots").arg(mostSpots);
    if (plan.areas.size() > mostAreas && options.wrong.isEmpty())
        options.wrong = QStringLiteral("the FPGA has room for %1 areas").arg(mostAreas);
    if (!options.wrong.isEmpty()) {
        complain(options.wrong);
        return std::nullopt;
    }
    for (Span& area : plan.areas)
        area = asArea(area);
    plan.hottest = options.has("hottest");
    plan.coldest = options.has("coldest");
    if (plan.spots.empty() && plan.areas.empty() && !plan.hottest && !plan.coldest &&
        !plan.needsFrame()) {
        plan.spots = {{plan.width / 2, plan.height / 2}};
        plan.hottest = plan.coldest = true;
    }
    return plan;
}

} // namespace irmcore::app::measuring
