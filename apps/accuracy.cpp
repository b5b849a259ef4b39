#include "accuracy.h"

#include "bench.h"
#include "conditions.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace irmcore::app {

namespace {

/// What the model gives between two whole counts, straight between their readings; NaN where one
/// of them is not "OK".
double readingOf(TempHandler& model, double counts) {
    const double below = std::floor(counts);
    const IrTempStru low = model.irAD2Temp(static_cast<unsigned int>(below));
    const IrTempStru high = model.irAD2Temp(static_cast<unsigned int>(below) + 1);
    if (!isOk(low) || !isOk(high))
        return std::nan("");
    const auto lowTemp = static_cast<double>(low.temp);
    return lowTemp + (static_cast<double>(high.temp) - lowTemp) * (counts - below);
}

/// A host's own model, to convert counts that no pixel has.
TempHandler modelOf(FPGA& host, const irmsim::Surroundings& surroundings,
                    const RangeLimits& limits) {
    TempHandler model(&host);
    model.setEnvTemp(static_cast<float>(surroundings.envTemp));
    model.setHumid(static_cast<float>(surroundings.humidity));
    model.setReflecTemp(static_cast<float>(surroundings.reflectedTemp));
    model.setTempSetup(host.getSystemTempSetup());
    model.setTempRangeMinMax(limits.min, limits.max);
    return model;
}

Accuracy sweepOne(Bench& bench, const Conditions& c, int range) {
    const RangeLimits limits = limitsOfRange(range);
    const irmsim::Scene& scene = bench.camera().scene();
    TempHandler model = modelOf(bench.host(), c.surroundings, limits);
    Accuracy result;
    result.conditions = c.name;
    result.range = range;
    result.bound = c.bound;
    for (int y = 0; y < scene.height(); ++y)
        for (int x = 0; x < scene.width(); ++x) {
            const double truth = scene.at(x, y);
            _fpga_point at{static_cast<std::uint16_t>(x), static_cast<std::uint16_t>(y)};
            IrTempStru value{};
            bench.host().getSpotTemp(0, 0, PARA_SYSTEM, {}, at, value);
            const double reading = static_cast<double>(value.temp);
            // A status other than "OK" is an error of its own, unless the reading lies on the edge.
            const bool usable =
                std::strcmp(value.status, "L") != 0 && std::strcmp(value.status, "H") != 0;
            const double error =
                usable ? std::abs(reading - truth) : std::numeric_limits<double>::infinity();
            if (error > result.worst) {
                result.worst = error;
                result.worstAt = truth;
            }
            const double unrounded = readingOf(model, bench.camera().detector().counts(truth));
            if (std::isfinite(unrounded) && usable) {
                result.calibration = std::max(result.calibration, std::abs(unrounded - truth));
                result.quantisation = std::max(result.quantisation, std::abs(reading - unrounded));
            }
            ++result.readings;
        }
    return result;
}

} // namespace

irmsim::Scene rampOver(const RangeLimits& limits) {
    irmsim::Scene scene = irmsim::Scene::uniform(160, 120, 0.0);
    const int pixels = scene.width() * scene.height();
    for (int i = 0; i < pixels; ++i)
        scene.set(i % scene.width(), i / scene.width(),
                  limits.min + (limits.max - limits.min) * (i + 0.5) / pixels);
    return scene;
}

std::vector<Accuracy> sweep(QString& error) {
    std::vector<Accuracy> results;
    for (const int range : {0, 1})
        for (const Conditions& c : {easyConditions, hardConditions}) {
            Bench bench(rampOver(limitsOfRange(range)), c.surroundings, range);
            if (!bench.error().isEmpty()) {
                error = bench.error();
                return {};
            }
            results.push_back(sweepOne(bench, c, range));
        }
    return results;
}

} // namespace irmcore::app
