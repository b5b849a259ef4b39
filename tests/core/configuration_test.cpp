// The configuration files, read in one go, against reading them word for word.
#include "bench/literal_config.h"
#include "core/plainnumber.h"
#include "support/host.h"

#include <cstring>
#include <random>

namespace {

using namespace irmtest;

constexpr char modify[] = "Parameter/Modify";
constexpr char table[] = "etc/calc_len0_temp0.conf";

/// A host on a camera that reads its files in either way.
struct Configuration : Host {
    /// Gives a file another time of writing, long ago, so that it counts as written anew.
    void touch(const char* file) {
        std::error_code missing;
        const auto now = std::filesystem::file_time_type::clock::now();
        std::filesystem::last_write_time(file, now - std::chrono::hours(++m_touches), missing);
    }
    /// What the whole cycle leaves behind and prints, the source's name and line aside.
    template <typename Update>
    std::string after(Update update) {
        touch(modify);
        touch(table);
        std::string text = withoutDigits(printed([&] { update(); }));
        for (const std::string name : {"measure/fpga_tablefiles.cpp", "bench/literal_config.h"})
            for (std::size_t at = 0; (at = text.find(name, at)) != std::string::npos;)
                text.erase(at, name.size());
        const auto bits = [](float value) {
            std::uint32_t word = 0;
            std::memcpy(&word, &value, sizeof word);
            return word;
        };
        for (const float factor : s_modify)
            text += ' ' + joined(bits(factor));
        text += '\n' + joined(m_minModifyTemp, m_maxModifyTemp, literal->m_modifyShutterTemp,
                              m_levelSpanMinAD, m_levelSpanMaxAD);
        for (const TempInfoTab& tab : {literal->m_tempInfoTab, literal->getTempInfoTab()}) {
            text += '\n' + joined(tab.maxAD, tab.minAD, tab.baseTemp, tab.tempNum);
            for (int i = 0; i < 60; ++i)
                text += ' ' + joined(tab.temp[i], tab.ad[i]);
        }
        return text;
    }
    void expectTheSame(const std::string& of) {
        FPGA& library = *literal;
        const std::string expected = after([&] { literal->updateShutterTemp(true); });
        EXPECT_EQ(after([&] { library.updateShutterTemp(true); }), expected) << of;
    }

