// What is remembered: exactly, and nothing but what can be.
#include "apps/view/window/settings.h"
#include "texts.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <map>

namespace irmcore::view::testing {
namespace {

using Texts = std::map<std::string, std::string>;

/// What was read, by the keys of the file.
Texts textsOf(const Remembered& r) {
    Texts texts;
    const auto add = [&](const char* key, double value) {
        texts[key] = QString::number(value, 'g', 17).toStdString();
    };
    add("parameters/emissivity", r.parameters.emissivity);
    add("parameters/distance", r.parameters.distance);
    add("parameters/humidity", r.parameters.humidity);
    add("parameters/air", r.parameters.air);
    add("parameters/reflected", r.parameters.reflected);
    add("parameters/offset", r.parameters.offset);
    add("look/palette", r.look.palette);
    add("look/window", r.look.window);
    add("look/mode", r.look.mode);
    add("look/inset", r.look.inset);
    add("look/low", r.look.low);
    add("look/high", r.look.high);
    add("look/blend", r.look.blend);
    add("isotherm/on", r.isotherm.on ? 1 : 0);
    add("isotherm/type", r.isotherm.type);
    add("isotherm/low", r.isotherm.low);
    add("isotherm/high", r.isotherm.high);
    texts["isotherm/colour"] = r.isotherm.colour;
    add("range", r.range);
    add("marks", r.marks ? 1 : 0);
    add("calibrates", r.calibrates ? 1 : 0);
    texts["tools"] = textOf(r.tools);
    return texts;
}

class Settings : public ::testing::Test {
protected:
    QString file(const char* name) const { return m_place.filePath(QLatin1String(name)); }
    void SetUp() override {
        Remembered r;
        r.parameters = {0.83, 0.1, 0.07, -39.9, 99.9, 0.3};
        r.look = {COLOR_FEATHER, LEVELSPAN_HAND,     -12.3, 45.6,
                  IMAGE_BLANK,   POSITION_TOP_RIGHT, 0.29};
        r.isotherm = {true, 2, 31.7, 39.9, "Blue"};
        r.range = 1;
        r.marks = false;
        r.calibrates = false;
        r.tools = {{{4, ToolKind::line, {{383, 287}, {0, 0}}}, 12},
                   {{9, ToolKind::spot, {{1, 2}, {1, 2}}}, 3},
                   {{2, ToolKind::area, {{10, 20}, {110, 120}}}, 3}};
        QSettings settings(file("good.ini"), QSettings::IniFormat);
        writeRemembered(settings, r);
    }
    /// What is read after one key was changed. Each time another file: what is written stays in
    /// the application as it was given.
    Texts read(const char* key = nullptr, const QVariant& value = {}) {
        const QString changed = m_place.filePath(QStringLiteral("%1a.ini").arg(++m_files));
        const QString fresh = m_place.filePath(QStringLiteral("%1b.ini").arg(m_files));
        QFile::copy(file("good.ini"), changed);
        if (key != nullptr) {
            QSettings settings(changed, QSettings::IniFormat);
            settings.setValue(QLatin1String(key), value);
        }
        QFile::copy(changed, fresh);
        QSettings settings(fresh, QSettings::IniFormat);
        return textsOf(readRemembered(settings));
    }

