// Changes the measuring range, and follows a change of the lens.
#include <irmcore/fpga.h>

#include <QSettings>

#include <cstdio>
#include <unistd.h>

namespace {

constexpr useconds_t coreTime = 500000; // µs that the detector core takes for a command

void calibrate(FPGA& camera) {
    camera.insideShutter();
    usleep(coreTime);
    camera.updateSensorTemp(true);
    camera.updateShutterTemp(true);
}

/// The integration time that the camera's files give for a range.
unsigned short integrationTime(int range) {
    const QSettings file(QStringLiteral("Parameter/Setting"), QSettings::NativeFormat);
    const QString key = QStringLiteral("BiaoDing/IntTime%1").arg(range);
    return static_cast<unsigned short>(file.value(key, range == 0 ? 100 : 190).toUInt());
}

/// Switches to range 0 (-20 to 150 °C) or 1 (0 to 400 °C). False when it cannot be measured in.
bool changeRange(FPGA& camera, int range) {
    camera.changeTempRange(range, integrationTime(range)); // the detector core
    usleep(coreTime);                                      // room for one command only
    camera.setTempRange(range);                            // the calibration table
    camera.setTempRangeMinMax(range == 0 ? -20 : 0, range == 0 ? 150 : 400);
    if (camera.checkBiaoDingTab() != 0) // no file, no fallback, or counts that do not rise
        return false;
    calibrate(camera);
    return true;
}

/// Takes over the lens that is mounted now. False when there is none that is known.
bool followLens(FPGA& camera) {
    const int before = camera.getLenIndex();
    const int lens = camera.get_set_lenIndex(); // loads the table if it is another one
    if (lens < 0 || camera.checkBiaoDingTab() != 0)
        return false;
    if (lens != before)
        calibrate(camera);
    return true;
}

} // namespace

int main() {
    FPGA camera;
    unsigned short vsk = 0;
    if (camera.getSerialVSK(&vsk) != 0) { // a query: waits up to 20 s for an answer
        std::fputs("ranges: the detector core does not answer\n", stderr);
        return 1;
    }
    camera.init();
    usleep(coreTime);
    camera.autoShutter(false);
    usleep(coreTime);
    for (const int range : {1, 0}) {
        if (!followLens(camera) || !changeRange(camera, range)) {
            std::fprintf(stderr, "ranges: no table for lens %d in range %d\n", camera.getLenIndex(),
                         range);
            return 1;
        }
        _fpga_point middle{192, 144};
        IrTempStru reading{};
        if (camera.getSpotTemp(0, 0, PARA_SYSTEM, TempSetup{}, middle, reading) != 0) {
            std::fputs("ranges: the board does not take the position\n", stderr);
            return 1;
        }
        std::printf("range %d, lens %d: %-2s %.2f °C\n", range, camera.getLenIndex(),
                    reading.status, static_cast<double>(reading.temp));
    }
    return 0;
}
