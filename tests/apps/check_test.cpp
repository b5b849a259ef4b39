// What `irmcore check` builds on: where QSettings reads a key from, the name that was meant, the
// count that stands out.
#include "apps/check/curve.h"
#include "apps/check/inichecks.h"
#include "apps/check/inifile.h"
#include "apps/check/names.h"

#include <QFile>
#include <QSet>
#include <QSettings>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace irmcore::app::check;

/// QSettings on files of a temporary place, each under a name of its own: it remembers files.
class Place {
public:
    QString write(const QByteArray& text) {
        const QString name = m_place.filePath(QString::number(++m_files));
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        return name;
    }
    QStringList keys(const QByteArray& text) {
        QStringList keys = QSettings(write(text), QSettings::NativeFormat).allKeys();
        keys.sort();
        return keys;
    }

private:
    QTemporaryDir m_place;
    int m_files = 0;
};

QStringList scannedKeys(const IniFile& file) {
    QSet<QString> paths;
    for (const IniEntry& entry : file.entries)
        paths.insert(entry.path);
    QStringList keys = paths.values();
    keys.sort();
    return keys;
}

/// The text with some of its lines, from 1 on, made comments.
QByteArray without(const QByteArray& text, int first, int last) {
    QList<QByteArray> lines = text.split('\n');
    for (int i = first; i <= last; ++i)
        lines[i - 1] = ";";
    return lines.join('\n');
}

/// The keys are those of QSettings, and each goes with the lines that are said to hold it, alone.
void expectAgreement(Place& place, const QByteArray& text) {
    const IniFile file = scanIni(text);
    const QStringList keys = scannedKeys(file);
    ASSERT_EQ(keys, place.keys(text)) << text.toStdString();
    for (const IniEntry& entry : file.entries) {
        const auto same = std::count_if(file.entries.begin(), file.entries.end(),
                                        [&](const IniEntry& e) { return e.path == entry.path; });
        if (same > 1 || text.contains('\r'))
            continue; // the key stays; lines are cut at "\n" alone
        QStringList rest = keys;
        rest.removeAll(entry.path);
        EXPECT_EQ(rest, place.keys(without(text, entry.line, entry.lastLine)))
            << text.toStdString() << "\n-- " << entry.path.toStdString();
    }
}

TEST(Check, linesAreThoseOfQSettings) {
    struct Case {
        const char* text;
        const char* entries; ///< path:line, or path:line-last, of each
    };
    const Case cases[] = {
        {"a=1\n\n[G]\nb=2\n ; c=3\n\td = 4 \n", "a:1 G/b:4 G/d:6"},
        {"a=1;b=2\nc=3 ; d=4\n;e=5\\\nf=6\n", "a:1 c:2 f:4"},
        {"a=\"x\ny=1\"\nb=2\n", "a:1-2 b:3"},
        {"a=\"x\nb=1\nc=2\n", "a:1-3"},
        {"a=x\\\n", "a:1"},
        {"a=x\\\nb=1\nc=2\n", "a:1-2 c:3"},
        {"a=\"x\\\"\"\nb=1\n", "a:1 b:2"},
        {"\"a=1\"=2\nb=3\n", "\"a=1\":1 b:2"},
        {"a%62%U0063=1\n%zz=2\nd\\e=3\nf%4\n%=5\n", "abc:1 %zz:2 d/e:3 %:5"},
        {"[G\na=1\n[ H ]x=2\nb=3\n[]\nc=4\n", "G/a:2 H/b:4 /c:6"},
        {"[General]\na=1\n[%General]\nb=2\n[G]\nc=3\n[general]\nd=4\n",
         "a:2 General/b:4 G/c:6 d:8"},
        {"# a=1\nb\n=2\nc==3\n", "# a:1 :3 c:4"},
        {"[G]\na=1\na=2\n[H]\na=3\n[G]\na=4\n", "G/a:2 G/a:3 H/a:5 G/a:7"},
        {"a=1\r\n[G]\r\nb=2\rc=3\n", "a:1 G/b:3 G/c:4"},
        {"\xEF\xBB\xBF[G]\na=1\n", "G/a:2"},
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0) // Qt 5 takes the line's end into the key
        {"a=1\n\\\n=2\nb=3", "a:1 /:2-3 b:4"},
#endif
        {"", ""},
    };
    Place place;
    for (const Case& c : cases) {
        const QByteArray text(c.text);
        const IniFile file = scanIni(text);
        QStringList found;
        for (const IniEntry& e : file.entries)
            found +=
                e.path + QLatin1Char(':') + QString::number(e.line) +
                (e.lastLine > e.line ? QLatin1Char('-') + QString::number(e.lastLine) : QString());
        EXPECT_EQ(found.join(QLatin1Char(' ')).toStdString(), c.entries) << c.text;
        expectAgreement(place, text);
    }
}

