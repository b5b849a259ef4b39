// Simulated days of a host that never stops, see docs/soak.md:
//
//     irmcore-soak [--days N | --hours N] [--seed S]
//
// Exit code 1, with seed and hour, when readings differ from a fresh camera's or something grows.
#include "bench/soakhost.h"
#include "support/link.h"

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <malloc.h>
#include <spawn.h>
#include <sys/wait.h>

namespace {

using namespace irmsoak;

constexpr char stateFile[] = "state";
constexpr char freshFile[] = "fresh";
constexpr int faultyEvery = 3;          // every third hour
constexpr int warmHours = 6;            // two faulty hours have been by then
constexpr long heapMayGrow = 16 * 1024; // bytes, from then to the end
constexpr long residentMayGrow = 1024;  // kB
constexpr double errorBound = 1.0;      // °C

/// What a process holds.
struct Held {
    long heap = 0;     // bytes
    long resident = 0; // kB
    long descriptors = 0;
    long threads = 0;
};

long residentKb() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmRSS:", 0) == 0)
            return std::strtol(line.c_str() + 6, nullptr, 10);
    return 0;
}

Held held() {
    const struct mallinfo2 heap = mallinfo2();
    return {static_cast<long>(heap.uordblks + heap.hblkhd), residentKb(),
            irmtest::entriesOf("/proc/self/fd"), irmtest::entriesOf("/proc/self/task")};
}

std::string contentOf(const char* file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

/// The survey of a process of its own, on a camera in this state; empty when there is none.
std::string surveyElsewhere(const std::string& program, const State& state) {
    std::filesystem::remove(freshFile);
    if (!save(state, stateFile))
        return {};
    std::string self = program, option = "--fresh";
    char* arguments[] = {self.data(), option.data(), nullptr};
    pid_t child = 0;
    int status = 0;
    if (posix_spawn(&child, self.c_str(), nullptr, nullptr, arguments, environ) != 0 ||
        waitpid(child, &status, 0) != child || status != 0)
        return {};
    return contentOf(freshFile);
}

/// The first line in which two texts differ, of both.
std::string difference(const std::string& one, const std::string& other) {
    std::istringstream a(one), b(other);
    std::string left, right;
    int line = 0;
    do {
        left.clear();
        right.clear();
        ++line;
        const bool more = static_cast<bool>(std::getline(a, left));
        if (!std::getline(b, right) && !more)
            return "";
    } while (left == right);
    return "line " + std::to_string(line) + ": \"" + left + "\", fresh \"" + right + "\"";
}

std::string grown(const Held& before, const Held& now, bool warm) {
    if (now.descriptors != before.descriptors || now.threads != before.threads)
        return irmtest::joined("descriptors", before.descriptors, "then", now.descriptors,
                               "threads", before.threads, "then", now.threads);
    if (warm && now.heap - before.heap > heapMayGrow)
        return irmtest::joined("heap", before.heap, "then", now.heap, "bytes");
    if (warm && now.resident - before.resident > residentMayGrow)
        return irmtest::joined("resident", before.resident, "then", now.resident, "kB");
    return "";
}

struct Options {
    int hours = 24;
    std::uint64_t seed = 1;
    bool fresh = false;
};

std::optional<Options> parsed(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        if (name == "--fresh") {
            options.fresh = true;
            continue;
        }
        char* end = nullptr;
        const long value = i + 1 < argc ? std::strtol(argv[++i], &end, 10) : -1;
        if (end == nullptr || *end != '\0' || value < 0)
            return std::nullopt;
        if (name == "--hours" && value >= 1 && value <= 100000)
            options.hours = static_cast<int>(value);
        else if (name == "--days" && value >= 1 && value <= 4000)
            options.hours = static_cast<int>(value) * 24;
        else if (name == "--seed")
            options.seed = static_cast<std::uint64_t>(value);
        else
            return std::nullopt;
    }
    return options;
}

