// Commands between the threads that give them and the worker: none lost, none doubled.
#include "support/linkloads.h"

#include <atomic>
#include <dlfcn.h>
#include <sys/stat.h>

namespace {

using namespace irmtest;

/// The next wait on a condition begins late, and says so.
std::atomic<bool> s_late{false};
std::atomic<bool> s_aboutToWait{false};

} // namespace

extern "C" [[gnu::visibility("default")]] int pthread_cond_wait(pthread_cond_t* condition,
                                                                pthread_mutex_t* mutex) {
    if (s_late.exchange(false)) {
        s_aboutToWait = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    using Wait = int(pthread_cond_t*, pthread_mutex_t*);
    static auto* const next = reinterpret_cast<Wait*>(dlsym(RTLD_NEXT, "pthread_cond_wait"));
    return next(condition, mutex);
}

namespace {

TEST(HandOver, noCommandIsLostOrDoubled) {
    printed([] {
        for (const Outcome& outcome :
             {commandsArrive(2000, true), commandsArrive(2000, false), startUpsSendOneFrame(200)})
            EXPECT_TRUE(outcome.good) << outcome.figures;
    });
}

TEST(HandOver, threadsMayGiveAndAskAtOnce) {
    irmsim::Camera camera;
    camera.install();
    Link link;
    const auto talk = [&link] {
        for (int i = 0; i < 300; ++i) {
            link.outsideShutter();
            unsigned short sum = 0;
            ASSERT_EQ(link.readSerialSum(&sum) + sum, 30000);
        }
    };
    std::thread other(talk);
    talk();
    other.join();
    EXPECT_EQ(joined(camera.coreCounts().bad, camera.coreCounts().good[0x79]), "0 600");
    EXPECT_LE(camera.coreCounts().good[0x52], 600U);
}

TEST(HandOver, theFirstCommandArrivesAndAWakeUpSendsItOnceMore) {
    irmsim::Camera camera;
    camera.install();
    for (unsigned short i = 0; i < 200; ++i) {
        camera.clearReceived();
        const std::string frame = "78:" + hex(i) + "00";
        auto link = std::make_unique<Link>();
        link->setVSK(i);
        if (i % 2 != 0) {
            ASSERT_TRUE(received(camera, 1));
            EXPECT_EQ(link->signalThread(), 0);
            ASSERT_TRUE(received(camera, 2));
        }
        link = nullptr;
        ASSERT_EQ(frames(camera), i % 2 != 0 ? frame + " " + frame : frame);
    }
}

TEST(HandOver, aWorkerAboutToWaitHearsAWakeUp) {
    irmsim::Camera camera;
    camera.install();
    Link link;
    link.setVSK(7);
    ASSERT_TRUE(received(camera, 1));
    std::string expected = "78:0700";
    for (const bool queried : {false, true}) {
        link.sent(); // the worker is done
        if (queried)
            link.readSerialSum(nullptr);
        s_aboutToWait = false;
        s_late = true;
        ASSERT_TRUE(wait([&] { return link.m_mutex.broadcast() == 0 && s_aboutToWait; }));
        link.signalThread();
        expected += queried ? " 79 78:0700" : " 78:0700";
        EXPECT_TRUE(wait([&] { return frames(camera) == expected; })) << frames(camera);
    }
}

TEST(HandOver, misuseOfTheLockIsTold) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the thread sanitizer reports it itself";
#endif
    Mutex mutex;
    const std::string told = printed(
        [&mutex] {
            mutex.lock();
            std::thread other([&mutex] {
                struct stat file {};
                EXPECT_TRUE(
                    wait([&] { return fstat(STDERR_FILENO, &file) == 0 && file.st_size > 0; }));
                mutex.unlock();
            });
            mutex.lock(); // again
            mutex.unlock();
            other.join();
        },
        STDERR_FILENO);
    EXPECT_EQ(told.find("Mutex::lock() deadlock detected: "), 0U);
    EXPECT_NE(told.find("Wrong thread is unlocking the mutex!!: "), std::string::npos);
}

} // namespace
