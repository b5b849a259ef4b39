// The link under load, for longer than a test should take. Fails when a command is lost or doubled,
// or when something is left behind; times are only shown. The figures go to standard error:
//
//     link_stress [commands [start-ups [constructions [silent ends [places]]]]] >/dev/null
//
// Places: letters of "i" idle, "l" beside two threads that compute, "o" on one processor.
#include "support/linkloads.h"

#include <atomic>
#include <cstdlib>
#include <sched.h>
#include <string>

namespace {

using namespace irmtest;

int s_failures = 0;

template <typename Run>
void report(const char* what, Run run) {
    const auto start = std::chrono::steady_clock::now();
    const Outcome outcome = run();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    std::fprintf(stderr, "%-4s %8.2f s  %s: %s\n", outcome.good ? "ok" : "BAD", took.count(), what,
                 outcome.figures.c_str());
    s_failures += outcome.good ? 0 : 1;
}

void talk(const char* where, unsigned commands, unsigned startUps) {
    std::fprintf(stderr, "%s\n", where);
    report("paced commands", [&] { return commandsArrive(commands, true); });
    report("hurried commands", [&] { return commandsArrive(commands, false); });
    report("start-ups", [&] { return startUpsSendOneFrame(startUps); });
}

} // namespace

int main(int argc, char** argv) {
    unsigned counts[] = {1000, 20, 300, 3};
    for (int i = 1; i < argc && i <= 4; ++i)
        counts[i - 1] = static_cast<unsigned>(std::strtoul(argv[i], nullptr, 10));
    const std::string places = argc > 5 ? argv[5] : "ilo";
    const auto wanted = [&places](char place) { return places.find(place) != std::string::npos; };
    if (wanted('i'))
        talk("idle", counts[0], counts[1]);
    if (wanted('l')) {
        std::atomic<bool> done{false};
        const auto compute = [&done] {
            while (!done) {
            }
        };
        std::thread load[] = {std::thread(compute), std::thread(compute)};
        talk("beside two threads that compute", counts[0], counts[1]);
        done = true;
        for (std::thread& thread : load)
            thread.join();
    }
    if (counts[2] > 0)
        report("constructions", [&] { return nothingIsLeft(counts[2]); });
    double longest = 0;
    if (counts[3] > 0)
        report("silent ends", [&] { return silentLinksEnd(counts[3], longest); });
    if (!wanted('o'))
        return s_failures == 0 ? 0 : 1;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(0, &one);
    sched_setaffinity(0, sizeof one, &one);
    talk("on one processor", counts[0], counts[1]);
    return s_failures == 0 ? 0 : 1;
}
