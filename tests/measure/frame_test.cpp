// Whole frames, and the quick calculation behind them and every reading.
#include "measure/guard.h"
#include "measure/quickreading.h"
#include "support/host.h"

#include <array>
#include <cmath>
#include <new>

namespace {

using namespace irmtest;

/// Whether memory that may be refused is refused, and how often it was given.
bool s_noMemory = false;
int s_given = 0;

} // namespace

[[gnu::visibility("default")]] void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
    s_given += s_noMemory ? 0 : 1;
    return s_noMemory ? nullptr : ::operator new(n);
}

namespace {

struct Frames : Host {
    Frames() {
        for (std::size_t i = 0; i < words.size(); ++i)
            words[i] = static_cast<unsigned short>(i * 13 % 65536);
    }
    /// Converts the frame and compares it with the readings of its words.
    void expectReadings(ParaMode_t mode, const TempSetup& setup, const char* what) {
        constexpr const char* names[] = {"OK", "L", "LE", "HE", "H"};
        ASSERT_EQ(host->getFrameTemp(words.data(), count, mode, setup, temps.data(), codes.data()),
                  0);
        TempHandler* model =
            mode == PARA_CUSTOM ? host->m_queryTempHandler : host->m_sysTempHandler;
        for (std::size_t i = 0; i < words.size(); ++i) {
            const IrTempStru reading = model->irAD2Temp(words[i]);
            ASSERT_EQ(joined(names[codes[i]], temps[i]), text(reading)) << what << ' ' << words[i];
        }
    }
    static constexpr int count = 8000;
    std::array<unsigned short, count> words{};
    std::array<float, count> temps{};
    std::array<unsigned char, count> codes{};
    const TempSetup own{0.8F, 100, 1.5F, 0};
};

TEST_F(Frames, areTheReadingsOfTheirWordsAfterEveryChange) {
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"nothing", [] {}},
        {"emissivity",
         [&] {
             host->setSystemTempSetup({0.7F, 5, 0, 0});
         }},
        {"offset",
         [&] {
             host->setSystemTempSetup({0.7F, 5, 2.5F, 0});
         }},
        {"distance",
         [&] {
             host->setSystemTempSetup({0.7F, 500, 2.5F, 0});
         }},
        {"air", [&] { host->setEnvTemp(-10); }},
        {"reflection", [&] { host->setReflecTemp(90); }},
        {"humidity", [&] { host->setHumid(0.1F); }},
        {"shutter term", [&] { host->m_irPara.setShutterTemp(41); }},
        {"drift", [&] { host->m_deltaTemp = 1.25F; }},
        {"other drift", [&] { host->m_deltaTemp = -300.0F; }},
        {"drift beyond measure", [&] { host->m_deltaTemp = 1e9F; }},
        {"drift gone", [&] { host->m_deltaTemp = 0.0F; }},
        {"limits", [&] { host->setTempRangeMinMax(40, 90); }},
        {"upper limit", [&] { host->setTempRangeMinMax(40, 91); }},
        {"table", [&] { host->setSystemAdToTempTab(0, 1); }},
        {"an entry of the table",
         [&] {
             TempInfoTab tab = host->getTempInfoTab();
             tab.ad[1] = 40000;
             host->m_irPara.setADToTempTab(tab);
         }},
        {"calibration mode", [&] { host->startBiaoDing(true); }},
        {"frozen, which ends the drift", [&] {
             host->m_deltaTemp = 5;
             camera.poke(0x14, {1});
         }}};
    for (const auto& [what, change] : changes) {
        printed(change);
        expectReadings(PARA_SYSTEM, {}, what);
        expectReadings(PARA_CUSTOM, own, what);
    }
    EXPECT_EQ(host->m_deltaTemp, 0.0F);
}

TEST_F(Frames, areTheSameWithoutMemory) {
    s_noMemory = true;
    expectReadings(PARA_CUSTOM, own, "without memory");
    s_noMemory = false;
    s_given = 0;
    for (const char* what : {"with memory", "with the same memory"}) {
        expectReadings(PARA_CUSTOM, own, what);
        EXPECT_EQ(s_given, 1) << what;
    }
}

