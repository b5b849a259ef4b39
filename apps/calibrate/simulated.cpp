#include "simulated.h"

#include "../../core/range.h"
#include "../../sim/cameradir.h"
#include "../accuracy.h"
#include "../bench.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <limits>

namespace irmcore::app::calibration {

namespace {

constexpr double noise = 0.080; // °C of a pixel at 30 °C
constexpr int frames = 16;
constexpr int step = 10; // °C from point to point

/// A sample camera directory whose table of lens 0 in this range is `table`.
bool writeDirectory(const QString& directory, int range, const QByteArray& table, QString& error) {
    std::string why;
    if (!irmsim::writeCameraDirectory(QFile::encodeName(directory).toStdString(),
                                      irmsim::CameraDirectory{{}, range}, why)) {
        error = QString::fromLocal8Bit(why.c_str());
        return false;
    }
    QFile file(QDir(directory).filePath(QStringLiteral("etc/calc_len0_temp%1.conf").arg(range)));
    if (!file.open(QIODevice::WriteOnly) || file.write(table) != table.size() || !file.flush()) {
        error = QStringLiteral("cannot write %1: %2").arg(file.fileName(), file.errorString());
        return false;
    }
    return true;
}

} // namespace

std::vector<CalibrationPoint> simulatedPoints(int range, int lens, std::uint64_t seed) {
    irmsim::Detector detector;
    detector.setRange(range);
    detector.setLens(lens);
    detector.setTemperatures(detector.referenceTemp(), detector.referenceTemp());
    detector.calibrate();
    detector.setSurroundings({1.0, 0.0, 0.6, 25.0, 25.0});
    detector.setNoise(noise * (detector.counts(30.5) - detector.counts(29.5)), seed);
    const RangeLimits limits = limitsOfRange(range);
    std::vector<CalibrationPoint> points;
    std::uint64_t frame = 0;
    for (int celsius = limits.min; celsius <= limits.max; celsius += step) {
        double sum = 0.0;
        for (int i = 0; i < frames; ++i)
            sum += detector.raw(celsius, frame++, 0);
        points.push_back({static_cast<double>(celsius), sum / frames});
    }
    return points;
}

std::optional<Trial> tryTable(int range, std::uint64_t seed, QString& error) {
    Task task;
    task.points = simulatedPoints(range, 0, seed);
    task.range = range;
    const std::optional<CalibrationTable> table = makeTable(task, error);
    if (!table)
        return std::nullopt;
    const QTemporaryDir directory;
    if (!directory.isValid()) {
        error = directory.errorString();
        return std::nullopt;
    }
    if (!writeDirectory(directory.path(), range, fileOf(*table, task), error))
        return std::nullopt;
    Bench bench(directory.path(), rampOver(limitsOfRange(range)), {}, range);
    error = bench.error();
    if (!error.isEmpty())
        return std::nullopt;
    const irmsim::Scene& scene = bench.camera().scene();
    std::vector<unsigned short> counts(std::size_t{160} * 120);
    std::vector<float> celsius(counts.size());
    std::vector<unsigned char> status(counts.size());
    bench.host().fpga_read_IRAD(counts.data());
    bench.host().getFrameTemp(counts.data(), static_cast<int>(counts.size()), PARA_SYSTEM, {},
                              celsius.data(), status.data());
    Trial trial{seed, range, 0.0, 0.0, 0};
    for (std::size_t i = 0; i < counts.size(); ++i, ++trial.readings) {
        constexpr unsigned char low = 1;  // "L"
        constexpr unsigned char high = 4; // "H"
        const double truth = scene.at(trial.readings % 160, trial.readings / 160);
        const bool lost = status[i] == low || status[i] == high;
        const double off = lost ? std::numeric_limits<double>::infinity()
                                : std::abs(static_cast<double>(celsius[i]) - truth);
        if (off > trial.worst) {
            trial.worst = off;
            trial.worstAt = truth;
        }
    }
    return trial;
}

} // namespace irmcore::app::calibration
