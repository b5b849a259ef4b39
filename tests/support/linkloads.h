#pragma once

#include "sim/cameradir.h"
#include "support/link.h"

#include <chrono>
#include <malloc.h>
#include <random>

/// Runs that put the link under load: short ones in the tests, long ones in a program of their own.
namespace irmtest {

/// What came of a run.
struct Outcome {
    bool good;
    std::string figures;
};

inline void pauseUpTo(unsigned microseconds) {
    static std::mt19937 random(1);
    std::this_thread::sleep_for(std::chrono::microseconds(random() % (microseconds + 1)));
}

/// Gives commands with rising numbers in their 32 bits, either each when the one before has
/// arrived, or at random times. Paced ones all arrive once, the others in order with the last one.
inline Outcome commandsArrive(unsigned count, bool paced) {
    constexpr unsigned before = 0x2FC00; // the low word is full a thousand commands later
    irmsim::Camera camera;
    camera.install();
    {
        Link link;
        for (unsigned i = 1; i <= count; ++i) {
            const unsigned number = before + i;
            link.changeTempRange(static_cast<unsigned short>(number & 0xFFFF), number >> 16);
            if (!paced)
                pauseUpTo(200);
            else if (!received(camera, i))
                break;
        }
    }
    bool good = camera.coreCounts().bad == 0;
    unsigned last = before, arrived = 0;
    for (const irmsim::CoreFrame& frame : camera.received()) {
        const auto& p = frame.payload;
        const unsigned number =
            p.size() == 4 ? p[0] | p[1] * 256U | p[2] * 65536U | p[3] * 16777216U : 0;
        good = good && (paced ? number == last + 1 : number > last);
        last = number;
        ++arrived;
    }
    return {good && last == before + count, joined(count, "given", arrived, "arrived")};
}

/// Constructs the façade and starts the core.
inline Outcome startUpsSendOneFrame(unsigned count) {
    const WorkDir dir;
    std::string error;
    irmsim::writeCameraDirectory(".", irmsim::CameraDirectory{}, error);
    irmsim::Camera camera;
    camera.logging(false).install();
    unsigned right = 0;
    for (unsigned i = 0; i < count; ++i) {
        camera.clearReceived();
        { FPGA().init(); }
        right += frames(camera) == "82:78000000" ? 1 : 0;
    }
    return {right == count, joined(count, "made", right, "with one frame")};
}

/// Constructs and destroys links, a third with a command under way and some detached. A leak shows
/// in every turn. What the simulation's records and a thread's allocator keep at hand, which counts
/// as used, and the stacks kept for further threads grow in some: one turn without counts.
inline Outcome nothingIsLeft(unsigned count) {
    irmsim::Camera camera;
    camera.install();
    const auto left = [] {
        return joined(entriesOf("/proc/self/fd"), entriesOf("/proc/self/task"));
    };
    std::string before;
    const auto used = [] { return static_cast<long>(mallinfo2().uordblks); };
    long heap = used();
    long growth = static_cast<long>(count);
    bool same = true;
    for (int turn = 0; turn < 6 && (turn < 2 || growth >= static_cast<long>(count)); ++turn) {
        before = left(); // a thread sanitizer starts a thread of its own in the first turn
        for (unsigned i = 0; i < count; ++i) {
            Link link;
            if (i % 3 == 0)
                link.insideShutter();
            if (i % 6 == 0)
                pauseUpTo(50);
            if (i % 10 == 1)
                link.closeSerial();
        }
        camera.clearReceived();
        same = turn == 0 || (same && wait([&] { return left() == before; }));
        growth = used() - heap;
        heap += growth;
    }
    const irmsim::PortCalls calls = camera.portCalls();
    return {same && growth < static_cast<long>(count) && calls.close == calls.open,
            joined(count, "made, descriptors and threads", before, "then", left(), "heap grew by",
                   growth, "bytes")};
}

/// Destroys links at random moments of an exchange with a silent core on a pty, every third
/// detached. `longest` takes the seconds of the slowest.
inline Outcome silentLinksEnd(unsigned count, double& longest) {
    irmsim::Camera camera;
    camera.serialOnPty(true).coreSilent(true).install();
    bool good = true;
    for (unsigned i = 0; i < count; ++i) {
        camera.clearReceived();
        auto link = std::make_unique<Link>();
        link->insideShutter();
        good = received(camera, 1) && good;
        pauseUpTo(120000); // a read takes 0.1 s
        if (i % 3 == 2)
            link->closeSerial();
        const auto start = std::chrono::steady_clock::now();
        link = nullptr;
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        longest = std::max(longest, took.count());
        good = good && frames(camera) == "31";
    }
    return {good, joined(count, "made, the longest took", longest, "s")};
}

} // namespace irmtest
