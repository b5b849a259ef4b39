// How a link ends, and what it is without its worker.
#include "support/linkloads.h"

#include <atomic>
#include <cerrno>
#include <dlfcn.h>

namespace {

using namespace irmtest;

/// Threads that cannot be created from now on.
std::atomic<int> s_refusals{0};

} // namespace

extern "C" [[gnu::visibility("default")]] int pthread_create(pthread_t* thread,
                                                             const pthread_attr_t* attributes,
                                                             void* (*body)(void*),
                                                             void* argument) noexcept {
    if (s_refusals > 0 && s_refusals-- > 0)
        return EAGAIN;
    using Create = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static auto* const next = reinterpret_cast<Create*>(dlsym(RTLD_NEXT, "pthread_create"));
    return next(thread, attributes, body, argument);
}

namespace {

struct Ending : testing::Test {
    Ending() { camera.install(); }
    irmsim::Camera camera;
};

TEST_F(Ending, withoutAWorkerQueriesWorkAndCommandsStay) {
    std::unique_ptr<Link> link;
    s_refusals = 1;
    EXPECT_EQ(linkErrors([&] { link = std::make_unique<Link>(); }),
              "create pthread failed: Resource temporarily unavailable\n");
    unsigned short sum = 0;
    EXPECT_EQ(link->setVSK(7) + link->signalThread() + link->readSerialSum(&sum), 0);
    link = nullptr;
    EXPECT_EQ(joined(sum, frames(camera)), "30000 79");
    link = std::make_unique<Link>(); // sends nothing of it
    link->readSerialSum(&sum);
    link = nullptr;
    EXPECT_EQ(frames(camera), "79 79");
}

TEST_F(Ending, aCommandThatWaitsStillLeaves) {
    const WorkDir dir;
    for (int i = 0; i < 20; ++i) {
        camera.corePowerUp().clearReceived();
        printed([&] {
            auto host = std::make_unique<FPGA>();
            camera.clearLog();
            const double before = camera.seconds();
            EXPECT_EQ(host->getSerial()->shutDown(), 0);
            EXPECT_NEAR(camera.seconds() - before, 0.15, 1e-6);
            host = nullptr;
        });
        EXPECT_EQ(transfers(camera), "R15:1 W15:1=01 R15:1 W15:1=00"); // the alarm
        ASSERT_EQ(joined(frames(camera), camera.coreOn()), "84 0");
    }
}

TEST_F(Ending, silenceOnAPtyEndsAfter201EmptyReads) {
    camera.serialOnPty(true).coreSilent(true);
    Link link;
    camera.clearPortCalls();
    unsigned short vsk = 9;
    EXPECT_EQ(joined(link.readSerialVSK(&vsk), vsk), "-1 0");
    EXPECT_EQ(camera.portCalls().emptyReads, 201U);
}

TEST(Ended, linksLeaveNothingAndWaitForNoAnswer) {
    const Outcome left = nothingIsLeft(300);
    EXPECT_TRUE(left.good) << left.figures;
    double longest = 0;
    const Outcome silent = silentLinksEnd(4, longest);
    EXPECT_TRUE(silent.good) << silent.figures;
    EXPECT_LT(longest, 15); // s; a silent core would be waited for 20
}

} // namespace
