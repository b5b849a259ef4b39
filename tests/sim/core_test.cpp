#include "sim/detectorcore.h"

#include <gtest/gtest.h>

#include <string>

using namespace irmsim;
using namespace std::chrono_literals;

namespace {

std::vector<std::uint8_t> bytes(const std::string& hex) {
    std::vector<std::uint8_t> all;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        all.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return all;
}

std::string hex(const std::vector<std::uint8_t>& all) {
    std::string text;
    for (const std::uint8_t byte : all)
        for (const int digit : {byte >> 4, byte & 15})
            text += "0123456789ABCDEF"[digit];
    return text;
}

class CoreTest : public testing::Test {
protected:
    /// The replies to what a host sends, one after the other.
    std::string say(const std::string& sent, Time now = 0s) {
        const auto raw = bytes(sent);
        std::string all;
        for (const Reply& reply : core.receive(raw.data(), raw.size(), now))
            all += (all.empty() ? "" : " ") + hex(reply.bytes);
        return all;
    }
    Detector detector;
    Shutter shutter;
    DetectorCore core{detector, shutter};
};

} // namespace

TEST_F(CoreTest, everyCommandHasItsReply) {
    core.setAnswers({"irmsim CPU 1.0", "abcdefghijklmnopq", 30000, 6784, 70000});
    const struct {
        const char* sent;
        const char* reply;
    } cases[] = {
        {"FFA5300101305A", "7FA5003000305A"},
        {"FFA53100315A", "7FA5003100315A"},
        {"FFA55100515A", "7FA5005100515A"},
        {"FFA55200525A", "7FA5005200525A"},
        {"FFA5610400000000655A", "7FA500610470110100055A"},
        {"FFA570026400165A", "7FA5007000705A"},
        {"FFA57700775A", "7FA50077025307215A"}, // the VSK of power-up, 1875
        {"FFA57802BC07C15A", "7FA5007800785A"},
        {"FFA57700775A", "7FA5007702BC07CE5A"}, // 1980
        {"FFA57900795A", "7FA500790230753E5A"},
        {"FFA58000805A", "7FA500800F69726D73696D2043505520312E3020C75A"},
        {"FFA58100815A", "7FA500810F6162636465666768696A6B6C6D6E6FEE5A"},
        {"FFA5820464003412C45A", "7FA5008200825A"},
        {"FFA57700775A", "7FA50077023412535A"}, // 0x1234
        {"FFA596020000945A", "7FA5009602801A0E5A"},
        {"FFA58400845A", "7FA5008400845A"},
        {"FFA57900795A", ""}, // off
    };
    for (const auto& c : cases)
        EXPECT_EQ(say(c.sent), c.reply) << c.sent;
    EXPECT_EQ(core.counts().good[0x77], 3U);
    EXPECT_EQ(core.counts().allGood(), 16U);
    EXPECT_EQ(core.counts().bad, 0U);
    EXPECT_FALSE(shutter.takeDone(1000s)); // nor does it calibrate
    core.powerUp(5s);
    EXPECT_EQ(shutter.takeDone(6s), Time(5300ms));
    EXPECT_EQ(say("FFA57700775A"), "7FA50077025307215A");
}