TEST_F(Frames, areJudgedBeforeTheyAreRoundedToALimit) {
    host->setSystemTempSetup({1.0F, 0, 0, 0}); // what is seen is the object
    const std::tuple<int, int, const char*> cases[] = {{110, 400, "LE 110 OK 110 OK 110"},
                                                       {-20, 110, "OK 110 OK 110 HE 110"},
                                                       {112, 400, "L 112 OK 110 LE 110"},
                                                       {-20, 108, "HE 110 OK 110 H 108"}};
    const auto reading = [this](float delta) {
        host->m_deltaTemp = delta;
        return host->m_sysTempHandler->irAD2Temp(36000);
    };
    host->setTempRangeMinMax(-20, 400);
    const float exact = reading(0).temp - 110.0F;
    for (const auto& [min, max, expected] : cases) {
        host->setTempRangeMinMax(min, max);
        EXPECT_EQ(joined(text(reading(std::nextafter(exact, 1.0F))), text(reading(exact)),
                         text(reading(std::nextafter(exact, -1.0F)))),
                  expected);
    }
}

TEST_F(Frames, giveWhatIsWantedForOneLookAtTheFreeze) {
    const unsigned short ad[] = {32768, 36000, 0, 65535};
    float temp[] = {1, 2, 3, 4, 5};
    unsigned char status[] = {9, 9, 9, 9, 9};
    const auto convert = [&](const unsigned short* from, int n, float* t, unsigned char* s) {
        int result = 0;
        const std::string moved =
            transfersOf([&] { result = host->getFrameTemp(from, n, PARA_SYSTEM, {}, t, s); });
        return joined(result, temp[0], temp[1], temp[2], temp[3], temp[4], int{status[0]},
                      int{status[1]}, int{status[2]}, int{status[3]}, int{status[4]}) +
               ' ' + moved;
    };
    const std::string untouched = "-1 1 2 3 4 5 9 9 9 9 9 ";
    EXPECT_EQ(convert(nullptr, 4, temp, status), untouched);
    EXPECT_EQ(convert(ad, -1, temp, status), untouched);
    EXPECT_EQ(convert(ad, 4, nullptr, nullptr), untouched);
    EXPECT_EQ(convert(ad, 0, temp, status), "0 1 2 3 4 5 9 9 9 9 9 R14:1");
    EXPECT_EQ(convert(ad, 4, temp, nullptr), "0 30.012743 109.9684 4001 4001 5 9 9 9 9 9 R14:1");
    temp[0] = 1;
    EXPECT_EQ(convert(ad, 4, nullptr, status), "0 1 109.9684 4001 4001 5 0 0 4 4 9 R14:1");
}

TEST_F(Frames, findANewCountWhereverItStands) {
    // Known words but one; neither length nor place is a multiple of anything.
    constexpr std::size_t length = 19;
    host->setTempRangeMinMax(-20, 60); // statuses differ
    unsigned short fresh = 36000;
    const auto reading = [&](unsigned short ad) { return host->m_sysTempHandler->irAD2Temp(ad); };
    for (std::size_t place = 0; place < length; ++place)
        for (const auto& [withTemp, withStatus] :
             {std::pair(true, true), {true, false}, {false, true}}) {
            words.fill(32768);
            words[place] = fresh += 7;
            temps.fill(-1.0F);
            codes.fill(9);
            host->getFrameTemp(words.data(), length, PARA_SYSTEM, {},
                               withTemp ? temps.data() : nullptr,
                               withStatus ? codes.data() : nullptr);
            for (std::size_t i = 0; i <= length; ++i) {
                const bool inside = i < length;
                EXPECT_EQ(temps[i], inside && withTemp ? reading(words[i]).temp : -1.0F)
                    << place << ' ' << i;
                const int code = i == place ? 4 : 0; // "H", "OK"
                EXPECT_EQ(codes[i], inside && withStatus ? code : 9) << place << ' ' << i;
            }
        }
}

