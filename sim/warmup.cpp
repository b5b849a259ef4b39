#include "warmup.h"

#include <cmath>

namespace irmsim {

namespace {

double along(double start, double end, double seconds, double timeConstant) {
    const double left = timeConstant > 0 ? std::exp(-seconds / timeConstant) : 0.0;
    return end + (start - end) * left;
}

} // namespace

double WarmUp::shutterAt(double seconds) const {
    return along(shutterStart, shutterEnd, seconds, timeConstant);
}

double WarmUp::sensorAt(double seconds) const {
    return along(sensorStart, sensorEnd, seconds, timeConstant);
}

} // namespace irmsim
