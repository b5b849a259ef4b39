#include "residuals.h"

#include <QJsonDocument>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace irmcore::app::calibration {

void printLine(std::FILE* to, const QJsonObject& object) {
    std::fprintf(to, "%s\n", QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
}

double shortened(double value) { return std::round(value * 1e4) / 1e4; }

void printResiduals(std::FILE* to, const CalibrationTable& table, bool json) {
    if (!json)
        std::fprintf(to, "%10s %10s %7s %8s  %9s %8s  %9s %8s\n", "point °C", "raw AD", "points",
                     "scatter", "law AD", "law °C", "table AD", "table °C");
    double worst = 0.0;
    for (const Residual& r : table.residuals) {
        worst = std::max(worst, std::abs(r.reading));
        if (json)
            printLine(to, {{QStringLiteral("temperature"), shortened(r.celsius)},
                           {QStringLiteral("ad"), shortened(r.ad)},
                           {QStringLiteral("points"), r.points},
                           {QStringLiteral("scatter"), shortened(r.scatter)},
                           {QStringLiteral("lawAd"), shortened(r.fromLawAd)},
                           {QStringLiteral("law"), shortened(r.fromLaw)},
                           {QStringLiteral("tableAd"), shortened(r.readingAd)},
                           {QStringLiteral("table"), shortened(r.reading)}});
        else
            std::fprintf(to, "%9.2f %10.2f %7d %8.2f  %+9.2f %+7.3f  %+9.2f %+7.3f\n", r.celsius,
                         r.ad, r.points, r.scatter, r.fromLawAd, r.fromLaw, r.readingAd, r.reading);
    }
    if (json)
        return;
    QStringList guessed;
    for (const Entry& entry : table.entries)
        if (entry.extrapolated)
            guessed.append(QString::number(entry.celsius));
    std::fprintf(to,
                 "%zu entries, %d to %d °C; extrapolated: %s; largest reading error at a point "
                 "%.3f °C\n",
                 table.entries.size(), table.entries.front().celsius, table.entries.back().celsius,
                 guessed.isEmpty() ? "none" : guessed.join(QLatin1Char(' ')).toUtf8().constData(),
                 worst);
}

} // namespace irmcore::app::calibration
