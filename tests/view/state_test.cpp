// How the window says that the camera is.
#include "apps/view/window/camerapanel.h"
#include "apps/view/window/statusline.h"
#include "objects.h"
#include "synthetic.h"

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QStatusBar>

namespace irmcore::view::testing {
namespace {

TEST(CameraPanel, SaysHowTheCameraIs) {
    QAction freeze;
    QAction calibrate;
    CameraPanel panel(freeze, calibrate);
    int told = 0;
    QObject::connect(&panel, &CameraPanel::changed, [&] { ++told; });
    const struct {
        bool present, calibrating;
        int count;
        double since;
        CoreState core;
        const char *shutter, *drift, *last, *state;
    } cases[] = {
        {true, false, 0, 0.0, CoreState::unknown, "26.5 °C", "–", "none yet", "not asked yet"},
        {true, false, 1, 119.9, CoreState::answers, "26.5 °C", "−0.3 °C since then", "119 s ago",
         "answers"},
        {true, false, 2, 125.0, CoreState::silent, "26.5 °C", "−0.3 °C since then", "2 min 5 s ago",
         "does not answer"},
        {true, true, 2, 125.0, CoreState::answers, "26.5 °C", "−0.3 °C since then", "going on",
         "answers"},
        {false, false, 2, 1.0, CoreState::silent, "–", "–", "1 s ago", "does not answer"},
    };
    for (const auto& c : cases) {
        Snapshot snapshot = synthetic();
        snapshot.present = c.present;
        snapshot.calibrating = c.calibrating;
        snapshot.calibrations = c.count;
        snapshot.sinceCalibration = c.since;
        snapshot.core = c.core;
        snapshot.shutterTemp = 26.5;
        snapshot.drift = -0.3;
        panel.show(snapshot);
        const auto text = [&](const char* name) {
            return in<QLabel>(panel, name).text().toStdString();
        };
        EXPECT_EQ(text("shutterTemp"), c.shutter);
        EXPECT_EQ(text("drift"), c.drift);
        EXPECT_EQ(text("sinceCalibration"), c.last);
        EXPECT_EQ(text("calibrations"), std::to_string(c.count));
        EXPECT_EQ(text("coreState"), c.state);
    }
    EXPECT_TRUE(panel.calibrates());
    panel.setCalibrates(false);
    EXPECT_EQ(told, 0);
    in<QCheckBox>(panel, "automaticCalibration").click();
    EXPECT_TRUE(panel.calibrates());
    EXPECT_EQ(told, 1);
}

TEST(StatusLine, ShowsTheWorstTroubleWhateverIsSaid) {
    QStatusBar bar;
    StatusLine line(bar);
    Snapshot snapshot = synthetic();
    snapshot.framesASecond = 24.96;
    const auto text = [&](const char* name) { return in<QLabel>(bar, name).text().toStdString(); };
    line.show(snapshot, QStringLiteral("37.0 °C at 1, 2"));
    EXPECT_EQ(text("trouble"), "simulated camera · 25.0 pictures/s");
    EXPECT_EQ(text("pointer"), "37.0 °C at 1, 2");
    snapshot.troubles = {"The camera <b>went away</b>.", "The core is silent."};
    line.show(snapshot, {});
    line.say(QStringLiteral("Saved it."));
    EXPECT_EQ(text("trouble"), "⚠  The camera <b>went away</b>.");
    EXPECT_EQ(in<QLabel>(bar, "trouble").textFormat(), Qt::PlainText);
    EXPECT_EQ(in<QLabel>(bar, "trouble").toolTip().toStdString(),
              "The camera <b>went away</b>.\nThe core is silent.");
    EXPECT_FALSE(in<QLabel>(bar, "trouble").styleSheet().isEmpty());
    EXPECT_EQ(text("message"), "Saved it.");
    EXPECT_EQ(text("pointer"), "");
    snapshot.troubles.clear();
    line.show(snapshot, {});
    EXPECT_EQ(text("trouble"), "simulated camera · 25.0 pictures/s");
    EXPECT_TRUE(in<QLabel>(bar, "trouble").toolTip().isEmpty());
    EXPECT_TRUE(in<QLabel>(bar, "trouble").styleSheet().isEmpty());
    EXPECT_EQ(text("message"), "Saved it.");
}

} // namespace
} // namespace irmcore::view::testing
