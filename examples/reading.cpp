// One reading: the temperature at the middle of the picture.
#include <irmcore/fpga.h>

#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace {

constexpr useconds_t coreTime = 500000; // µs that the detector core takes for a command

/// Whether the board answers: its version text has 15 bytes.
bool boardAnswers(FPGA& camera) {
    char version[15];
    return camera.fpga_get_version(version) == sizeof version;
}

} // namespace

int main() {
    FPGA camera; // opens the devices, loads the tables below the working directory
    if (!boardAnswers(camera)) {
        std::fputs("reading: no camera\n", stderr);
        return 1;
    }
    if (camera.checkBiaoDingTab() != 0) {
        std::fputs("reading: no usable calibration table below etc/\n", stderr);
        return 1;
    }
    camera.init();
    usleep(coreTime); // the core takes one command at a time
    camera.insideShutter();
    usleep(coreTime);
    camera.updateSensorTemp(true); // the temperatures that belong to this calibration
    camera.updateShutterTemp(true);

    _fpga_point middle{192, 144};
    IrTempStru reading{};
    if (camera.getSpotTemp(0, 0, PARA_SYSTEM, TempSetup{}, middle, reading) != 0) {
        std::fputs("reading: the board does not take the position\n", stderr);
        return 1;
    }
    if (std::strcmp(reading.status, "OK") != 0) {
        std::fprintf(stderr, "reading: outside what can be measured (%s)\n", reading.status);
        return 1;
    }
    std::printf("%.2f °C\n", static_cast<double>(reading.temp));
    return 0;
}
