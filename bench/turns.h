#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>
#include <utility>
#include <vector>

/// Ratios from one run: the library and its yardstick take turns.
namespace irmbench {

/// Standard output goes nowhere as long as this lives.
class Silence {
public:
    Silence() : m_output(::dup(STDOUT_FILENO)) {
        std::fflush(stdout);
        const int nowhere = ::open("/dev/null", O_WRONLY);
        ::dup2(nowhere, STDOUT_FILENO);
        ::close(nowhere);
    }
    ~Silence() {
        std::fflush(stdout);
        ::dup2(m_output, STDOUT_FILENO);
        ::close(m_output);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    int m_output;
};

/// What time is taken from: the thread's own processor time, in the kernel too, which others that
/// use the machine hardly touch; or all time that passes, where another thread plays a part.
enum class Clock { processor, wall };

/// What a figure is held against.
struct Yardstick {
    const char* what;               ///< "of ..."
    double reach = 0.0;             ///< the ratio aimed at or less; 0: none
    Clock clock = Clock::processor; ///< by which both are timed
};

inline double median(std::vector<double> times) {
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return times.empty() ? 0.0 : *middle;
}

/// Microseconds that one of `calls` calls takes.
template <typename Run>
double microseconds(Clock clock, long calls, Run& run) {
    const auto now = [clock] {
        timespec time{};
        ::clock_gettime(clock == Clock::wall ? CLOCK_MONOTONIC : CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) * 1e-3;
    };
    const double start = now();
    for (long i = 0; i < calls; ++i)
        run();
    return (now() - start) / static_cast<double>(calls);
}

/// How many calls take long enough for the clock; all that they touch is warm afterwards.
template <typename Run>
long callsATurn(Clock clock, Run& run) {
    constexpr double enough = 100.0; // µs
    microseconds(clock, 1, run);
    for (long calls = 1;; calls *= 2)
        if (microseconds(clock, calls, run) * static_cast<double>(calls) >= enough)
            return calls;
}

/// Lets the two take turns, and each of them begin every other time; each turn is so many calls
/// after one of `prepare(run)`, which is not measured. Their median times in microseconds are
/// `library` and `yardstick`, `ratio` is the quotient.
template <typename Prepare, typename Library, typename Other>
void takeTurns(benchmark::State& state, const Yardstick& yardstick,
               std::pair<long, long> callsOfEither, Prepare prepare, Library& library,
               Other& other) {
    const auto [libraryCalls, otherCalls] = callsOfEither;
    std::vector<double> times[2];
    const auto turn = [&](std::vector<double>& into, long calls, auto& run) {
        prepare(run);
        into.push_back(microseconds(yardstick.clock, calls, run));
    };
    {
        const Silence silence;
        bool first = false;
        for ([[maybe_unused]] auto _ : state) {
            first = !first;
            if (first)
                turn(times[0], libraryCalls, library);
            turn(times[1], otherCalls, other);
            if (!first)
                turn(times[0], libraryCalls, library);
            state.SetIterationTime((times[0].back() * static_cast<double>(libraryCalls) +
                                    times[1].back() * static_cast<double>(otherCalls)) *
                                   1e-6);
        }
    }
    state.SetLabel(yardstick.what);
    state.counters["library"] = median(times[0]);
    state.counters["yardstick"] = median(times[1]);
    state.counters["ratio"] = median(times[0]) / median(times[1]);
    state.counters["reach"] = yardstick.reach;
}

/// Registers a comparison of two that can be called over and over. Each turn finds its own data
/// warm.
template <typename Library, typename Other>
void compare(const char* name, Yardstick yardstick, Library library, Other other) {
    const auto run = [yardstick, library, other,
                      calls = std::pair<long, long>()](benchmark::State& state) mutable {
        if (calls.first == 0) {
            const Silence silence;
            calls = {callsATurn(yardstick.clock, library), callsATurn(yardstick.clock, other)};
        }
        takeTurns(
            state, yardstick, calls, [](auto& either) { either(); }, library, other);
    };
    benchmark::RegisterBenchmark(name, run)->UseManualTime()->Unit(benchmark::kMicrosecond);
}

} // namespace irmbench
