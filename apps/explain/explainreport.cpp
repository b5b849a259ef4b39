#include "explainreport.h"

#include "../../measure/literal.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace irmcore::app {

namespace {

/// A line of the column: a value, formatted by `how`, its unit, and why it is there.
void line(std::FILE* to, const char* what, const char* how, double value, const char* unit,
          const QString& why) {
    const QByteArray number = QString::asprintf(how, value).toUtf8();
    std::fprintf(to, "  %-22s %12s %s%s%s\n", what, number.constData(), unit,
                 why.isEmpty() ? "" : "   ", why.toUtf8().constData());
}

void count(std::FILE* to, const char* what, const char* how, double value, const QString& why) {
    line(to, what, how, value, "AD", why);
}

void celsius(std::FILE* to, const char* what, const char* how, double value, const QString& why) {
    line(to, what, how, value, "°C", why);
}

QString segmentText(const Explanation& told) {
    const Breakdown& b = told.parts;
    const TempInfoTab& table = told.basis.table;
    if (b.table.place != Place::inside)
        return QString::asprintf("%s the table, whose counts go from %d to %d",
                                 b.table.place == Place::below ? "below" : "above", table.ad[0],
                                 table.ad[table.tempNum - 1]);
    return QString::asprintf("a black body's: between %d °C (%d AD) and %d °C (%d AD)",
                             table.temp[b.segment], table.ad[b.segment], table.temp[b.segment + 1],
                             table.ad[b.segment + 1]);
}

void printCount(std::FILE* to, const Explanation& told) {
    const Breakdown& b = told.parts;
    std::fputs("From the count to what the camera sees\n", to);
    count(to, "raw count", "%.0f", b.ad,
          QStringLiteral("from the FPGA, relative to the closed shutter's 32768"));
    count(to, "+ shutter term", "%+.0f", b.shift,
          QString::asprintf("the table's count of %.2f °C (modify factor %.4g x inside) less "
                            "32768: %.3f, cut",
                            static_cast<double>(told.shutterTemp),
                            static_cast<double>(told.modifyFactor),
                            static_cast<double>(b.shutterDelta)));
    count(to, "= corrected count", "%.0f", b.corrected,
          b.shift < 0 && b.corrected > b.ad ? QStringLiteral("below 0, which wraps around")
                                            : QStringLiteral("on the table's scale"));
    celsius(to, "table temperature", "%.4f", static_cast<double>(b.table.celsius),
            segmentText(told));
    if (b.table.place == Place::inside)
        celsius(to, "seen temperature", "%.4f", static_cast<double>(b.seen),
                QStringLiteral("the same radiation as a surface of 0.95 before 25 °C"));
}

void printObject(std::FILE* to, const Explanation& told) {
    const Breakdown& b = told.parts;
    const auto seen = static_cast<double>(b.seen);
    const double bright = literal::bodyCelsius(b.observed);
    const double unreflected = literal::bodyCelsius(b.observed - b.reflected);
    const Parameters& p = told.parameters;
    const auto percent = [&b](double power) { return 100.0 * power / b.observed; };
    std::fputs("\nFrom what it sees to the object\n", to);
    celsius(to, "seen temperature", "%.4f", seen, {});
    celsius(to, "+ what got lost", "%+.4f", bright - seen,
            QString::asprintf("emissivity %.4g x transmission %.6g of the object's arrives",
                              static_cast<double>(p.setup.emiss),
                              static_cast<double>(told.air.trans)));
    celsius(to, "+ reflected", "%+.4f", unreflected - bright,
            QString::asprintf("%.2f %% of what is seen: surroundings at %.4g °C",
                              percent(b.reflected), static_cast<double>(p.reflecTemp)));
    if (b.power < 0.0) {
        std::fprintf(to, "  %-22s %12s      it would have to be colder than absolute zero\n",
                     "= object", "none");
        return;
    }
    celsius(to, "+ air", "%+.4f", b.body - unreflected,
            QString::asprintf("%.2f %% of what is seen: the air at %.4g °C", percent(b.air),
                              static_cast<double>(p.envTemp)));
    celsius(to, "= object", "%.4f", b.body,
            QString::asprintf("%.2f %% of what is seen is its own", percent(b.power)));
    celsius(to, "+ offset", "%+.4f", static_cast<double>(b.offset), QStringLiteral("the user's"));
    celsius(to, "- delta temperature", "%+.4f", -static_cast<double>(b.deltaTemp),
            QStringLiteral("drift since the last calibration, taken off"));
    celsius(to, "= before the limits", "%.4f", b.celsius, {});
}

void printReading(std::FILE* to, const Explanation& told) {
    const Breakdown& b = told.parts;
    const Air& air = told.air;
    celsius(
        to, "reading", "%.4f", static_cast<double>(b.reading.temp),
        QString::asprintf("\"%s\": the range is %d to %d °C, \"LE\" and \"HE\" up to 2 °C outside",
                          b.reading.status, told.basis.limits.min, told.basis.limits.max));
    std::fprintf(to, "\nTransmission %.6f = water vapour %.6f x carbon dioxide %.6f\n",
                 static_cast<double>(air.trans), static_cast<double>(air.water),
                 static_cast<double>(air.carbonDioxide));
    std::fprintf(to,
                 "  air at %.4g °C, relative humidity %.3g, %.6g km: %.4g mm of precipitable "
                 "water\n",
                 static_cast<double>(told.parameters.envTemp),
                 static_cast<double>(told.parameters.humid), static_cast<double>(air.path),
                 static_cast<double>(air.precipitable));
}

void printUncertainty(std::FILE* to, const Uncertainty& uncertainty) {
    std::fputs("\nWhat small errors would do\n", to);
    for (std::size_t i = 0; i < sources; ++i)
        std::fprintf(to, "  %-12s %8.4g %s -> %8.4f °C\n", sourceInfos[i].name,
                     uncertainty.errors[i],
                     QString::fromUtf8(sourceInfos[i].unit).leftJustified(2).toUtf8().constData(),
                     uncertainty.effects[i]);
    std::fprintf(to, "  %-12s %11s -> %8.4f °C   %s\n", "combined", "", uncertainty.combined,
                 "root of the sum of squares, the errors being\n"
                 "                                            standard uncertainties "
                 "and independent of each other");
}

/// Numbers that are none are null.
QJsonValue number(double value) { return std::isfinite(value) ? QJsonValue(value) : QJsonValue(); }

QJsonValue number(float value) { return number(static_cast<double>(value)); }

QJsonValue entry(const TempInfoTab& table, int i) {
    return QJsonObject{{QStringLiteral("ad"), table.ad[i]},
                       {QStringLiteral("temperature"), table.temp[i]}};
}

QJsonObject uncertaintyJson(const Uncertainty& uncertainty) {
    QJsonArray terms;
    for (std::size_t i = 0; i < sources; ++i)
        terms.append(
            QJsonObject{{QStringLiteral("source"), QString::fromLatin1(sourceInfos[i].name)},
                        {QStringLiteral("unit"), QString::fromUtf8(sourceInfos[i].unit)},
                        {QStringLiteral("error"), number(uncertainty.errors[i])},
                        {QStringLiteral("effect"), number(uncertainty.effects[i])}});
    return {{QStringLiteral("terms"), terms},
            {QStringLiteral("combined"), number(uncertainty.combined)}};
}

} // namespace

