// The panels: what is typed there is what is wished.
#include "apps/view/window/measurementpanel.h"
#include "apps/view/window/picturepanel.h"
#include "objects.h"
#include "synthetic.h"

#include <gtest/gtest.h>

#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QPushButton>
#include <QSlider>

#include <cmath>

namespace irmcore::view::testing {
namespace {

double value(QObject& panel, const char* name) { return in<QDoubleSpinBox>(panel, name).value(); }

TEST(MeasurementPanel, FieldsReachTheParameters) {
    const struct {
        const char* name;
        double Parameters::*parameter;
        double perUnit, standard, low, high, typed;
    } cases[] = {
        {"emissivity", &Parameters::emissivity, 1.0, 0.95, 0.01, 1.0, 0.425},
        {"distance", &Parameters::distance, 1.0, 5.0, 0.0, 1000.0, 12.5},
        {"humidity", &Parameters::humidity, 100.0, 60.0, 1.0, 100.0, 35.0},
        {"air", &Parameters::air, 1.0, 25.0, -40.0, 49.0, -3.5},
        {"reflected", &Parameters::reflected, 1.0, 25.0, -40.0, 100.0, 71.5},
        {"offset", &Parameters::offset, 1.0, 0.0, -100.0, 100.0, -0.1},
    };
    MeasurementPanel panel;
    int told = 0;
    QObject::connect(&panel, &MeasurementPanel::changed, [&] { ++told; });
    for (const auto& c : cases) {
        EXPECT_DOUBLE_EQ(value(panel, c.name), c.standard) << c.name;
        for (const auto& [typed, taken] :
             {std::pair(-1e9, c.low), {1e9, c.high}, {c.typed, c.typed}}) {
            const int before = told;
            in<QDoubleSpinBox>(panel, c.name).setValue(typed);
            EXPECT_DOUBLE_EQ(panel.parameters().*c.parameter * c.perUnit, taken) << c.name;
            EXPECT_EQ(told, before + 1) << c.name;
        }
        // What is remembered is held to the same limits.
        const Parameters shown = panel.parameters();
        for (const double wrong : {c.low - 0.001, c.high + 0.001, std::nan("")}) {
            Parameters remembered = shown;
            remembered.*c.parameter = wrong / c.perUnit;
            const Parameters checked = MeasurementPanel::checked(remembered);
            EXPECT_DOUBLE_EQ(checked.*c.parameter * c.perUnit, c.standard) << c.name << wrong;
            remembered.*c.parameter = checked.*c.parameter;
            EXPECT_EQ(checked, remembered) << "the others stay";
        }
    }
    choose(panel, "range", 1);
    EXPECT_EQ(panel.range(), 1);
    in<QPushButton>(panel, "parameterDefaults").click();
    EXPECT_EQ(panel.parameters(), Parameters{});
    EXPECT_EQ(panel.range(), 1) << "no parameter";
    EXPECT_EQ(told, 20);
    panel.set({0.5, 1.0, 0.07, 2.0, 3.0, 4.0}, 0); // quietly
    EXPECT_EQ(panel.parameters(), (Parameters{0.5, 1.0, 0.07, 2.0, 3.0, 4.0}));
    EXPECT_EQ(told, 20);
}

TEST(PicturePanel, ChoicesReachTheLook) {
    PicturePanel panel;
    int told = 0;
    QObject::connect(&panel, &PicturePanel::changed, [&] { ++told; });
    EXPECT_EQ(panel.look(), Look{});
    EXPECT_EQ(panel.isotherm(), IsothermWish{});
    auto& palette = in<QComboBox>(panel, "palette");
    const std::pair<const char*, COLOR_TABLE> palettes[] = {{"Iron", COLOR_IRON},
                                                            {"Rainbow", COLOR_RAINBOW},
                                                            {"Grey", COLOR_GREY},
                                                            {"Grey inverted", COLOR_GREY_INVERTED},
                                                            {"Sepia", COLOR_SPIA},
                                                            {"Blue to red", COLOR_BLUE_RED},
                                                            {"Hot and cold", COLOR_HOT_COLD},
                                                            {"Feather", COLOR_FEATHER}};
    for (const auto& [name, index] : palettes) {
        palette.setCurrentText(QLatin1String(name));
        EXPECT_EQ(panel.look().palette, index) << name;
    }
    const struct {
        Image_Mode_t mode;
        bool inset, blend;
    } modes[] = {{IMAGE_CCD, false, false},        {IMAGE_CCD_PIPE_IR, true, false},
                 {IMAGE_IR_PIPE_CCD, true, false}, {IMAGE_CCD_MIX_IR, false, true},
                 {IMAGE_IR_MIX_CCD, false, true},  {IMAGE_FUSION, false, false},
                 {IMAGE_BLANK, false, false},      {IMAGE_IR, false, false}};
    for (const auto& c : modes) {
        choose(panel, "composition", c.mode);
        EXPECT_EQ(panel.look().mode, c.mode);
        EXPECT_EQ(in<QComboBox>(panel, "inset").isEnabled(), c.inset) << c.mode;
        EXPECT_EQ(in<QSlider>(panel, "blend").isEnabled(), c.blend) << c.mode;
    }
    choose(panel, "inset", POSITION_TOP_RIGHT);
    in<QSlider>(panel, "blend").setValue(37);
    EXPECT_EQ(panel.look().inset, POSITION_TOP_RIGHT);
    EXPECT_DOUBLE_EQ(panel.look().blend, 0.37);
    in<QGroupBox>(panel, "isotherm").setChecked(true);
    const struct {
        int type;
        bool low, high;
    } types[] = {{0, true, false}, {2, false, true}, {1, true, true}};
    for (const auto& c : types) {
        choose(panel, "isothermType", c.type);
        EXPECT_EQ(panel.isotherm().type, c.type);
        EXPECT_EQ(in<QDoubleSpinBox>(panel, "isothermLow").isEnabled(), c.low) << c.type;
        EXPECT_EQ(in<QDoubleSpinBox>(panel, "isothermHigh").isEnabled(), c.high) << c.type;
    }
    in<QComboBox>(panel, "isothermColour").setCurrentText(QStringLiteral("Red"));
    EXPECT_EQ(panel.isotherm(), (IsothermWish{true, 1, 30.0, 40.0, "Red"}));
    const Look look{COLOR_SPIA, LEVELSPAN_HAND, -5.5, 70.5, IMAGE_FUSION, POSITION_TOP_LEFT, 0.29};
    const IsothermWish isotherm{false, 2, 12.5, 13.5, "White"};
    const int before = told;
    panel.set(look, isotherm);
    EXPECT_EQ(panel.look(), look);
    EXPECT_EQ(panel.isotherm(), isotherm);
    EXPECT_EQ(told, before);
    EXPECT_EQ(told, 7 + 8 + 2 + 1 + 3 + 1);
}

TEST(PicturePanel, EndsNeverCross) {
    const struct {
        double low, high; ///< before
        bool lowTyped;
        double typed, lowAfter, highAfter;
    } cases[] = {
        {20, 40, true, 50, 50, 50.5},     {20, 40, true, 39.5, 39.5, 40},
        {20, 40, true, 39.6, 39.6, 40.1}, {20, 40, false, 10, 9.5, 10},
        {20, 40, true, 1e9, 999.5, 1000}, {20, 40, false, -1e9, -100, -99.5},
        {20, 40, true, -1e9, -100, 40},   {20, 40, false, 1e9, 20, 1000},
    };
    for (const auto& c : cases) {
        PicturePanel panel;
        panel.set({COLOR_IRON, LEVELSPAN_HAND, c.low, c.high}, {true, 1, c.low, c.high, "Red"});
        in<QDoubleSpinBox>(panel, c.lowTyped ? "windowLow" : "windowHigh").setValue(c.typed);
        in<QDoubleSpinBox>(panel, c.lowTyped ? "isothermLow" : "isothermHigh").setValue(c.typed);
        EXPECT_DOUBLE_EQ(panel.look().low, c.lowAfter) << c.typed;
        EXPECT_DOUBLE_EQ(panel.look().high, c.highAfter) << c.typed;
        EXPECT_DOUBLE_EQ(panel.isotherm().low, c.lowAfter) << c.typed;
        EXPECT_DOUBLE_EQ(panel.isotherm().high, c.highAfter) << c.typed;
        // So what can be typed comes back at the next start.
        EXPECT_EQ(PicturePanel::checked(panel.look()), panel.look()) << c.typed;
        EXPECT_EQ(PicturePanel::checked(panel.isotherm()), panel.isotherm()) << c.typed;
    }
}

TEST(PicturePanel, TheNarrowestWindowComesBack) {
    PicturePanel panel;
    for (int tenths = -1000; tenths <= 9995; ++tenths) {
        panel.set({COLOR_IRON, LEVELSPAN_HAND, tenths / 10.0, tenths / 10.0 + 0.5}, {});
        ASSERT_EQ(PicturePanel::checked(panel.look()), panel.look()) << tenths;
    }
}

TEST(PicturePanel, AWindowByHandBeginsAsTheOneShown) {
    const struct {
        Value low, high;
        double lowAfter, highAfter;
    } cases[] = {
        {celsius(12.34), celsius(56.78), 12.3, 56.8},
        {celsius(30.0), celsius(30.1), 30.0, 30.5}, // as narrow as can be
        {{{}, 0, "L", -20.0}, celsius(56.78), 20.0, 40.0},
        {celsius(12.34), {}, 20.0, 40.0},
    };
    for (const auto& c : cases) {
        PicturePanel panel;
        Snapshot snapshot = synthetic();
        snapshot.barLow = c.low;
        snapshot.barHigh = c.high;
        panel.show(snapshot);
        choose(panel, "window", LEVELSPAN_ZFT);
        EXPECT_EQ(panel.look().low, 20.0);
        EXPECT_FALSE(in<QDoubleSpinBox>(panel, "windowLow").isEnabled());
        choose(panel, "window", LEVELSPAN_HAND);
        EXPECT_EQ(panel.look().window, LEVELSPAN_HAND);
        EXPECT_DOUBLE_EQ(panel.look().low, c.lowAfter);
        EXPECT_DOUBLE_EQ(panel.look().high, c.highAfter);
        EXPECT_TRUE(in<QDoubleSpinBox>(panel, "windowLow").isEnabled());
    }
}

TEST(PicturePanel, ComposesWhereThatHasAnEffect) {
    const struct {
        bool mixes;
        bool visible;
        bool explains;
    } cases[] = {
        {true, true, false}, {true, false, true}, {false, false, true}, {true, true, false}};
    PicturePanel panel;
    choose(panel, "composition", IMAGE_FUSION);
    Snapshot snapshot = synthetic();
    for (const auto& c : cases) {
        snapshot.mixes = c.mixes;
        snapshot.hasVisible = c.visible;
        panel.show(snapshot);
        panel.show(snapshot);
        auto& box = in<QComboBox>(panel, "composition");
        for (int row = 0; row < box.count(); ++row) {
            const int mode = box.itemData(row).toInt();
            const bool enabled =
                (box.model()->flags(box.model()->index(row, 0)) & Qt::ItemIsEnabled) != 0;
            EXPECT_EQ(enabled, c.mixes || mode == IMAGE_IR) << mode;
        }
        EXPECT_EQ(!box.toolTip().isEmpty(), c.explains);
        EXPECT_EQ(panel.look().mode, IMAGE_FUSION); // it comes back with the next camera
    }
}

} // namespace
} // namespace irmcore::view::testing
