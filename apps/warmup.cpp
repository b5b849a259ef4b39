#include "warmup.h"

#include "bench.h"
#include "conditions.h"
#include "driver.h"

#include <array>
#include <cmath>

namespace irmcore::app {

namespace {

using Targets = std::array<double, 4>;
constexpr Targets lowTargets{0.0, 37.0, 100.0, 140.0};
constexpr Targets highTargets{20.0, 100.0, 250.0, 380.0};

constexpr double warmUpEnd = 45.0; // °C inside
constexpr int batches = 3600;      // an hour: six time constants
constexpr double interval = 1.0;   // s between batches of readings

/// Targets side by side.
irmsim::Scene sceneOf(const Targets& targets) {
    irmsim::Scene scene = irmsim::Scene::uniform(160, 120, targets[0]);
    for (int i = 0; i < 4; ++i)
        scene.fill(40 * i, 0, 40 * i + 39, 119, targets[static_cast<std::size_t>(i)]);
    return scene;
}

/// Reads every target once and keeps the largest error.
void readTargets(Bench& bench, Course& course) {
    for (int i = 0; i < 4; ++i) {
        _fpga_point at{static_cast<std::uint16_t>(40 * i + 20), 60};
        IrTempStru value{};
        bench.host().getSpotTemp(0, 0, PARA_SYSTEM, {}, at, value);
        ++course.readings;
        const double truth = bench.camera().truthAt(at.x, at.y);
        if (!isOk(value) && value.status[1] != 'E') {
            ++course.lost;
            continue;
        }
        const double error = std::abs(static_cast<double>(value.temp) - truth);
        if (error > course.worst) {
            course.worst = error;
            course.worstAt = truth;
            const irmsim::Detector& detector = bench.camera().detector();
            course.worstInside = (detector.shutterTemp() + detector.sensorTemp()) / 2;
        }
    }
}

bool ready(const Bench& bench, QString& error) {
    error = bench.error();
    return error.isEmpty();
}

Course warmingUp(const char* what, const Conditions& conditions, const Habits& habits, double bound,
                 QString& error) {
    Course course;
    course.what = what;
    course.bound = bound;
    Bench bench(sceneOf(lowTargets), conditions.surroundings, 0);
    if (!ready(bench, error))
        return course;
    irmsim::Camera& camera = bench.camera();
    bench.host().init();
    Driver driver(bench.host(), camera, Habits{});
    driver.start();
    Driver careless(bench.host(), camera, habits);
    careless.calibrationRound();
    camera.warmUp(irmsim::WarmUp::inside(camera.detector().sensorTemp(), warmUpEnd));
    for (int batch = 0; batch < batches; ++batch) {
        careless.beforeReadings();
        readTargets(bench, course);
        camera.advance(interval);
    }
    course.rounds = careless.rounds();
    return course;
}

/// The camera at rest at an inside temperature, after one calibration round.
Course settledAt(int range, QString& error) {
    Course course;
    course.what =
        range == 0 ? "at rest, 5 to 55 °C inside, range 0" : "at rest, 5 to 55 °C inside, range 1";
    course.bound = range == 0 ? 0.25 : 0.30;
    Bench bench(sceneOf(range == 0 ? lowTargets : highTargets), easyConditions.surroundings, range);
    if (!ready(bench, error))
        return course;
    bench.host().init();
    Driver driver(bench.host(), bench.camera(), Habits{});
    driver.start();
    for (int inside = 5; inside <= 55; ++inside) {
        bench.camera().insideTemp(inside);
        driver.calibrationRound();
        driver.beforeReadings();
        readTargets(bench, course);
    }
    course.rounds = driver.rounds();
    return course;
}

/// All but one step of the pattern.
Habits without(bool Habits::*step) {
    Habits habits;
    habits.*step = false;
    return habits;
}

} // namespace

std::vector<Course> warmUp(QString& error) {
    struct Plan {
        const char* what;
        Conditions conditions;
        Habits habits;
        double bound; // °C
    };
    const Plan plans[] = {
        {"as documented, easy", easyConditions, {}, 0.30},
        {"as documented, hard", hardConditions, {}, 0.60},
        {"without updateDeltaTemp", easyConditions, without(&Habits::updatesDelta), 0.0},
        {"without updateShutterTemp", easyConditions, without(&Habits::updatesShutter), 0.0},
        {"without updateSensorTemp", easyConditions, without(&Habits::updatesSensor), 0.0},
        {"without the core's calibration", easyConditions, without(&Habits::calibrates), 0.0},
        {"readings during the round", easyConditions, without(&Habits::waitsForCore), 0.0},
    };
    std::vector<Course> courses;
    for (const Plan& plan : plans) {
        courses.push_back(warmingUp(plan.what, plan.conditions, plan.habits, plan.bound, error));
        if (!error.isEmpty())
            return {};
    }
    for (const int range : {0, 1}) {
        courses.push_back(settledAt(range, error));
        if (!error.isEmpty())
            return {};
    }
    return courses;
}

} // namespace irmcore::app
