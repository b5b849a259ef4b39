// The self-test entry of the library. It stands alone in its file: a program that links the
// library must bring a `main` of its own, or it runs this one.
#include "selftest.h"

#include <cstdio>
#include <fcntl.h>

void readSpotTemp(int) {}

void serialTest(Serial*) {}

[[gnu::visibility("default")]] int main(int argc, char** argv) {
    if (argc > 1) {
        unsigned int value = 0;
        if (argv != nullptr && argv[1] != nullptr)
            std::sscanf(argv[1], "%x", &value); // NOLINT(cert-err34-c): the value is not used
        ::open("/dev/DM365-FPGA", O_RDWR);
    }
    return 0;
}
