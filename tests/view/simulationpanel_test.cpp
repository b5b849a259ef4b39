// The simulated camera's surroundings, as they are chosen.
#include "apps/view/window/simulationpanel.h"
#include "objects.h"

#include <QAbstractButton>
#include <QDoubleSpinBox>
#include <QFile>
#include <QFileDialog>
#include <QTemporaryDir>
#include <QTest>

namespace irmcore::view::testing {
namespace {

using Kind = irmsim::ScenePlan::Kind;

class SimulationTest : public ::testing::Test {
protected:
    void SetUp() override {
        QObject::connect(&m_panel, &SimulationPanel::changed, [this] { ++m_told; });
        QObject::connect(&m_panel, &SimulationPanel::said,
                         [this](const QString& s) { m_said = s; });
        QObject::connect(&m_panel, &SimulationPanel::sceneWanted,
                         [this](const irmsim::ScenePlan& s) { m_scenes.push_back(s); });
        QObject::connect(&m_panel, &SimulationPanel::warmUpWanted,
                         [this](double to, double time) { m_warmUps.emplace_back(to, time); });
    }
    template <typename Widget>
    Widget& in(const char* name) {
        return testing::in<Widget>(m_panel, name);
    }
    /// The next entry of the list of scenes, as with a key.
    void nextScene() { QTest::keyClick(&in<QComboBox>("scene"), Qt::Key_Down); }

    SimulationPanel m_panel{QString()};
    int m_told = 0;
    QString m_said;
    std::vector<irmsim::ScenePlan> m_scenes;
    std::vector<std::pair<double, double>> m_warmUps;
};

TEST_F(SimulationTest, ShowsScenes) {
    m_panel.reset(0, {160, 120});
    EXPECT_TRUE(m_scenes.empty());
    nextScene();
    in<QDoubleSpinBox>("sceneUniform").setValue(-60.5); // below its limit
    nextScene();
    in<QDoubleSpinBox>("sceneTo").setValue(601.0);
    in<QDoubleSpinBox>("sceneFrom").setValue(12.5);
    QTest::keyClick(&in<QComboBox>("scene"), Qt::Key_Home);
    const struct {
        Kind kind;
        double from, to;
    } expected[] = {{Kind::uniform, 30.0, 80.0},   {Kind::uniform, -60.0, 80.0},
                    {Kind::gradient, 20.0, 80.0},  {Kind::gradient, 20.0, 600.0},
                    {Kind::gradient, 12.5, 600.0}, {Kind::bench, 12.5, 600.0}};
    ASSERT_EQ(m_scenes.size(), std::size(expected));
    for (std::size_t i = 0; i < m_scenes.size(); ++i) {
        EXPECT_EQ(m_scenes[i].kind, expected[i].kind) << i;
        EXPECT_EQ(m_scenes[i].from, expected[i].from) << i;
        EXPECT_EQ(m_scenes[i].to, expected[i].to) << i;
        EXPECT_EQ(m_scenes[i].width, 160);
        EXPECT_EQ(m_scenes[i].height, 120);
    }
    EXPECT_EQ(m_told, 0);
}

TEST_F(SimulationTest, ShowsAPgmFileOrSaysWhyNot) {
    for (int i = 0; i < 3; ++i)
        nextScene();
    EXPECT_EQ(m_scenes.size(), 2U); // not before a file is chosen
    auto* const dialog = m_panel.findChild<QFileDialog*>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_FALSE(dialog->isModal());
    const QTemporaryDir place;
    const QByteArray head("P5\n160 120\n65535\n");
    const struct {
        const char* name;
        QByteArray bytes;
        const char* said;
        std::size_t scenes;
    } cases[] = {
        {"missing.pgm", {}, "is no scene: No such file or directory", 2},
        {"broken.pgm", "P5\n160 12", "is no scene: ", 2},
        {"short.pgm", head + QByteArray(2 * 160 * 120 - 1, 'x'), "is no scene: ", 2},
        {"fine.pgm", head + QByteArray(2 * 160 * 120, 'x'), "The camera looks at fine.pgm.", 3},
    };
    for (const auto& c : cases) {
        const QString file = place.filePath(QLatin1String(c.name));
        if (!c.bytes.isEmpty()) {
            QFile out(file);
            ASSERT_TRUE(out.open(QIODevice::WriteOnly));
            out.write(c.bytes);
        }
        Q_EMIT dialog->fileSelected(file);
        EXPECT_TRUE(m_said.contains(QLatin1String(c.said))) << m_said.toStdString();
        EXPECT_TRUE(m_said.contains(QLatin1String(c.name))) << m_said.toStdString();
        EXPECT_EQ(m_scenes.size(), c.scenes) << c.name;
    }
    std::string error;
    const auto scene = m_scenes.back().draw(error);
    ASSERT_TRUE(scene) << error;
    EXPECT_NEAR(scene->at(7, 9), 35.25, 0.001); // "xx" is 30840 hundredths of a kelvin
    QTest::keyClick(&in<QComboBox>("scene"), Qt::Key_Up);
    EXPECT_EQ(m_scenes.back().kind, Kind::gradient);
    EXPECT_TRUE(m_scenes.back().pgm.empty());
}

TEST_F(SimulationTest, ChangesTheCamera) {
    in<QAbstractButton>("warmUp").click();
    in<QDoubleSpinBox>("warmTo").setValue(81.0);
    in<QDoubleSpinBox>("timeConstant").setValue(-1.0);
    in<QAbstractButton>("warmUp").click();
    EXPECT_EQ(m_warmUps, (std::vector<std::pair<double, double>>{{45.0, 600.0}, {80.0, 0.0}}));
    EXPECT_EQ(m_said, QString::fromUtf8("The camera goes to 80.0 °C inside."));
    EXPECT_EQ(m_told, 0);
    in<QComboBox>("simulatedLens").setCurrentIndex(6);
    in<QAbstractButton>("coreSilent").click();
    in<QAbstractButton>("unplug").click();
    EXPECT_EQ(m_told, 3);
    Simulation simulation = m_panel.simulation();
    EXPECT_EQ(simulation.lens, 6);
    EXPECT_TRUE(simulation.coreSilent);
    EXPECT_TRUE(simulation.unplugged);
    EXPECT_FALSE(simulation.target);
    EXPECT_FALSE(in<QDoubleSpinBox>("targetTemp").isEnabled());
    in<QAbstractButton>("target").click();
    simulation = m_panel.simulation();
    ASSERT_TRUE(simulation.target);
    EXPECT_EQ(*simulation.target, (SimulatedTarget{{192, 144}, 38, 38, 80.0}));
    in<QDoubleSpinBox>("targetTemp").setValue(600.5);
    m_panel.moveTarget({3, 4});
    simulation = m_panel.simulation();
    EXPECT_EQ(*simulation.target, (SimulatedTarget{{3, 4}, 38, 38, 600.0}));
    EXPECT_EQ(m_told, 6);
    m_panel.reset(2, {160, 120}); // another camera: quietly
    simulation = m_panel.simulation();
    EXPECT_EQ(simulation.lens, 2);
    EXPECT_FALSE(simulation.coreSilent || simulation.unplugged || simulation.target);
    EXPECT_EQ(m_told, 6);
    in<QAbstractButton>("target").click();
    EXPECT_EQ(*m_panel.simulation().target, (SimulatedTarget{{80, 60}, 16, 16, 80.0}));
}

} // namespace
} // namespace irmcore::view::testing
