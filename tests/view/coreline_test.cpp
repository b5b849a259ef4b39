// What is said to the detector core, on a thread of its own.
#include "apps/view/coreline.h"

#include "support/link.h"

namespace {

using namespace irmtest;
using namespace std::chrono_literals;
using irmcore::view::CoreLine;
using irmcore::view::CoreState;

struct CoreLineTest : testing::Test {
    irmsim::Camera camera;
    bool installed = camera.install();
    Link link;
};

TEST_F(CoreLineTest, KeepsTheOrderOfWords) {
    CoreLine line(link);
    EXPECT_EQ(line.state(), CoreState::unknown);
    EXPECT_TRUE(line.idle());
    line.releaseShutter(false);
    line.calibrate();
    line.changeRange(210);
    line.ask();
    line.calibrate();
    line.ask();
    line.changeRange(0xFFFF);
    line.releaseShutter(true);
    EXPECT_FALSE(line.idle());
    line.settle(20s);
    EXPECT_TRUE(line.idle());
    EXPECT_EQ(frames(camera), "30:00 31 82:D2000000 77 31 77 82:FFFF0000 30:01");
    EXPECT_EQ(line.state(), CoreState::answers);
}

TEST_F(CoreLineTest, KnowsWhetherTheCoreAnswers) {
    CoreLine line(link);
    const struct {
        void (*change)(irmsim::Camera&);
        CoreState expected;
    } cases[] = {
        {[](irmsim::Camera&) {}, CoreState::answers},
        {[](irmsim::Camera& c) { c.coreSilent(true); }, CoreState::silent},
        {[](irmsim::Camera& c) { c.coreSilent(false).coreGarbled(3); }, CoreState::silent},
        {[](irmsim::Camera& c) { c.coreGarbled(-1).coreLate(3); }, CoreState::answers},
        {[](irmsim::Camera& c) { c.coreLate(40); }, CoreState::silent},
        {[](irmsim::Camera& c) { c.coreLate(0).unplugPort(); }, CoreState::silent},
        {[](irmsim::Camera& c) { c.plugInPort(); }, CoreState::answers},
    };
    for (const auto& c : cases) {
        c.change(camera);
        camera.advance(60); // late answers to what was asked before are thrown away
        line.ask();
        line.settle(20s);
        EXPECT_TRUE(line.idle());
        EXPECT_EQ(line.state(), c.expected) << &c - cases;
        line.calibrate(); // says nothing of it
        line.settle(20s);
        EXPECT_EQ(line.state(), c.expected) << &c - cases;
    }
}

TEST_F(CoreLineTest, EndsWhileTheCoreIsSilent) {
    camera.coreSilent(true).tieToWallClock(20); // an answer is waited for a second of the wall's
    {
        CoreLine line(link);
        line.ask();
        line.ask();
        line.calibrate();
        ASSERT_TRUE(received(camera, 1));
        line.settle(1ms);
        EXPECT_FALSE(line.idle());
        EXPECT_EQ(line.state(), CoreState::unknown); // not known yet
    }
    EXPECT_EQ(frames(camera), "77"); // the rest is not said
}

TEST_F(CoreLineTest, KnowsWhichQuestionIsAnswered) {
    CoreLine line(link);
    line.calibrate();
    const CoreLine::Ticket first = line.ask();
    line.settle(20s);
    EXPECT_TRUE(line.answered(first));
    EXPECT_FALSE(line.missed(first));
    camera.coreSilent(true);
    const CoreLine::Ticket second = line.ask();
    line.settle(20s);
    EXPECT_FALSE(line.answered(second));
    EXPECT_TRUE(line.missed(second));
    EXPECT_TRUE(line.answered(first));
    camera.coreSilent(false);
    line.ask();
    line.settle(20s);
    EXPECT_TRUE(line.answered(second)); // a later one will do
    EXPECT_FALSE(line.missed(second));
}

} // namespace
