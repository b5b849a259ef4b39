// What readings, frames, queries, the picture and the link take, each against a yardstick from the
// same run:
//
//     irmcore-corebench [--benchmark_filter=REGEX ...]
//
// The yardsticks are the prescribed calculation, compiled in here, the bare system calls that an
// operation makes on the same descriptor, or `memcpy` of the results. The two take turns; `library`
// and `yardstick` are their median times in microseconds a call, `ratio` is the quotient. All that
// they touch is warm. The devices are a file in memory and a pty, see desk.h.
#include "bench.h"
#include "desk.h"
#include "samplemodel.h"
#include "turns.h"

#include <filesystem>
#include <memory>
#include <string>

namespace {

using namespace irmbench;

/// Brings the façade, which found no files, to the sample conditions.
void setUp(Host& host) {
    host.getIRPara().setADToTempTab(sampleTable());
    host.getIRPara().setShutterTemp(27.0F);
    host.setTempRangeMinMax(-20, 150);
    host.setEnvTemp(23.0F);
    host.setReflecTemp(21.0F);
    host.setHumid(0.5F);
    host.setSystemTempSetup({0.95F, 5.0F, 0.5F, 0});
    host.setStandardPaletteIndex(COLOR_IRON);
    Isotherm iso{};
    iso.minTemp = 25.0F;
    iso.maxTemp = 35.0F;
    iso.type = 1;
    host.setIsoPara(iso);
    host.m_deltaTemp = sampleDrift;
}

} // namespace

int main(int argc, char** argv) {
    // The same buffer whatever standard output is.
    std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    std::string place = (std::filesystem::temp_directory_path() / "irmcore-corebench-XXXXXX");
    std::filesystem::current_path(::mkdtemp(place.data()));
    Desk desk;
    if (!desk.ready()) {
        std::perror("no file in memory or no pty");
        return 2;
    }
    int result = 0;
    std::unique_ptr<Host> host;
    {
        const Silence silence;
        host = std::make_unique<Host>();
        setUp(*host);
    }
    registerConversions();
    registerTransfers(*host);
    registerLink(*host, desk.port());
    if (!registerFrames(*host)) {
        std::fputs("frames differ from the prescribed calculation\n", stderr);
        result = 1;
    }
    if (result == 0)
        benchmark::RunSpecifiedBenchmarks();
    {
        const Silence silence;
        host.reset();
    }
    std::filesystem::current_path("/");
    std::filesystem::remove_all(place);
    return result;
}