/// The descriptors are kept; what the library prints from now on goes nowhere.
std::FILE* quiet(int fd) {
    std::FILE* kept = fdopen(dup(fd), "w");
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, fd);
    close(nowhere);
    return kept;
}

int soak(const Options& options, std::FILE* out, std::FILE* progress) {
    const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
    const irmtest::WorkDir dir;
    const auto start = std::chrono::steady_clock::now();
    const auto failed = [&](int hour, const std::string& what) {
        std::fprintf(out, "seed %llu, hour %d: %s\n", static_cast<unsigned long long>(options.seed),
                     hour, what.c_str());
        return 1;
    };
    Host host(options.seed);
    Held base = held(), last;
    double worst = 0;
    for (int hour = 1; hour <= options.hours; ++hour) {
        const bool faulty = hour % faultyEvery == 0;
        host.hour(faulty);
        const State state = host.upToDate();
        const std::string fresh = surveyElsewhere(program, state);
        if (fresh.empty())
            return failed(hour, "no survey of a fresh camera");
        const std::string differs = difference(host.survey(), fresh);
        if (!differs.empty())
            return failed(hour, (faulty ? "after faults, " : "") + differs);
        worst = std::max(worst, host.worstError());
        if (worst > errorBound)
            return failed(hour, irmtest::joined("a reading is off by", worst, "°C"));
        host.camera().clearReceived();
        // A remark of the worker on its lock holds a descriptor for a moment.
        irmtest::wait([&] {
            last = held();
            return last.descriptors == base.descriptors && last.threads == base.threads;
        });
        if (hour <= warmHours) {
            base.heap = last.heap;
            base.resident = last.resident;
        }
        const std::string more = grown(base, last, hour > warmHours);
        if (!more.empty())
            return failed(hour, more);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        std::fprintf(progress, "hour %d%s: %.1f s, heap %ld B, resident %ld kB\n", hour,
                     faulty ? ", faulty" : "", took.count(), last.heap, last.resident);
        std::fflush(progress);
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    std::fprintf(out,
                 "%d simulated hours in %.0f s, seed %llu: %lu queries, %lu whole frames, %lu "
                 "changes, %d calibration rounds, %lu faults\n"
                 "readings as a fresh camera's after every hour, the targets within %.2f °C\n"
                 "descriptors %ld, threads %ld\n",
                 options.hours, took.count(), static_cast<unsigned long long>(options.seed),
                 host.queries(), host.frames(), host.changes(), host.rounds(),
                 host.camera().faults(), worst, last.descriptors, last.threads);
    if (options.hours > warmHours)
        std::fprintf(out, "since hour %d: heap %+ld B, resident %+ld kB\n", warmHours,
                     last.heap - base.heap, last.resident - base.resident);
    else
        std::fprintf(out, "too short to compare memory: that begins after hour %d\n", warmHours);
    return 0;
}

/// Has the program begin anew without the allocator's caches of each thread, which count as memory
/// in use and fill up over days.
void withoutCaches(char** argv) {
    if (std::getenv("GLIBC_TUNABLES") != nullptr)
        return;
    setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0", 1);
    execv("/proc/self/exe", argv);
}

} // namespace

int main(int argc, char** argv) {
    const std::optional<Options> options = parsed(argc, argv);
    if (!options) {
        std::fputs("usage: irmcore-soak [--days N | --hours N] [--seed S]\n", stderr);
        return 3;
    }
    withoutCaches(argv);
    std::FILE* const out = quiet(STDOUT_FILENO);
    std::FILE* const progress = quiet(STDERR_FILENO);
    int result = 2;
    if (options->fresh) {
        State state{};
        if (load(state, stateFile)) {
            std::ofstream(freshFile, std::ios::binary) << freshSurvey(state);
            result = 0;
        }
    } else {
        result = soak(*options, out, progress);
    }
    std::fclose(out);
    std::fclose(progress);
    return result;
}