TEST(Check, theLastOfSeveralWinsWhereverItStands) {
    Place place;
    const QByteArray text = "[G]\na=1\n[H]\na=2\n[G]\na=3\n[H]\na=4\nb=5\n";
    const IniFile file = scanIni(text);
    const QSettings settings(place.write(text), QSettings::NativeFormat);
    for (const auto& [key, line] : {std::pair("G/a", 6), {"H/a", 8}, {"H/b", 9}, {"G/b", 0}})
        EXPECT_EQ(file.lineOf(QLatin1String(key)), line);
    EXPECT_EQ(settings.value(QStringLiteral("G/a")).toInt(), 3);
    EXPECT_EQ(settings.value(QStringLiteral("H/a")).toInt(), 4);
}

TEST(Check, whateverTheTextScannerAndQSettingsAgree) {
    const char* const pieces[] = {"a",     "b",     "=", "\n", "\r",  " ", "\t",    ";",
                                  "\"",    "\\",    "[", "]",  "%41", "%", "[G]\n", "[General]\n",
                                  "a=1\n", "\nb=2", "#", ",",  "/",   "x"};
    std::mt19937 random(1);
    Place place;
    for (int i = 0; i < 1000; ++i) {
        QByteArray text;
        for (auto n = random() % 24; n > 0; --n)
            text += pieces[random() % std::size(pieces)];
        expectAgreement(place, text);
    }
}

/// What is said of a value: nothing and the value, or the code and what is taken instead.
template <typename Value>
std::string said(const std::optional<Value>& value, Findings& findings) {
    std::string text = value ? QString::number(*value).toStdString() : "";
    for (const Finding& finding : findings)
        text += std::string(finding.code) + ' ' + finding.taken.toStdString();
    findings.clear();
    return text;
}

TEST(Check, valuesAreWhatTheLibraryTakes) {
    struct Case {
        const char* text;
        const char* number;
        const char* word;
        const char* hexadecimal;
    };
    const Case cases[] = {
        {"12", "12", "12", "18"},
        {" \"12\" ; twelve", "12", "12", "18"},
        {"-1", "-1", "more-than-16-bits 65535", "more-than-16-bits 0xFFFF"},
        {"1.5", "1.5", "not-a-number 0", "not-hexadecimal 0x0000"},
        {"1,5", "comma 0", "comma 0", "comma 0x0000"},
        {"1e1", "10", "not-a-number 0", "481"},
        {"0x10", "not-a-number 0", "not-a-number 0", "16"},
        {"FFFF", "not-a-number 0", "not-a-number 0", "65535"},
        {"65536", "65536", "more-than-16-bits 0", "more-than-16-bits 0x5536"},
        {"99999999999", "1e+11", "more-than-16-bits 59391", "more-than-16-bits 0x0000"},
        {"nan", "not-a-number 0", "not-a-number 0", "not-hexadecimal 0x0000"},
        {"inf", "inf", "not-a-number 0", "not-hexadecimal 0x0000"},
        {"", "not-a-number 0", "not-a-number 0", "not-hexadecimal 0x0000"},
        {"twelve", "not-a-number 0", "not-a-number 0", "not-hexadecimal 0x0000"},
        {"12 m", "not-a-number 0", "not-a-number 0", "not-hexadecimal 0x0000"},
        {"@Invalid()", "not-a-number 0", "not-a-number 0", "not-hexadecimal 0x0000"},
        {"\\x31\\x32", "12", "12", "18"},
        {"12\\", "", "", ""}, // the next line is part of it
    };
    Place place;
    for (const Case& c : cases) {
        Findings findings;
        const QString key = QStringLiteral("G/k");
        Ini ini(place.write(QByteArray("[G]\nk=") + c.text + "\nl=1\n"), findings);
        EXPECT_EQ(said(ini.number(key, 7), findings), c.number) << c.text;
        EXPECT_EQ(said(ini.word(key, 7), findings), c.word) << c.text;
        EXPECT_EQ(said(ini.hexadecimal(key, "7"), findings), c.hexadecimal) << c.text;
        EXPECT_EQ(said(ini.number(QStringLiteral("G/none"), 7), findings), "");
    }
}

