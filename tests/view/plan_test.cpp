// The program's words.
#include "application.h"
#include "apps/view/window/plan.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace irmcore::view::testing {
namespace {

class Plan : public ::testing::Test {
protected:
    void SetUp() override {
        m_before = QDir::currentPath();
        QDir::setCurrent(m_place.path());
        QFile file(QStringLiteral("session.irmrec"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    void TearDown() override { QDir::setCurrent(m_before); }
    static std::optional<ViewPlan> parse(const char* words, int& exitCode) {
        const QString all = QStringLiteral("irmcore-view ") + QString::fromUtf8(words);
        return parsePlan(all.split(QLatin1Char(' '), Qt::SkipEmptyParts), exitCode);
    }
    static ViewPlan good(const char* words) {
        int exitCode = 0;
        const auto plan = parse(words, exitCode);
        EXPECT_TRUE(plan) << words;
        return plan.value_or(ViewPlan{});
    }

    QTemporaryDir m_place;
    QString m_before;
};

TEST_F(Plan, IsWhatTheWordsSay) {
    const ViewPlan none = good("");
    EXPECT_EQ(none.window.source.kind, SourceKind::simulated);
    EXPECT_EQ(none.window.source.plan.wallFactor, 1.0);
    EXPECT_EQ(none.window.source.plan.scene.width, 384);
    EXPECT_EQ(none.window.source.framesASecond, 25.0);
    EXPECT_TRUE(none.window.source.directory.empty());
    EXPECT_FALSE(none.window.fresh || none.window.rangeGiven || none.verbose);
    EXPECT_TRUE(none.screenshot.isEmpty());
    EXPECT_EQ(none.window.folder, QDir::currentPath());
    const ViewPlan simulated = good("--size 160x120 --scene uniform:37.5 --range 1 --lens 6 "
                                    "--frame-rate 12.5 --clock wall:3 --camera . --verbose "
                                    "--seed 2147483647 --noise 2AD --inside -60 --fresh");
    const irmsim::Plan& plan = simulated.window.source.plan;
    EXPECT_EQ(plan.scene.kind, irmsim::ScenePlan::Kind::uniform);
    EXPECT_EQ(plan.scene.width, 160);
    EXPECT_EQ(plan.scene.from, 37.5);
    EXPECT_EQ(plan.range, 1);
    EXPECT_TRUE(simulated.window.rangeGiven);
    EXPECT_EQ(plan.lens, 6);
    EXPECT_EQ(plan.wallFactor, 3.0);
    EXPECT_EQ(plan.seed, 2147483647U);
    EXPECT_EQ(plan.noise, 2.0);
    EXPECT_EQ(plan.inside, -60.0);
    EXPECT_EQ(simulated.window.source.framesASecond, 12.5);
    EXPECT_EQ(simulated.window.source.directory, QDir::currentPath().toStdString());
    EXPECT_TRUE(simulated.window.fresh && simulated.verbose);
    EXPECT_EQ(good("--clock sim").window.source.plan.wallFactor, 0.0);
    const ViewPlan real = good("--real --size 160x120");
    EXPECT_EQ(real.window.source.kind, SourceKind::real);
    EXPECT_EQ(real.window.source.width, 160);
    const ViewPlan recording = good("--recording session.irmrec");
    EXPECT_EQ(recording.window.source.kind, SourceKind::recording);
    EXPECT_EQ(recording.window.source.recording,
              QDir::current().filePath(QStringLiteral("session.irmrec")).toStdString());
    const ViewPlan screenshot = good("--screenshot view.png");
    EXPECT_EQ(screenshot.screenshot, QDir::current().filePath(QStringLiteral("view.png")));
    EXPECT_TRUE(screenshot.window.fresh);
}

TEST_F(Plan, RefusesWhatCannotBe) {
    const struct {
        const char* words;
        const char* complaint;
    } cases[] = {
        {"--nonsense", "Unknown option 'nonsense'."},
        {"--range", "Missing value after '--range'."},
        {"window", "irmcore-view takes options only, not 'window'"},
        {"--range 2", "--range takes a whole number from 0 to 1, not '2'"},
        {"--lens 7", "--lens takes a whole number from 0 to 6, not '7'"},
        {"--lens 1.5", "--lens takes a whole number from 0 to 6, not '1.5'"},
        {"--size 320x240", "--size takes 384x288 or 160x120, not '320x240'"},
        {"--frame-rate 0", "--frame-rate takes a number from 0.1 to 1000, not '0'"},
        {"--frame-rate nan", "--frame-rate takes a number from 0.1 to 1000, not 'nan'"},
        {"--inside 121", "--inside takes a number from -60 to 120, not '121'"},
        {"--clock wall:0", "--clock takes sim, wall or wall:FACTOR, not 'wall:0'"},
        {"--noise loud", "--noise takes a deviation like 2AD or 50mK, not 'loud'"},
        {"--camera nowhere", "--camera takes a directory, not 'nowhere'"},
        {"--camera session.irmrec", "--camera takes a directory, not 'session.irmrec'"},
        {"--recording nowhere", "--recording takes a file, not 'nowhere'"},
        {"--recording .", "--recording takes a file, not '.'"},
        {"--real --recording session.irmrec", "--real and --recording do not go together"},
        {"--real --scene bench", "--scene goes with the simulated camera, not with --real"},
        {"--recording session.irmrec --size 160x120",
         "--size goes with the simulated camera, not with --recording"},
        {"--scene nowhere.pgm", "--scene: 'nowhere.pgm' is no scene: No such file or directory"},
        {"--scene uniform:2001", "--scene: '2001' is no number from -273.15 to 2000"},
    };
    for (const auto& c : cases) {
        const Complaints complaints;
        int exitCode = 0;
        EXPECT_FALSE(parse(c.words, exitCode)) << c.words;
        EXPECT_EQ(exitCode, 3) << c.words;
        ASSERT_EQ(complaints.all().size(), 1) << c.words;
        EXPECT_EQ(complaints.all()[0].toStdString(), c.complaint);
    }
}

TEST_F(Plan, HelpAndVersionEndWell) {
    const std::pair<const char*, const char*> cases[] = {
        {"--help --range 9", "Shows a thermal camera live"}, {"--version", "irmcore-view "}};
    for (const auto& [words, text] : cases) {
        int exitCode = 3;
        ::testing::internal::CaptureStdout();
        const auto plan = parse(words, exitCode);
        const std::string printed = ::testing::internal::GetCapturedStdout();
        EXPECT_FALSE(plan);
        EXPECT_EQ(exitCode, 0);
        EXPECT_NE(printed.find(text), std::string::npos) << printed;
    }
}

} // namespace
} // namespace irmcore::view::testing
