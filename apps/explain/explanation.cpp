#include "explanation.h"

#include "../../core/truncate.h"
#include "../../measure/transmission.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace irmcore::app {

namespace {

/// A reading's circumstances, any of which may be moved.
struct Case {
    Basis basis;
    Parameters parameters;
    double ad;
};

/// Between which values a source can be moved.
struct Bounds {
    double low;
    double high;
};

constexpr double farthest = 1e9;

/// What the library takes: see `TempHandler::setTempSetup`. It takes any humidity.
Bounds boundsOf(Source source) {
    switch (source) {
    case Source::emissivity:
        return {0.001, 1.0};
    case Source::distance:
        return {0.0, 100000.0};
    case Source::humidity:
        return {0.0, 1.0};
    case Source::offset:
        return {-100.0, 100.0};
    case Source::noise:
        return {0.0, 65535.0};
    case Source::air:
    case Source::reflected:
    case Source::delta:
        break;
    }
    return {-farthest, farthest};
}

double valueOf(const Case& at, Source source) {
    switch (source) {
    case Source::emissivity:
        return static_cast<double>(at.parameters.setup.emiss);
    case Source::distance:
        return static_cast<double>(at.parameters.setup.dist);
    case Source::humidity:
        return static_cast<double>(at.parameters.humid);
    case Source::air:
        return static_cast<double>(at.parameters.envTemp);
    case Source::reflected:
        return static_cast<double>(at.parameters.reflecTemp);
    case Source::offset:
        return static_cast<double>(at.parameters.setup.offset);
    case Source::delta:
        return static_cast<double>(at.basis.deltaTemp);
    case Source::noise:
        break;
    }
    return at.ad;
}

Case with(Case at, Source source, double value) {
    const auto single = static_cast<float>(value);
    switch (source) {
    case Source::emissivity:
        at.parameters.setup.emiss = single;
        break;
    case Source::distance:
        at.parameters.setup.dist = single;
        break;
    case Source::humidity:
        at.parameters.humid = single;
        break;
    case Source::air:
        at.parameters.envTemp = single;
        break;
    case Source::reflected:
        at.parameters.reflecTemp = single;
        break;
    case Source::offset:
        at.parameters.setup.offset = single;
        break;
    case Source::delta:
        at.basis.deltaTemp = single;
        break;
    case Source::noise:
        at.ad = value;
        break;
    }
    return at;
}

double celsiusOf(const Case& at) {
    return breakDown(at.basis, at.parameters, truncateToUnsigned(at.ad)).celsius;
}

/// A source's value, and the temperature there.
struct Point {
    double value;
    double celsius;
};

double effectOf(const Case& at, Source source, double error) {
    if (error == 0.0)
        return 0.0;
    // Counts are whole ones.
    const double step = source == Source::noise ? std::ceil(error) : error;
    const Bounds bounds = boundsOf(source);
    const double here = valueOf(at, source);
    const auto pointAt = [&](double value) {
        const Case moved = with(at, source, value);
        return Point{valueOf(moved, source), celsiusOf(moved)};
    };
    const Point middle = pointAt(here);
    Point low = pointAt(std::max(std::min(here, bounds.low), here - step));
    Point high = pointAt(std::min(std::max(here, bounds.high), here + step));
    low = std::isnan(low.celsius) ? middle : low;
    high = std::isnan(high.celsius) ? middle : high;
    return std::abs((high.celsius - low.celsius) / (high.value - low.value)) * error;
}

} // namespace

bool load(TempHandler& handler, const Parameters& parameters) {
    const bool taken = handler.setTempSetup(parameters.setup) == 1;
    handler.setEnvTemp(parameters.envTemp);
    handler.setHumid(parameters.humid);
    handler.setReflecTemp(parameters.reflecTemp);
    return taken;
}

Model modelOf(const Parameters& parameters, const RangeLimits& limits) {
    TempHandler handler(nullptr);
    load(handler, parameters);
    const TempSetup setup = handler.getTempSetup();
    return {setup.emiss,        setup.offset, parameters.envTemp, parameters.reflecTemp,
            handler.getTrans(), limits.min,   limits.max,         false};
}

Breakdown breakDown(const Basis& basis, const Parameters& parameters, unsigned int ad) {
    return irmcore::breakDown(modelOf(parameters, basis.limits), basis.table, basis.shutterDelta,
                              basis.deltaTemp, ad);
}

Uncertainty uncertaintyOf(const Basis& basis, const Parameters& parameters, unsigned int ad,
                          const std::array<double, sources>& errors) {
    const Case at{basis, parameters, static_cast<double>(ad)};
    Uncertainty result;
    result.errors = errors;
    double squares = 0.0;
    for (std::size_t i = 0; i < sources; ++i) {
        result.effects[i] = effectOf(at, sourceInfos[i].source, errors[i]);
        squares += result.effects[i] * result.effects[i];
    }
    result.combined = std::sqrt(squares);
    return result;
}

Air airOf(const Parameters& parameters) {
    const int metres = truncateToInt(static_cast<double>(parameters.setup.dist));
    CalcTrans model;
    Air air{};
    air.trans = model.getTrans(parameters.envTemp, parameters.humid, metres);
    air.precipitable = precipitableWater(parameters.envTemp, parameters.humid, metres);
    air.path = carbonDioxidePath(metres);
    air.water = model.calcH2OTrans(air.precipitable);
    air.carbonDioxide = model.calcCO2Trans(air.path);
    return air;
}

} // namespace irmcore::app
