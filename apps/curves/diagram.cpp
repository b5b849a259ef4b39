#include "diagram.h"

#include "../../calib/modify.h"
#include "../../measure/tablelookup.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>

namespace irmcore::app {

namespace {

QString text(const char* utf8) { return QString::fromUtf8(utf8); }

QString titleOf(const char* what, const OpenedCamera& camera) {
    return QString::asprintf("%s, lens %d, range %d", what, camera.lens(), camera.range());
}

/// The table's temperatures over its counts, as a black body's and as reported.
Diagram tableDiagram(OpenedCamera& camera) {
    constexpr int steps = 8; // from entry to entry
    const TempInfoTab table = camera.basis().table;
    Diagram diagram{titleOf("Calibration table", camera),
                    text("count / AD"),
                    text("temperature / °C"),
                    {},
                    {},
                    {{text("black body"), {}}, {text("surface of 0.95 before 25 °C"), {}}}};
    const auto add = [&](int ad) {
        const TableTemp found = findTemp(table, static_cast<unsigned>(ad));
        if (found.place != Place::inside)
            return;
        diagram.x.push_back(ad);
        diagram.curves[0].values.push_back(static_cast<double>(found.celsius));
        diagram.curves[1].values.push_back(static_cast<double>(fromTable(found.celsius)));
    };
    const int last = std::min<int>(table.tempNum, tableCapacity) - 1;
    for (int i = 0; i < last; ++i)
        for (int k = 0; k < steps; ++k)
            add(table.ad[i] + (table.ad[i + 1] - table.ad[i]) * k / steps);
    add(table.ad[last]);
    return diagram;
}

/// Counts per degree over the measuring range, and degrees per count.
Diagram slopeDiagram(OpenedCamera& camera) {
    const Basis basis = camera.basis();
    Diagram diagram{
        titleOf("Counts per degree", camera),
        text("reported temperature / °C"),
        text("slope / (AD/°C)"),
        text("resolution / (°C/AD)"),
        {},
        {{text("counts per degree"), {}}, {text("degrees per count (right)"), {}, true}}};
    for (int celsius = basis.limits.min; celsius <= basis.limits.max; ++celsius) {
        const auto middle = static_cast<float>(celsius);
        const auto slope = static_cast<double>(tableDeltaAd(basis.table, middle + 0.5F) -
                                               tableDeltaAd(basis.table, middle - 0.5F));
        diagram.x.push_back(celsius);
        diagram.curves[0].values.push_back(slope);
        diagram.curves[1].values.push_back(1.0 / slope);
    }
    return diagram;
}

/// How far a shutter update moves the table's entries at several inside temperatures.
Diagram driftDiagram(OpenedCamera& camera) {
    constexpr std::array insides{0, 10, 20, 30, 40, 50}; // °C
    Diagram diagram{titleOf("Drift correction", camera),
                    text("table temperature / °C"),
                    text("correction of the count / AD"),
                    {},
                    {},
                    {}};
    const TempInfoTab stored = camera.stored();
    const int entries = std::min<int>(stored.tempNum, tableCapacity);
    for (int i = 0; i < entries; ++i)
        diagram.x.push_back(stored.temp[i]);
    for (const int inside : insides) {
        const TempInfoTab moved = camera.warmedTo(inside);
        Curve curve{QString::asprintf("%d °C inside", inside), {}};
        for (int i = 0; i < entries; ++i)
            curve.values.push_back(moved.ad[i] - stored.ad[i]);
        diagram.curves.push_back(std::move(curve));
    }
    return diagram;
}

/// The modify factors, and what they do to the shutter temperature.
Diagram modifyDiagram(OpenedCamera& camera) {
    Diagram diagram{titleOf("Modify factors", camera),
                    text("inside temperature / °C"),
                    text("modify factor"),
                    text("correction of the shutter temperature / °C"),
                    {},
                    {{text("factor"), {}}, {text("correction (right)"), {}, true}}};
    for (int k = 0; k < modifyEntries; ++k) {
        const auto inside = static_cast<float>(modifyTemp(k));
        diagram.x.push_back(modifyTemp(k));
        diagram.curves[0].values.push_back(static_cast<double>(s_modify[k]));
        diagram.curves[1].values.push_back(static_cast<double>(s_modify[k] * inside - inside));
    }
    return diagram;
}

/// Transmission over the distance, for several humidities.
Diagram transmissionDiagram(OpenedCamera& camera) {
    constexpr std::array humidities{0.2F, 0.4F, 0.6F, 0.8F, 1.0F};
    constexpr int farthest = 1000; // m
    constexpr int step = 10;
    Parameters parameters = camera.parameters();
    Diagram diagram{QString::asprintf("Transmission of air at %.4g °C",
                                      static_cast<double>(parameters.envTemp)),
                    text("distance / m"),
                    text("transmission"),
                    {},
                    {},
                    {}};
    for (int metres = 0; metres <= farthest; metres += step)
        diagram.x.push_back(metres);
    for (const float humidity : humidities) {
        Curve curve{QString::asprintf("humidity %.1f", static_cast<double>(humidity)), {}};
        parameters.humid = humidity;
        for (const double metres : diagram.x) {
            parameters.setup.dist = static_cast<float>(metres);
            curve.values.push_back(static_cast<double>(airOf(parameters).trans));
        }
        diagram.curves.push_back(std::move(curve));
    }
    return diagram;
}

} // namespace

const std::vector<DiagramKind>& diagramKinds() {
    static const std::vector<DiagramKind> kinds{
        {"table", "the calibration table", tableDiagram},
        {"slope", "counts per degree, and degrees per count", slopeDiagram},
        {"drift", "the correction of the table at several inside temperatures", driftDiagram},
        {"modify", "the Modify factors", modifyDiagram},
        {"transmission", "transmission over the distance for several humidities",
         transmissionDiagram}};
    return kinds;
}

void printCsv(std::FILE* to, const Diagram& diagram) {
    QStringList names{diagram.xTitle};
    for (const Curve& curve : diagram.curves)
        names.append(curve.name);
    std::fprintf(to, "%s\n", names.join(QLatin1Char(',')).toUtf8().constData());
    for (std::size_t i = 0; i < diagram.x.size(); ++i) {
        std::fprintf(to, "%.9g", diagram.x[i]);
        for (const Curve& curve : diagram.curves)
            std::fprintf(to, ",%s",
                         std::isfinite(curve.values[i])
                             ? QByteArray::number(curve.values[i], 'g', 9).constData()
                             : "");
        std::fputc('\n', to);
    }
}

} // namespace irmcore::app
