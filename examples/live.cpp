// A live loop: frames, readings that stay right while the camera warms up, and the automatic
// window. Usage: live [FRAMES]
#include <irmcore/fpga.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

constexpr useconds_t coreTime = 500000; // µs that the detector core takes for a command
constexpr double longestWait = 180.0;   // s between calibrations
constexpr double frameTime = 1.0 / 9;   // s

long number(const char* text) {
    char* end = nullptr; // where what is no number begins
    const long value = std::strtol(text, &end, 10);
    return *end == '\0' ? value : 0;
}

float sensorTemp(FPGA& camera) {
    float celsius = 0.0F;
    camera.fpga_read_sensorTemp(&celsius);
    return celsius;
}

/// When the camera was last calibrated.
struct Calibration {
    float sensor = 0.0F;  // °C
    double seconds = 0.0; // since then

    bool isDue(float now) const {
        return std::fabs(now - sensor) >= 0.2F || (now < 31.0F) != (sensor < 31.0F) ||
               seconds >= longestWait;
    }
    void run(FPGA& camera) {
        camera.insideShutter();
        usleep(coreTime); // the picture shows the shutter
        camera.updateSensorTemp(true);
        camera.updateShutterTemp(true);
        *this = {sensorTemp(camera), 0.0};
    }
};

} // namespace

int main(int argc, char** argv) {
    const long frames = argc > 1 ? number(argv[1]) : 20;
    if (frames < 1) {
        std::fputs("usage: live [FRAMES]\n", stderr);
        return 3;
    }
    FPGA camera;
    camera.init();
    usleep(coreTime);
    camera.autoShutter(false); // a calibration that the host does not see would spoil the drift
    usleep(coreTime);
    Calibration calibration;
    calibration.run(camera);

    for (long frame = 0; frame < frames; ++frame) {
        if (calibration.isDue(sensorTemp(camera)))
            calibration.run(camera);
        camera.updateDeltaTemp();                   // the drift since then
        camera.calcLevelSpan(LEVELSPAN_AUTO, true); // colours follow the scene
        _fpga_point hottest{};
        IrTempStru reading{};
        if (camera.getSpotTemp(0, 1, PARA_SYSTEM, TempSetup{}, hottest, reading) != 0) {
            std::fputs("live: the board does not answer\n", stderr);
            return 1;
        }
        std::printf("%3ld  hottest %3d,%3d  %-2s %7.2f °C\n", frame, hottest.x, hottest.y,
                    reading.status, static_cast<double>(reading.temp));
        usleep(static_cast<useconds_t>(frameTime * 1e6));
        calibration.seconds += frameTime;
    }
    return 0;
}
