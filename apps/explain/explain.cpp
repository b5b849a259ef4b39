#include "deliver.h"
#include "explainplan.h"
#include "explainreport.h"

namespace irmcore::app {

namespace {

/// The count to explain; nothing, with a text, when there is none.
std::optional<unsigned> countOf(const ExplainPlan& plan, OpenedCamera& camera,
                                const Parameters& parameters, QString& error) {
    if (plan.ad)
        return plan.ad;
    TempHandler handler(&camera.host());
    load(handler, parameters);
    const IrTempStru found = handler.irTemp2AD(*plan.temperature);
    if (isOk(found))
        return found.ad;
    error = QStringLiteral("%1 °C lies outside the calibration table (\"%2\")")
                .arg(static_cast<double>(*plan.temperature))
                .arg(QLatin1String(found.status));
    return std::nullopt;
}

int tell(const ExplainPlan& plan, std::FILE* out) {
    OpenedCamera camera(plan.camera);
    if (!camera.error().isEmpty()) {
        complain(camera.error());
        return exitErrors;
    }
    const Parameters parameters = chosen(plan, camera.parameters());
    QString error;
    const std::optional<unsigned> ad = countOf(plan, camera, parameters, error);
    if (!ad) {
        complain(error);
        return exitErrors;
    }
    Basis basis = camera.basis();
    basis.deltaTemp = plan.delta;
    const Explanation told{camera.range(),
                           camera.lens(),
                           camera.host().getModifyShutterTemp(),
                           camera.host().getModifyValue(),
                           basis,
                           parameters,
                           breakDown(basis, parameters, *ad),
                           airOf(parameters),
                           uncertaintyOf(basis, parameters, *ad, plan.errors)};
    (plan.json ? printExplanationJson : printExplanation)(out, told);
    return exitClean;
}

} // namespace

int runExplain(const QStringList& words) {
    int exitCode = exitUsage;
    const std::optional<ExplainPlan> plan = parseExplain(words, exitCode);
    if (!plan)
        return exitCode;
    return deliver(plan->verbose, [&plan](std::FILE* out) { return tell(*plan, out); });
}

} // namespace irmcore::app
