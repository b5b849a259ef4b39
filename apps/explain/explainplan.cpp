#include "explainplan.h"

#include "../commands.h"
#include "../options.h"
#include "cameraoptions.h"

namespace irmcore::app {

namespace {

/// An option that takes a number.
struct NumberOption {
    const char* name;
    const char* unit;
    const char* help;
    double low;
    double high;
};

constexpr std::array plainNumbers{
    NumberOption{"ad", "count", "the count, as the FPGA delivers it", 0, 65535},
    NumberOption{"temperature", "celsius", "the count that an object of this temperature has", -60,
                 4000},
    NumberOption{"emissivity", "fraction", "emissivity of the object", 0.001, 1.0},
    NumberOption{"distance", "metres", "distance to it", 0, 100000},
    NumberOption{"humidity", "fraction", "relative humidity of the air", 0, 1},
    NumberOption{"air", "celsius", "temperature of the air", -100, 200},
    NumberOption{"reflected", "celsius", "temperature of what the object reflects", -273, 2000},
    NumberOption{"offset", "celsius", "what is added to every reading", -100, 100},
    NumberOption{"delta", "celsius", "drift correction, which is subtracted (0)", -1000, 1000},
    NumberOption{"shutter", "celsius", "temperature of the shutter (the reference)", -40, 100},
    NumberOption{"sensor", "celsius", "temperature of the sensor (the reference)", -40, 100},
};

/// Reads a number, if the option is there; false, with what is wrong in `wrong`.
template <typename Number>
bool take(const QCommandLineParser& parser, const NumberOption& number, QString& wrong,
          Number& into) {
    const QString name = QString::fromLatin1(number.name);
    if (!parser.isSet(name))
        return true;
    bool ok = false;
    const double value = parser.value(name).toDouble(&ok);
    if (!ok || !(value >= number.low && value <= number.high)) {
        wrong = QStringLiteral("--%1 takes a number from %2 to %3, not '%4'")
                    .arg(name)
                    .arg(number.low)
                    .arg(number.high)
                    .arg(parser.value(name));
        return false;
    }
    into = static_cast<typename Number::value_type>(value);
    return true;
}

QString takeNumbers(const QCommandLineParser& parser, ExplainPlan& plan) {
    QString wrong;
    std::optional<double> count;
    std::optional<float> delta;
    const bool taken = take(parser, plainNumbers[0], wrong, count) &&
                       take(parser, plainNumbers[1], wrong, plan.temperature) &&
                       take(parser, plainNumbers[2], wrong, plan.emissivity) &&
                       take(parser, plainNumbers[3], wrong, plan.distance) &&
                       take(parser, plainNumbers[4], wrong, plan.humidity) &&
                       take(parser, plainNumbers[5], wrong, plan.air) &&
                       take(parser, plainNumbers[6], wrong, plan.reflected) &&
                       take(parser, plainNumbers[7], wrong, plan.offset) &&
                       take(parser, plainNumbers[8], wrong, delta) &&
                       take(parser, plainNumbers[9], wrong, plan.camera.shutter) &&
                       take(parser, plainNumbers[10], wrong, plan.camera.sensor);
    if (!taken)
        return wrong;
    plan.delta = delta.value_or(0.0F);
    if (count.has_value() == plan.temperature.has_value())
        return QStringLiteral("explain takes either --ad or --temperature");
    if (count) {
        plan.ad = static_cast<unsigned>(*count);
        if (static_cast<double>(*plan.ad) != *count)
            return QStringLiteral("--ad takes a whole number, not '%1'")
                .arg(parser.value(QStringLiteral("ad")));
    }
    for (std::size_t i = 0; i < sources; ++i) {
        constexpr double mostWrong = 1000.0;
        const QByteArray name = QByteArray(sourceInfos[i].name) + "-error";
        std::optional<double> error;
        if (!take(parser, {name.constData(), "", "", 0.0, mostWrong}, wrong, error))
            return wrong;
        plan.errors[i] = error.value_or(sourceInfos[i].error);
    }
    return {};
}

} // namespace

std::optional<ExplainPlan> parseExplain(const QStringList& words, int& exitCode) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Takes one reading apart: what it is made of, in the library's own numbers, and what "
        "small errors would do to it.\nParameters that are not given come from the directory's "
        "Parameter/Setting."));
    for (const NumberOption& number : plainNumbers)
        parser.addOption(option(number.name, number.help, number.unit));
    addCameraOptions(parser);
    for (const SourceInfo& info : sourceInfos)
        parser.addOption({QString::fromLatin1(info.name) + QStringLiteral("-error"),
                          QStringLiteral("standard uncertainty of it (%1%2%3)")
                              .arg(info.error)
                              .arg(QLatin1String(*info.unit == '\0' ? "" : " "))
                              .arg(QString::fromUtf8(info.unit)),
                          QStringLiteral("error")});
    parser.addOptions({option("json", "one JSON object"),
                       option("verbose", "show the library's own lines on standard error"),
                       option("help", "this text")});
    exitCode = exitUsage;
    if (!parseWords(parser, words, QStringLiteral("explain"), exitCode))
        return std::nullopt;
    ExplainPlan plan;
    plan.json = parser.isSet(QStringLiteral("json"));
    plan.verbose = parser.isSet(QStringLiteral("verbose"));
    QString wrong;
    if (!parser.positionalArguments().isEmpty())
        wrong = QStringLiteral("explain takes options only, not '%1'")
                    .arg(parser.positionalArguments().constFirst());
    if (wrong.isEmpty())
        wrong = takeCamera(parser, plan.camera);
    if (wrong.isEmpty())
        wrong = takeNumbers(parser, plan);
    if (!wrong.isEmpty()) {
        complain(wrong);
        return std::nullopt;
    }
    return plan;
}

Parameters chosen(const ExplainPlan& plan, Parameters parameters) {
    TempSetup& setup = parameters.setup;
    setup.emiss = plan.emissivity.value_or(setup.emiss);
    setup.dist = plan.distance.value_or(setup.dist);
    setup.offset = plan.offset.value_or(setup.offset);
    parameters.humid = plan.humidity.value_or(parameters.humid);
    parameters.envTemp = plan.air.value_or(parameters.envTemp);
    parameters.reflecTemp = plan.reflected.value_or(parameters.reflecTemp);
    return parameters;
}

} // namespace irmcore::app