    std::optional<irmbench::LiteralConfig> literal;
    Configuration() {
        host.reset();
        printed([&] { literal.emplace(); });
    }

private:
    int m_touches = 0;
};

TEST_F(Configuration, isReadAsWordForWord) {
    expectTheSame("the host's own files");
    std::string full;
    for (int k = 0; k < 200; ++k)
        full += std::string(irmcore::modifyKey(k).text.data()) + "=0.9" + std::to_string(k) + '\n';
    write(modify, full);
    expectTheSame("every factor");
    std::filesystem::remove(modify);
    std::filesystem::remove(table);
    expectTheSame("no file");
}

TEST_F(Configuration, oddFilesAreReadAsWordForWord) {
    // clang-format off
    const char* const values[] = {
        "1.25", "0.8437512", "-1.5", "0", "-0", "007.5", " 1.25 ", "1.25 ; note", "\"1.25\"", "1,25",
        "1.2\\x35", "@Invalid()", "@ByteArray(2.5)", "@String(3.5)", "@@1.5", "@Size(4 5)", ".5", "5.",
        "+1.5", "1.5e1", "1e999", "1.2.3", "nan", "-inf", "0x1F", "7F00", "none", "", "1 000", "1.5f",
        "--1", "-", ".", "\xd9\xa1", "1\\\n5", "\"1\n5\"", "FFFFFFFFFF", "0.1234567890123456789",
        "123456789012345", "9007199254740993", "0.000000000000001"};
    const char* const lines[] = {
        "[General]", "[general]", "[%General]", "[Temp2AD]", "[temp2ad]", "[ParaSet]", "[ParaSet ]",
        "[Temp2AD\\1]", "[Temp2AD/1]", "[Temp2%41D]", "[Temp2AD", "[]", ";Averg_1=5", "noise", "=7",
        "\r", "\"", "\\", "\xef\xbb\xbf"};
    // The place of a temperature is marked.
    const char* const names[] = {
        "Averg_#", "averg_#", "AVERG_#", "%41verg_#", " Averg_# ", "Averg_#.0", "Averg_#\\x", "#", "#",
        "#", " # ", "/#", "#/", "\\#\\", "0#", "%2d#", "%3#", "MaxAD", "minAD", "MinAD", "BaseTemp",
        "TempNum"};
    const char* const ends[] = {"\n", "\n", "\r\n", "\n\n", ""};
    // clang-format on
    std::mt19937 random(7);
    const auto any = [&](const auto& list) { return list[random() % std::size(list)]; };
    const auto line = [&] {
        std::string name = any(names);
        if (const auto at = name.find('#'); at != std::string::npos)
            name.replace(at, 1, std::to_string(static_cast<int>(random() % 7) * 10 - 20));
        return name + '=' + any(values) + any(ends);
    };
    for (int file = 0; file < 400; ++file) {
        std::string text[2] = {
            "", "[ParaSet]\nMinTemp=" + std::to_string(static_cast<int>(random() % 5) * 10 - 20) +
                    "\nMaxTemp=60\nTempNum=9\n[Temp2AD]\n"};
        for (std::string& all : text) {
            for (std::size_t n = random() % 24; n > 0; --n)
                all += random() % 8 == 0 ? std::string(any(lines)) + '\n' : line();
            if (random() % 8 == 0)
                all.insert(random() % (all.size() + 1), 1, static_cast<char>(random() & 0xFF));
        }
        write(modify, text[0]);
        write(table, text[1]);
        expectTheSame(text[0] + "\n--------\n" + text[1]);
        if (HasFailure())
            break;
    }
}

TEST_F(Configuration, bothFilesAreReadAgainAfterEveryRewrite) {
    FPGA& library = *literal;
    for (int i = 1; i < 9; ++i) {
        const std::string digit = std::to_string(i); // what is written has the same size
        write(modify, "Averg_0=1." + digit + "\n");
        write(table, "[ParaSet]\nMaxTemp=30\nTempNum=2\n[Temp2AD]\n0=7000\n30=800" + digit + "\n");
        printed([&] { library.updateShutterTemp(true); });
        EXPECT_EQ(joined(s_modify[0], literal->m_tempInfoTab.ad[1]),
                  joined("1." + digit, 32768 + i));
    }
}

TEST(PlainNumber, isWhatQtMakesOfTheText) {
    std::mt19937 random(7);
    const QString symbols = QStringLiteral("00123456789.-");
    int plain = 0;
    for (int i = 0; i < 200000; ++i) {
        QString text;
        for (auto n = random() % 18; n > 0; --n)
            text += symbols[static_cast<int>(random() % (random() % 4 == 0 ? 13 : 11))];
        const auto value = irmcore::plainNumber(
            {QStringView(text).utf16(), static_cast<std::size_t>(text.size())});
        if (!value)
            continue;
        ++plain;
        bool ok = false;
        const double expected = text.toDouble(&ok);
        ASSERT_TRUE(ok) << text.toStdString();
        ASSERT_EQ(std::memcmp(&*value, &expected, sizeof expected), 0) << text.toStdString();
    }
    EXPECT_GT(plain, 20000);
    for (const char16_t* none :
         {u"", u"-", u".", u"1.", u".5", u"-.5", u"+1", u" 1", u"1 ", u"1e3", u"1.2.3", u"--1",
          u"1-", u"1,5", u"\u0661", u"1234567890123456", u"0.000000000000001", u"nan", u"0x1F"})
        EXPECT_FALSE(irmcore::plainNumber(none)) << QString::fromUtf16(none).toStdString();
    for (const char16_t* some : {u"0", u"-0", u"123456789012345", u"0.12345678901234"})
        EXPECT_TRUE(irmcore::plainNumber(some)) << QString::fromUtf16(some).toStdString();
}

} // namespace
