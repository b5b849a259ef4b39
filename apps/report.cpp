#include "report.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace irmcore::app {

namespace {

void printLine(std::FILE* to, const QJsonObject& object) {
    const QByteArray line = QJsonDocument(object).toJson(QJsonDocument::Compact);
    std::fprintf(to, "%s\n", line.constData());
}

/// Four decimals: a reading has no more to say, and a float's digits would only look like it.
double shortened(double celsius) { return std::round(celsius * 1e4) / 1e4; }

QJsonValue place(int coordinate) { return coordinate < 0 ? QJsonValue() : QJsonValue(coordinate); }

} // namespace

void printTable(std::FILE* to, const std::vector<Reading>& readings, const RangeLimits& range,
                double bound) {
    std::fprintf(to, "%-22s %9s %6s  %-6s %10s %10s %8s\n", "what", "at", "AD", "status",
                 "reading °C", "truth °C", "error");
    for (const Reading& r : readings) {
        char at[24] = "";
        if (r.x >= 0)
            std::snprintf(at, sizeof(at), "%d,%d", r.x, r.y);
        const double error = static_cast<double>(r.value.temp) - r.truth;
        std::fprintf(to, "%-22s %9s %6d  %-6s %10.2f %10.2f %+8.2f  %s%s\n", r.what.c_str(), at,
                     r.value.ad, r.value.status, static_cast<double>(r.value.temp), r.truth, error,
                     isRight(r, range, bound) ? "" : "WRONG ", r.note.c_str());
    }
}

void printJson(std::FILE* to, const std::vector<Reading>& readings) {
    for (const Reading& r : readings)
        printLine(to,
                  {{QStringLiteral("what"), QString::fromStdString(r.what)},
                   {QStringLiteral("x"), place(r.x)},
                   {QStringLiteral("y"), place(r.y)},
                   {QStringLiteral("ad"), r.value.ad},
                   {QStringLiteral("status"), QString::fromLatin1(r.value.status)},
                   {QStringLiteral("temperature"), shortened(static_cast<double>(r.value.temp))},
                   {QStringLiteral("truth"), shortened(r.truth)}});
}

void printTable(std::FILE* to, const std::vector<Accuracy>& sweeps) {
    std::fprintf(to,
                 "Largest error in °C over a whole range, inside temperature at its reference\n"
                 "%5s %9s  %9s %9s %12s %13s %7s  %s\n",
                 "range", "readings", "at °C", "error", "calibration", "quantisation", "bound",
                 "conditions");
    for (const Accuracy& a : sweeps)
        std::fprintf(to, "%5d %9d  %9.2f %9.3f %12.3f %13.3f %7.2f  %s%s\n", a.range, a.readings,
                     a.worstAt, a.worst, a.calibration, a.quantisation, a.bound,
                     keepsBound(a) ? "" : "WRONG ", a.conditions.c_str());
}

void printJson(std::FILE* to, const std::vector<Accuracy>& sweeps) {
    for (const Accuracy& a : sweeps)
        printLine(to, {{QStringLiteral("conditions"), QString::fromStdString(a.conditions)},
                       {QStringLiteral("range"), a.range},
                       {QStringLiteral("worst"), shortened(a.worst)},
                       {QStringLiteral("worstAt"), shortened(a.worstAt)},
                       {QStringLiteral("calibration"), shortened(a.calibration)},
                       {QStringLiteral("quantisation"), shortened(a.quantisation)},
                       {QStringLiteral("bound"), a.bound},
                       {QStringLiteral("readings"), a.readings}});
}

void printTable(std::FILE* to, const std::vector<Course>& courses) {
    std::fprintf(to,
                 "Largest error in °C while the camera warms up from 26.5 to 45 °C inside\n"
                 "%-36s %8s %6s %7s %7s  %9s %9s %7s\n",
                 "course", "readings", "lost", "rounds", "error", "target °C", "inside °C",
                 "bound");
    for (const Course& c : courses) {
        char bound[16] = "";
        if (c.bound > 0.0)
            std::snprintf(bound, sizeof(bound), "%.2f", c.bound);
        std::fprintf(to, "%-36s %8d %6d %7d %7.2f  %9.2f %9.2f %7s%s\n", c.what.c_str(), c.readings,
                     c.lost, c.rounds, c.worst, c.worstAt, c.worstInside, bound,
                     keepsBound(c) ? "" : "  WRONG");
    }
}

void printJson(std::FILE* to, const std::vector<Course>& courses) {
    for (const Course& c : courses)
        printLine(to,
                  {{QStringLiteral("what"), QString::fromStdString(c.what)},
                   {QStringLiteral("worst"), shortened(c.worst)},
                   {QStringLiteral("worstAt"), shortened(c.worstAt)},
                   {QStringLiteral("worstInside"), shortened(c.worstInside)},
                   {QStringLiteral("bound"), c.bound > 0.0 ? QJsonValue(c.bound) : QJsonValue()},
                   {QStringLiteral("readings"), c.readings},
                   {QStringLiteral("lost"), c.lost},
                   {QStringLiteral("rounds"), c.rounds}});
}

} // namespace irmcore::app