TEST(Guard, tellsWhenAnErrorCanChangeASingle) {
    const double tie = 1.0 + 0x1p-24; // half way between two singles
    const std::tuple<double, int, bool> cases[] = {
        {tie, -50, false},
        {tie + 0x1p-40, -42, true},
        {tie + 0x1p-40, -39, false},
        {tie - 0x1p-40, -42, true},
        {tie - 0x1p-40, -39, false},
        {1.0, -30, true},
        {1.0, -26, true},
        {1.0, -52, true},
        {1.0, -53, false},
        {1.0, -25, false},    // too coarse to tell
        {0.0001, -35, false}, // a smaller number has smaller places
        {0.0, -35, false},    // none at all
        {1e300, -35, false},  // no single
        {INFINITY, -35, false},
        {NAN, -35, false},
        {-25.3, -35, true}};
    for (const auto& [value, error, expected] : cases)
        EXPECT_EQ(irmcore::roundsAlikeWithin(value, error), expected) << value << ' ' << error;
}

TEST(Guard, rootsAreWithinTheirBound) {
    // Roots that are exact, and their neighbours; the bound is 2^-49.
    const double roots[] = {1, 1.5, 3, 7.25, 100, 273.15, 300, 500.125, 1000, 2047, 60000};
    for (const double root : roots)
        for (const auto calculate : {irmcore::fourthRoot, irmcore::fourthRootByProducts}) {
            const auto power =
                static_cast<double>(static_cast<long double>(root) * root * root * root);
            EXPECT_NEAR(calculate(power) / root, 1.0, 0x1p-49) << root;
        }
}

TEST(Guard, takesTheQuickWayAsFarAsItsBoundsHold) {
    const double tie = 0x1p33 + 0x1p9; // of a radicand; its places are 2^-19
    const std::pair<double, bool> radicands[] = {{0.999, false},
                                                 {1.0, true},
                                                 {8796093022207.5, true},
                                                 {8796093022208.0, false},
                                                 {tie + 0x1p-14, false},
                                                 {tie + 0x1p-14 + 0x1p-19, true},
                                                 {NAN, false},
                                                 {-1.0, false}};
    for (const auto& [radicand, expected] : radicands)
        EXPECT_EQ(irmcore::celsiusIfSure(radicand).has_value(), expected) << radicand;

    const double half = 16.0 + 0x1p-20; // between two singles
    const std::tuple<double, float, bool> shifted[] = {{half + 0x1p-35, 0, false},
                                                       {half + 0x1p-34, 0, true},
                                                       {1054.3, 1024, true},
                                                       {1055.3, 1024.5F, false},
                                                       {-994.3, -1024, true}};
    for (const auto& [observed, drift, expected] : shifted)
        EXPECT_EQ(irmcore::roundedIfSure(observed, drift).has_value(), expected) << observed;

    // Of 25 °C before 25 °C: by the emissivity e the camera sees 1 / e times the object's power.
    const std::tuple<float, float, bool> scenes[] = {
        {1, 25, true},       {1, 1774, true},  {1, 1775, false},  {1, -272, true},
        {1, -272.5F, false}, {0.5F, 25, true}, {0.07F, 25, true}, {0.06F, 25, false}};
    for (const auto& [emiss, seen, expected] : scenes) {
        const irmcore::Model model{emiss, 0, 25, 25, 1, -20, 150, false};
        const double observed = irmcore::observedIfClose(irmcore::termsOf(model), seen);
        EXPECT_EQ(!std::isnan(observed), expected) << emiss << ' ' << seen;
        EXPECT_TRUE(!expected || std::abs(observed - static_cast<double>(seen)) < 1e-4);
    }

    // What rounds to a limit is left to the prescribed calculation.
    const irmcore::Terms terms = irmcore::termsOf({1, 0, 25, 25, 1, -20, 150, false});
    const std::pair<double, const char*> ends[] = {
        {149.75, "OK 149.75"}, {150, ""}, {151, "HE 151"}, {152, ""}, {153, "H 150"},
        {-19.75, "OK -19.75"}, {-20, ""}, {-21, "LE -21"}, {-22, ""}, {-23, "L -20"}};
    for (const auto& [celsius, expected] : ends) {
        IrTempStru reading{"OK", 0, 0, 0, 0, 0};
        const bool concluded = irmcore::concludeIfSure(terms, celsius, 0, reading);
        EXPECT_EQ(concluded ? text(reading) : "", expected) << celsius;
    }
}

} // namespace