    QTemporaryDir m_place;
    int m_files = 0;
};

TEST_F(Settings, ComeBackExactly) {
    const Texts expected{
        {"parameters/emissivity", "0.82999999999999996"},
        {"parameters/distance", "0.10000000000000001"},
        {"parameters/humidity", "0.070000000000000007"},
        {"parameters/air", "-39.899999999999999"},
        {"parameters/reflected", "99.900000000000006"},
        {"parameters/offset", "0.29999999999999999"},
        {"look/palette", "7"},
        {"look/window", "2"},
        {"look/mode", "7"},
        {"look/inset", "1"},
        {"look/low", "-12.300000000000001"},
        {"look/high", "45.600000000000001"},
        {"look/blend", "0.28999999999999998"},
        {"isotherm/on", "1"},
        {"isotherm/type", "2"},
        {"isotherm/low", "31.699999999999999"},
        {"isotherm/high", "39.899999999999999"},
        {"isotherm/colour", "Blue"},
        {"range", "1"},
        {"marks", "0"},
        {"calibrates", "0"},
        {"tools", "L12 383,287 0,0; S3 1,2 1,2; A3 10,20 110,120"},
    };
    EXPECT_EQ(read(), expected);
}

TEST_F(Settings, FallBackOneByOne) {
    const Texts good = read();
    QSettings nothing(file("nothing.ini"), QSettings::IniFormat);
    const Texts defaults = textsOf(readRemembered(nothing));
    EXPECT_EQ(defaults.at("parameters/humidity"), "0.59999999999999998");
    EXPECT_EQ(defaults.at("isotherm/on"), "0");
    EXPECT_EQ(defaults.at("marks"), "1");
    const struct {
        const char* key;
        std::vector<const char*> wrong;
    } cases[] = {
        {"parameters/emissivity", {"0", "1.01", "-0.5"}},
        {"parameters/distance", {"-0.1", "1000.5"}},
        {"parameters/humidity", {"0", "1.01"}},
        {"parameters/air", {"-40.1", "49.1"}},
        {"parameters/reflected", {"-40.1", "100.1"}},
        {"parameters/offset", {"-100.1", "100.1"}},
        {"look/palette", {"-1", "8", "99999999999", "1.5"}},
        {"look/window", {"-1", "3"}},
        {"look/mode", {"-1", "8"}},
        {"look/inset", {"-1", "4"}},
        {"look/low", {"-100.1", "999.6"}},
        {"look/high", {"1000.1", "-99.6"}},
        {"look/blend", {"-0.01", "1.01"}},
        {"isotherm/on", {"2", "yes"}},
        {"isotherm/type", {"-1", "3"}},
        {"isotherm/low", {"-100.1", "999.6"}},
        {"isotherm/high", {"1000.1", "-99.6"}},
        {"isotherm/colour", {"blue", "Transparent"}},
        {"range", {"-1", "2"}},
        {"marks", {"2", "yes"}},
        {"calibrates", {"2", "no"}},
        {"tools", {}},
    };
    EXPECT_EQ(std::size(cases), good.size());
    for (const auto& c : cases) {
        Texts expected = good;
        expected[c.key] = defaults.at(c.key);
        auto wrong = c.wrong;
        wrong.insert(wrong.end(), {"", "nonsense \x01", "nan", "inf", "-1e999", "@Invalid()"});
        for (const char* text : wrong)
            EXPECT_EQ(read(c.key, QString::fromLatin1(text)), expected) << c.key << " " << text;
        EXPECT_EQ(read(c.key, QStringList{QStringLiteral("1"), QStringLiteral("0")}), expected)
            << c.key;
    }
    // Ends that would cross are both the default.
    const struct {
        const char *key, *crossing, *other;
    } ends[] = {{"look/low", "45.2", "look/high"},
                {"look/high", "-12", "look/low"},
                {"isotherm/low", "39.5", "isotherm/high"},
                {"isotherm/high", "32.1", "isotherm/low"}};
    for (const auto& c : ends) {
        Texts expected = good;
        for (const char* key : {c.key, c.other})
            expected[key] = defaults.at(key);
        EXPECT_EQ(read(c.key, QString::fromLatin1(c.crossing)), expected) << c.key;
    }
}

TEST_F(Settings, LeaveOutToolsThatCannotBe) {
    const struct {
        QStringList tools;
        const char* read;
    } cases[] = {
        {{"spot 1 0 0 0 0", "spot 2 383 287 383 287"}, "S1 0,0 0,0; S2 383,287 383,287"},
        {{"spot 1 5 6 300 200"}, "S1 5,6 5,6"}, // a spot is one pixel
        {{"spot 1 384 0 384 0", "spot 2 0 288 0 288", "spot 3 -1 0 0 0"}, ""},
        {{"line 1 0 0 384 0", "line 2 0 0 99999999999 0", "line 3 1e2 0 0 0"}, ""},
        {{"spot 0 1 1 1 1", "spot -1 1 1 1 1", "spot 100 1 1 1 1", "spot 99 1 1 1 1"},
         "S99 1,1 1,1"},
        {{"spot 1 1 1 1 1", "spot 1 2 2 2 2", "area 1 2 2 3 3"}, "S1 1,1 1,1; A1 2,2 3,3"},
        {{"circle 1 1 1 1 1", "Spot 1 1 1 1 1", "", "spot", "spot 1 1 1 1", "spot 1 1 1 1 1 1"},
         ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(read("tools", c.tools).at("tools"), c.read);
    QStringList many;
    for (int i = 1; i <= 90; ++i)
        many += QStringLiteral("line %1 1 1 9 9").arg(i);
    QSettings settings(file("many.ini"), QSettings::IniFormat);
    settings.setValue(QStringLiteral("tools"), many);
    Tools tools;
    tools.restore(readRemembered(settings).tools);
    EXPECT_EQ(tools.all().size(), 8U);
}

} // namespace
} // namespace irmcore::view::testing