void printExplanation(std::FILE* to, const Explanation& told) {
    const Breakdown& b = told.parts;
    std::fprintf(to, "Count %u, range %d, lens %d: %.2f °C, %s\n\n", b.ad, told.range, told.lens,
                 static_cast<double>(b.reading.temp), b.reading.status);
    printCount(to, told);
    if (b.table.place == Place::inside)
        printObject(to, told);
    printReading(to, told);
    if (!std::isnan(b.celsius))
        printUncertainty(to, told.uncertainty);
}

void printExplanationJson(std::FILE* to, const Explanation& told) {
    const Breakdown& b = told.parts;
    const TempInfoTab& table = told.basis.table;
    const bool inside = b.table.place == Place::inside;
    const QJsonArray segment =
        inside ? QJsonArray{entry(table, b.segment), entry(table, b.segment + 1)} : QJsonArray{};
    const QJsonObject object{
        {QStringLiteral("range"), told.range},
        {QStringLiteral("lens"), told.lens},
        {QStringLiteral("ad"), static_cast<int>(b.ad)},
        {QStringLiteral("shutterTemperature"), number(told.shutterTemp)},
        {QStringLiteral("modifyFactor"), number(told.modifyFactor)},
        {QStringLiteral("shutterTerm"), number(b.shutterDelta)},
        {QStringLiteral("shutterTermCut"), b.shift},
        {QStringLiteral("correctedAd"), static_cast<qint64>(b.corrected)},
        {QStringLiteral("segment"), segment},
        {QStringLiteral("tableTemperature"), number(b.table.celsius)},
        {QStringLiteral("seenTemperature"), number(b.seen)},
        {QStringLiteral("emissivity"), number(told.parameters.setup.emiss)},
        {QStringLiteral("distance"), number(told.parameters.setup.dist)},
        {QStringLiteral("humidity"), number(told.parameters.humid)},
        {QStringLiteral("airTemperature"), number(told.parameters.envTemp)},
        {QStringLiteral("reflectedTemperature"), number(told.parameters.reflecTemp)},
        {QStringLiteral("transmission"), number(told.air.trans)},
        {QStringLiteral("waterVapour"), number(told.air.water)},
        {QStringLiteral("precipitableWater"), number(told.air.precipitable)},
        {QStringLiteral("carbonDioxide"), number(told.air.carbonDioxide)},
        {QStringLiteral("path"), number(told.air.path)},
        {QStringLiteral("observed"), number(b.observed)},
        {QStringLiteral("reflected"), number(b.reflected)},
        {QStringLiteral("air"), number(b.air)},
        {QStringLiteral("object"), number(b.power)},
        {QStringLiteral("objectTemperature"), number(b.body)},
        {QStringLiteral("offset"), number(b.offset)},
        {QStringLiteral("deltaTemperature"), number(b.deltaTemp)},
        {QStringLiteral("beforeLimits"), number(b.celsius)},
        {QStringLiteral("limits"), QJsonArray{told.basis.limits.min, told.basis.limits.max}},
        {QStringLiteral("status"), QString::fromLatin1(b.reading.status)},
        {QStringLiteral("temperature"), number(b.reading.temp)},
        {QStringLiteral("uncertainty"), uncertaintyJson(told.uncertainty)}};
    std::fprintf(to, "%s\n", QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
}

} // namespace irmcore::app
