// A host of the library, as the tests of `irmcore sim run` need one: it takes one reading at
// column 80, row 60 and prints it on standard error, where the library prints nothing.
#include "core/fpga.h"

#include <cstdio>
#include <unistd.h>

int main() {
    FPGA camera;
    camera.init();
    ::usleep(500000); // the core calibrates
    _fpga_point spot{80, 60};
    IrTempStru reading{};
    if (camera.getSpotTemp(0, 0, PARA_SYSTEM, TempSetup{}, spot, reading) != 0)
        return 1;
    std::fprintf(stderr, "%s %.2f\n", reading.status, static_cast<double>(reading.temp));
    return 0;
}
