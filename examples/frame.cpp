// A whole frame in degrees: the mean of every cell of 12 x 8, and how many pixels cannot be relied
// on.
#include <irmcore/fpga.h>

#include <cstddef>
#include <cstdio>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::size_t width = 384;
constexpr std::size_t height = 288;
constexpr std::size_t columns = 12;
constexpr std::size_t rows = 8;
constexpr useconds_t coreTime = 500000; // µs that the detector core takes for a command

} // namespace

int main() {
    FPGA camera;
    char version[15];
    if (camera.fpga_get_version(version) != sizeof version) {
        std::fputs("frame: no camera\n", stderr);
        return 1;
    }
    camera.init();
    usleep(coreTime);
    camera.insideShutter();
    usleep(coreTime);
    camera.updateSensorTemp(true);
    camera.updateShutterTemp(true);

    std::vector<unsigned short> counts(width * height);
    std::vector<float> temps(counts.size());
    std::vector<unsigned char> status(counts.size()); // 0 is "OK"
    if (camera.fpga_read_IRAD_384(counts.data()) != 0 ||
        camera.getFrameTemp(counts.data(), static_cast<int>(counts.size()), PARA_SYSTEM,
                            TempSetup{}, temps.data(), status.data()) != 0)
        return 1;

    int unreliable = 0;
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t column = 0; column < columns; ++column) {
            double sum = 0.0;
            int pixels = 0;
            for (std::size_t y = row * height / rows; y < (row + 1) * height / rows; ++y)
                for (std::size_t x = column * width / columns; x < (column + 1) * width / columns;
                     ++x) {
                    const std::size_t at = y * width + x;
                    if (status[at] == 0) {
                        sum += static_cast<double>(temps[at]);
                        ++pixels;
                    } else {
                        ++unreliable;
                    }
                }
            std::printf("%7.2f", pixels > 0 ? sum / pixels : 0.0);
        }
        std::printf("\n");
    }
    std::printf("%d pixels outside the range\n", unreliable);
    return 0;
}