TEST(Check, theNameThatWasMeant) {
    const QStringList names{QStringLiteral("Emiss"), QStringLiteral("Env"), QStringLiteral("Humid"),
                            QStringLiteral("IntTime0"), QStringLiteral("IntTime1")};
    const std::pair<const char*, const char*> cases[] = {{"emiss", "Emiss"},
                                                         {"Emis", "Emiss"},
                                                         {"Emmis", "Emiss"},
                                                         {"Emissivity", "Emiss"},
                                                         {"Environment", ""},
                                                         {"ENV", "Env"},
                                                         {"Enb", "Env"},
                                                         {"Epv", "Env"},
                                                         {"Elf", ""},
                                                         {"Humidity", "Humid"},
                                                         {"Colour", ""},
                                                         {"IntTime", "IntTime0"},
                                                         {"IntTine1", "IntTime1"},
                                                         {"", ""},
                                                         {"E", ""}};
    for (const auto& [wrong, right] : cases)
        EXPECT_EQ(nearest(QString::fromLatin1(wrong), names).toStdString(), right) << wrong;
}

TEST(Check, oneWrongValueStandsOutOfACurve) {
    std::vector<double> curve;
    for (int i = 0; i < 20; ++i)
        curve.push_back(std::floor(1000 * std::exp(0.1 * i)));
    EXPECT_TRUE(offCurve(curve, 0.1, 5).empty());
    for (const int wrong : {0, 1, 10, 18, 19}) {
        std::vector<double> values = curve;
        const double by = wrong % 2 == 0 ? 60 + 20 * wrong : -60 - 20 * wrong;
        values[static_cast<std::size_t>(wrong)] += by;
        const std::vector<Outlier> found = offCurve(values, 0.1, 5);
        ASSERT_EQ(found.size(), 1U) << wrong;
        EXPECT_EQ(found[0].index, wrong);
        EXPECT_NEAR(found[0].by, by, std::abs(by) / 5 + 3);
    }
    curve[5] += 400;
    curve[12] -= 400;
    EXPECT_EQ(offCurve(curve, 0.1, 5).size(), 2U);
    EXPECT_EQ(offCurve(curve, 0.1, 1).size(), 1U);
    EXPECT_TRUE(offCurve({1, 2, 900, 4, 5}, 0.1, 5).empty());
}

TEST(Check, aLineThroughPoints) {
    const Line line = fitLine({1, 2, 3, 6}, {5, 7, 9, 15});
    EXPECT_DOUBLE_EQ(line.offset, 3);
    EXPECT_DOUBLE_EQ(line.slope, 2);
    EXPECT_DOUBLE_EQ(fitLine({2, 2}, {4, 6}).slope, 0);
    EXPECT_DOUBLE_EQ(fitLine({2, 2}, {4, 6}).offset, 5);
}

} // namespace
