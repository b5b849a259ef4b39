#include "accuracy.h"
#include "bench.h"
#include "commands.h"
#include "demoplan.h"
#include "pictures.h"
#include "report.h"
#include "results.h"
#include "scenereadings.h"
#include "warmup.h"

#include <algorithm>

namespace irmcore::app {

namespace {

/// How far readings may be off, in °C: what the table's steps and whole counts cost at emissivity
/// 0.95 and 5 m, and more where less of the object's radiation reaches the detector.
double boundFor(const irmsim::Detector& detector) {
    constexpr double easiest = 0.20;
    constexpr double easiestShare = 0.95 * 0.998465; // emissivity and transmission
    const double share = detector.surroundings().emissivity * detector.transmission();
    return easiest * std::max(1.0, easiestShare / share);
}

int measure(const DemoPlan& plan, std::FILE* out) {
    Bench bench(plan.scene, plan.surroundings, plan.range);
    if (!bench.error().isEmpty()) {
        complain(bench.error());
        return exitErrors;
    }
    const std::vector<Reading> readings = measureScene(bench);
    const RangeLimits range = limitsOfRange(plan.range);
    const double bound = boundFor(bench.camera().detector());
    const auto wrong = std::count_if(readings.begin(), readings.end(),
                                     [&](const Reading& r) { return !isRight(r, range, bound); });
    if (plan.json) {
        printJson(out, readings);
    } else {
        std::fprintf(out, "Scene %dx%d, %.1f to %.1f °C, range %d (%d to %d °C)\n",
                     plan.scene.width(), plan.scene.height(), plan.scene.min(), plan.scene.max(),
                     plan.range, range.min, range.max);
        printTable(out, readings, range, bound);
        std::fprintf(out, "%zu readings, %td outside the bound of %.2f °C\n", readings.size(),
                     static_cast<std::ptrdiff_t>(wrong), bound);
    }
    return wrong == 0 ? exitClean : exitErrors;
}

/// Prints the rows that `make` gives; clean when each of them is `right`.
template <typename Row>
int show(const DemoPlan& plan, std::FILE* out, std::vector<Row> (*make)(QString&),
         bool (*right)(const Row&)) {
    QString error;
    const std::vector<Row> rows = make(error);
    if (!error.isEmpty()) {
        complain(error);
        return exitErrors;
    }
    if (plan.json)
        printJson(out, rows);
    else
        printTable(out, rows);
    return std::all_of(rows.begin(), rows.end(), right) ? exitClean : exitErrors;
}

int carryOut(const DemoPlan& plan, std::FILE* out) {
    if (plan.picture)
        return drawDemo(plan, out);
    if (plan.accuracy)
        return show<Accuracy>(plan, out, sweep, keepsBound);
    if (plan.warmUp)
        return show<Course>(plan, out, warmUp, keepsBound);
    return measure(plan, out);
}

} // namespace

int runDemo(const QStringList& words) {
    int exitCode = exitUsage;
    const std::optional<DemoPlan> plan = parseDemo(words, exitCode);
    if (!plan)
        return exitCode;
    const Results results(plan->verbose);
    if (results.stream() == nullptr) {
        complain(QStringLiteral("standard output cannot be kept"));
        return exitErrors;
    }
    exitCode = carryOut(*plan, results.stream());
    if (!results.delivered()) {
        complain(QStringLiteral("the results could not be written"));
        return exitErrors;
    }
    return exitCode;
}

} // namespace irmcore::app