TEST_F(CoreTest, badFrameIsCountedAndSwallowsNoOther) {
    const std::string good = "FFA57900795A";
    const struct {
        const char* before;
        unsigned long bad;
    } cases[] = {
        {"", 0},
        {"00FF7FA5FF", 0}, // no frame begins here
        {"FFA579007A5A", 1},
        {"FFA57900795B", 1},
        {"FFA5790079FF", 1},         // the end byte is the next frame's beginning
        {"FFA5820464", 1},           // broken off
        {"FFA57B", 1},               // broken off: length 0xFF
        {"FFA5787BFFA57900795A", 1}, // length 123; one frame in it
        {"FFA54000405A", 1},         // no such command
        {"FFA57801007959", 1},       // and wrong
        {"FFA5780100795A", 1},       // a payload too short
    };
    for (const auto& c : cases) {
        core.clearFrames();
        const std::string answer = say(c.before + good);
        EXPECT_EQ(answer.substr(0, 18), "7FA500790230753E5A") << c.before;
        EXPECT_EQ(core.counts().bad, c.bad) << c.before;
        EXPECT_EQ(core.frames().back().code, 0x79) << c.before;
        EXPECT_EQ(core.frames().size(), core.counts().allGood() + c.bad) << c.before;
    }
    EXPECT_FALSE(core.frames().front().good);
    EXPECT_EQ(core.frames().front().payload, bytes("00"));

    // Byte by byte as well; a frame broken off for a second is given up.
    std::string answer;
    for (std::size_t i = 0; i < good.size(); i += 2)
        answer += say(good.substr(i, 2), 9s);
    EXPECT_EQ(answer, "7FA500790230753E5A");
    EXPECT_EQ(core.frames().back().seconds, 9.0);
    core.clearFrames();
    EXPECT_EQ(say("FFA5401400", 10s), "");
    EXPECT_EQ(say(good, 10999ms), "");
    EXPECT_EQ(say(good, 11999ms), "7FA500790230753E5A");
    EXPECT_EQ(core.counts().bad, 1U);
}

TEST_F(CoreTest, integrationTimeSetsTheRange) {
    EXPECT_EQ(core.intTime(), 120);
    say("FFA58204D2000000545A"); // 210
    EXPECT_EQ(detector.range(), 1);
    EXPECT_EQ(core.intTime(), 210);
    say("FFA570026400165A"); // 100: neither
    EXPECT_EQ(detector.range(), 1);
    EXPECT_EQ(core.intTime(), 100);
    say("FFA5700278000A5A"); // 120
    EXPECT_EQ(detector.range(), 0);
}

TEST_F(CoreTest, answersGoWrongOnDemand) {
    const std::string ask = "FFA57900795A";
    core.faults.silent = true;
    EXPECT_EQ(say(ask), "");
    EXPECT_EQ(core.counts().good[0x79], 1U); // heard all the same
    core.faults.silent = false;
    for (const auto& [offset, reply] : {std::pair{0, "80A500790230753E5A"},
                                        {3, "7FA500860230753E5A"},
                                        {30, "7FA500790230753E5A"}}) {
        core.faults.garbled = offset;
        EXPECT_EQ(say(ask), reply);
    }
    core.faults.garbled = -1;
    core.faults.late = 3s;
    const auto raw = bytes(ask + ask);
    const auto replies = core.receive(raw.data(), raw.size(), 0s);
    ASSERT_EQ(replies.size(), 2U);
    EXPECT_EQ(replies[1].after, 3s);
}

TEST(Shutter, calibratesThreeTenthsAfterItClosed) {
    Shutter shutter;
    const auto doneBy = [&shutter](Time now) {
        std::string times;
        while (const auto done = shutter.takeDone(now))
            times += std::to_string(*done / 1ms) + " ";
        return times + (shutter.closed() ? "closed" : "open");
    };
    EXPECT_EQ(doneBy(59999ms), "open");
    EXPECT_EQ(doneBy(60s), "closed"); // by itself
    EXPECT_EQ(doneBy(181s), "60300 120300 180300 open");
    shutter.close(200s);
    EXPECT_EQ(doneBy(200299ms), "closed");
    shutter.close(200200ms); // anew
    EXPECT_EQ(doneBy(200499ms), "closed");
    EXPECT_EQ(doneBy(200500ms), "200500 open");
    shutter.setPeriod(10s, 201s);
    EXPECT_EQ(doneBy(215s), "211300 open");
    shutter.setAutomatic(false, 215s);
    EXPECT_EQ(doneBy(1000s), "open");
    shutter.close(1000s);
    shutter.stop();
    EXPECT_EQ(doneBy(2000s), "open");
}
