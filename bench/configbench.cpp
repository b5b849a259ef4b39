// What the periodic reading of the configuration files takes, against reading them word for word:
//
//     irmcore-configbench [--benchmark_filter=REGEX ...]
//
// "modify" reads a Modify file of so many keys, "table" a table file, "load" is a whole table load,
// which reads both, "shutter" the shutter update around it on a simulated camera, "construction" a
// façade's beginning and end there.
//
// The two ways take turns. `library` and `yardstick` are their median times in microseconds,
// `ratio` is the quotient. "touched" files have another time of writing at every turn, one long
// past, so that they are parsed again and nothing waits for a time stamp to settle. What is printed
// meanwhile goes to /dev/null, for both alike. First both have to give the same tables.
#include "literal_config.h"
#include "sim/camera.h"
#include "sim/cameradir.h"
#include "turns.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr char modifyFile[] = "Parameter/Modify";
constexpr char tableFile[] = "etc/calc_len0_temp0.conf";

/// A fresh working directory with a camera's files.
class Place {
public:
    Place() : m_path((fs::temp_directory_path() / "irmcore-configbench-XXXXXX").string()) {
        fs::current_path(::mkdtemp(m_path.data()));
        irmsim::CameraDirectory content;
        content.modifyFiles = true;
        std::string error;
        if (!irmsim::writeCameraDirectory(".", content, error))
            std::fprintf(stderr, "%s\n", error.c_str());
    }
    ~Place() {
        std::error_code ignored;
        fs::current_path("/", ignored);
        fs::remove_all(m_path, ignored);
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

private:
    std::string m_path;
};

/// A façade with its camera, which outlives every benchmark.
irmbench::LiteralConfig* s_host = nullptr;

/// Gives a file another time of writing.
void touch(const char* file) {
    static int touches = 0;
    static const auto start = fs::file_time_type::clock::now() - std::chrono::hours(24 * 365);
    std::error_code missing;
    fs::last_write_time(file, start + std::chrono::seconds(++touches), missing);
}

enum class Files { touched, unchanged };

/// Touches the files before every turn, if so wanted.
template <typename Library, typename Literal>
void compare(benchmark::State& state, Files files, const irmbench::Yardstick& yardstick,
             Library library, Literal literal) {
    const auto prepare = [files](auto&) {
        if (files == Files::touched) {
            touch(modifyFile);
            touch(tableFile);
        }
    };
    irmbench::takeTurns(state, yardstick, {1, 1}, prepare, library, literal);
}

/// Reading word for word, and the share of its time that touched files may cost at most.
irmbench::Yardstick literalReading(Files files, double reach) {
    return {"reading word for word", files == Files::touched ? reach : 0.0};
}

void writeModify(int keys) {
    std::ofstream out(modifyFile);
    for (int i = 0; i < keys; ++i) {
        const auto key = irmcore::modifyKey(i * irmcore::modifyEntries / keys);
        out << key.text.data() << "=1.0" << 100 + i << '\n';
    }
}

FPGA& library() { return *s_host; }

void modify(benchmark::State& state, Files files) {
    writeModify(static_cast<int>(state.range(0)));
    touch(modifyFile);
    compare(
        state, files, literalReading(files, 0.8), [] { library().updateModify(0, 0); },
        [] { s_host->updateModify(0, 0); });
}

void table(benchmark::State& state, Files files) {
    static TempInfoTab tab{};
    compare(
        state, files, literalReading(files, 0.0), [] { library().readTable(tableFile, &tab); },
        [] { irmbench::LiteralConfig::readTable(tableFile, &tab); });
}

void load(benchmark::State& state, Files files) {
    writeModify(static_cast<int>(state.range(0)));
    touch(modifyFile);
    compare(
        state, files, literalReading(files, 0.0), [] { library().setSystemAdToTempTab(0, 0); },
        [] { s_host->setSystemAdToTempTab(0, 0); });
}

void shutter(benchmark::State& state, Files files) {
    writeModify(static_cast<int>(state.range(0)));
    touch(modifyFile);
    compare(
        state, files, literalReading(files, 0.8), [] { library().updateShutterTemp(true); },
        [] { s_host->updateShutterTemp(true); });
}

/// A façade's life, which reads the settings and the table twice, against the latter alone.
void construction(benchmark::State& state, Files files) {
    writeModify(static_cast<int>(state.range(0)));
    touch(modifyFile);
    compare(
        state, files, {"reading its tables word for word"}, [] { const FPGA another; },
        [] {
            s_host->setSystemAdToTempTab(0, 0);
            s_host->updateShutterTemp(true);
        });
}

/// Whether both ways leave the same tables, factors and shutter temperature.
bool agree(int keys) {
    const irmbench::Silence silence;
    writeModify(keys);
    struct Results {
        float factors[irmcore::modifyEntries];
        TempInfoTab tab;
        float shutter;
    } results[2]{};
    for (int i = 0; i < 2; ++i) {
        touch(modifyFile);
        touch(tableFile);
        if (i == 0)
            library().updateShutterTemp(true);
        else
            s_host->updateShutterTemp(true);
        std::memcpy(results[i].factors, s_modify, sizeof s_modify);
        results[i].tab = s_host->m_tempInfoTab;
        results[i].shutter = s_host->m_modifyShutterTemp;
    }
    return std::memcmp(&results[0], &results[1], sizeof(Results)) == 0;
}

} // namespace

int main(int argc, char** argv) {
    // The same buffer whatever standard output is.
    std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    const Place place;
    irmsim::Camera camera;
    if (!camera.temperatures(23, 30).install())
        return 2;
    {
        const irmbench::Silence silence;
        s_host = new irmbench::LiteralConfig;
    }
    int result = 0;
    for (const int keys : {irmcore::modifyEntries, 10}) {
        if (!agree(keys)) {
            std::fprintf(stderr, "the two differ with %d keys\n", keys);
            result = 1;
        }
    }
    const std::pair<const char*, Files> states[] = {{"touched", Files::touched},
                                                    {"unchanged", Files::unchanged}};
    for (const auto& [state, files] : states) {
        const auto with = [state = state, files = files](const char* name, auto run) {
            const std::string title = std::string("files/") + name + '/' + state;
            return benchmark::RegisterBenchmark(title.c_str(), run, files)
                ->UseManualTime()
                ->Unit(benchmark::kMicrosecond);
        };
        with("modify", modify)->Arg(irmcore::modifyEntries)->Arg(10);
        with("table", table);
        with("load", load)->Arg(irmcore::modifyEntries)->Arg(10);
        with("shutter", shutter)->Arg(irmcore::modifyEntries)->Arg(10);
        with("construction", construction)->Arg(irmcore::modifyEntries);
    }
    if (result == 0)
        benchmark::RunSpecifiedBenchmarks();
    {
        const irmbench::Silence silence;
        delete s_host;
    }
    return result;
}
