// Recordings in memory.
#include "apps/recording.h"
#include "apps/view/tapeinmemory.h"
#include "support/host.h"
#include "view/looker.h"

#include <QBuffer>
#include <QFile>

namespace {

using namespace irmtest;
namespace app = irmcore::app;
using Call = irmsim::Observation::Call;

/// A recording of a few calls made by hand.
class Written {
public:
    Written() {
        m_buffer.open(QIODevice::WriteOnly);
        app::RecordingHead head;
        head.surroundings.emissivity = 0.5;
        head.range = 1;
        m_writer.head(head);
    }
    void readFrame(std::uint32_t length, std::int64_t ns) {
        const std::vector<std::uint8_t> bytes(length, 0x40);
        put(Call::read, 0, 0x4000, bytes, ns);
    }
    void command(std::uint8_t code, std::int64_t ns, std::size_t cut = 0) {
        std::vector<std::uint8_t> bytes{0xFF, 0xA5, code, 0x00, code, 0x5A};
        bytes.resize(bytes.size() - cut);
        put(Call::write, irmsim::wirePort, 0, bytes, ns);
    }
    QByteArray take(bool whole = true) {
        if (whole)
            m_writer.end(0);
        return m_buffer.data();
    }

private:
    void put(Call call, std::uint8_t flags, std::uint32_t address,
             const std::vector<std::uint8_t>& bytes, std::int64_t ns) {
        const auto size = static_cast<std::uint32_t>(bytes.size());
        m_writer.call({0, static_cast<std::uint8_t>(call), flags, 0, address, size,
                       static_cast<std::int64_t>(size), ns, 0},
                      bytes.data(), bytes.size());
    }
    QBuffer m_buffer;
    app::RecordingWriter m_writer{m_buffer, true};
};

std::optional<TapeInMemory> load(const QByteArray& bytes, std::string& error) {
    error.clear();
    write("tape.irmrec", std::string(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    return loadTape(QStringLiteral("tape.irmrec"), error);
}

QByteArray bench160() {
    QFile file(QStringLiteral(TEST_DATA "/bench160.irmrec"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TEST(Tape, KnowsFramesAndCalibrations) {
    const WorkDir dir;
    std::string error;
    constexpr std::int64_t second = 1000000000;
    const struct {
        std::uint32_t part;
        int width;
        int height;
    } cases[] = {{38400, 160, 120}, {27648, 384, 288}, {0, 0, 0}};
    for (const auto& c : cases) {
        Written written;
        written.command(0x30, 1 * second); // the shutter's, but no calibration
        std::int64_t time = 2 * second;
        for (const int code : {0x31, 0x51, 0x52, 0x70, 0x82, 0x77, 0x78, 0x84, 0x61})
            written.command(static_cast<std::uint8_t>(code), time += second / 2);
        written.command(0x31, 20 * second, 3); // up to its code
        written.command(0x31, 21 * second, 4); // broken off before it
        if (c.part > 0)
            written.readFrame(c.part, 22 * second);
        const auto tape = load(written.take(), error);
        ASSERT_TRUE(tape.has_value()) << error;
        EXPECT_EQ(tape->width, c.width);
        EXPECT_EQ(tape->height, c.height);
        EXPECT_EQ(tape->calibrations, (std::vector<double>{2.5, 3.0, 3.5, 4.0, 4.5, 20.0}));
        EXPECT_EQ(tape->range, 1);
        EXPECT_EQ(tape->surroundings.emissivity, 0.5);
        EXPECT_TRUE(tape->complete);
    }
    const auto none = load(Written().take(), error); // neither
    ASSERT_TRUE(none.has_value()) << error;
    EXPECT_EQ(none->width, 0);
    EXPECT_TRUE(none->calibrations.empty());
}

TEST(Tape, CutAnywhereIsReadToThereOrRefused) {
    const WorkDir dir;
    std::string error;
    const QByteArray whole = bench160();
    const auto all = load(whole, error);
    ASSERT_TRUE(all.has_value()) << error;
    EXPECT_TRUE(all->complete);
    EXPECT_EQ(all->width, 160);
    EXPECT_EQ(all->height, 120);
    ASSERT_FALSE(all->calibrations.empty());
    std::size_t before = 0;
    for (int cut = 1; cut < whole.size(); cut += 997) {
        const auto tape = load(whole.left(cut), error);
        EXPECT_EQ(tape.has_value(), error.empty()) << cut;
        if (!tape)
            continue;
        EXPECT_FALSE(tape->complete) << cut;
        EXPECT_GE(tape->tape.calls.size(), before) << cut;
        before = tape->tape.calls.size();
    }
    EXPECT_GT(before, 20U);
    EXPECT_LT(before, all->tape.calls.size());
}

TEST(Tape, WhatIsNoneIsSaid) {
    const WorkDir dir;
    std::string error;
    const QByteArray cases[] = {QByteArray(), QByteArray("P5 160 120"), QByteArray(5000, '\0'),
                                QByteArray(5000, '\x9f')};
    for (const QByteArray& bytes : cases) {
        EXPECT_FALSE(load(bytes, error).has_value()) << bytes.size();
        EXPECT_FALSE(error.empty()) << bytes.size();
    }
    EXPECT_FALSE(loadTape(QStringLiteral("none.irmrec"), error).has_value());
    EXPECT_NE(error.find("No such file"), std::string::npos) << error;
    EXPECT_FALSE(loadTape(QStringLiteral("."), error).has_value());
    EXPECT_FALSE(error.empty());
}

Source recorded(const std::string& file) {
    Source source;
    source.kind = SourceKind::recording;
    source.recording = file;
    return source;
}

TEST(Tape, SessionsShowThemOrSayWhyNot) {
    const WorkDir dir;
    const std::string place = std::filesystem::current_path();
    Written frameless;
    frameless.command(0x31, 0);
    const QByteArray whole = bench160();
    const struct {
        const char* name;
        QByteArray bytes;
        const char* trouble;
        bool shown;
    } cases[] = {
        {"whole", whole, "", true},
        {"cut", whole.left(whole.size() - 3), "The recording was cut short", true},
        {"frameless", frameless.take(), "frameless holds no frame", false},
        {"empty", QByteArray(), "empty cannot be replayed", false},
    };
    for (const auto& c : cases) {
        write(c.name, std::string(c.bytes.constData(), static_cast<std::size_t>(c.bytes.size())));
        Wishes wishes;
        wishes.tools = {spotAt(1, 100, 30), spotAt(2, 20, 90)};
        wishes.range = 1; // the recorded one stays
        Looker looker(recorded(place + "/" + c.name), wishes);
        const auto s = looker.look();
        EXPECT_EQ(s->present, c.shown) << c.name;
        EXPECT_EQ(s->sourceName, c.name);
        EXPECT_EQ(s->core, CoreState::unknown);
        EXPECT_EQ(s->troubles.size(), *c.trouble == '\0' ? 0U : 1U) << c.name;
        EXPECT_TRUE(says(*s, c.trouble) || s->troubles.empty()) << c.name;
        if (!c.shown)
            continue;
        ASSERT_EQ(s->readings.size(), 2U);
        EXPECT_EQ(s->range, 0);
        EXPECT_EQ(s->frame.width, 160);
        EXPECT_NEAR(s->readings[0].hottest.celsius, 37.0, 0.5);
        EXPECT_NEAR(s->readings[1].hottest.celsius, 80.0, 0.5);
        looker.session().calibrate(); // nobody hears that
        looker.session().warmUp(60.0, 1.0);
        EXPECT_FALSE(looker.look()->calibrating);
    }
}

TEST(Tape, ARecordingBeginsAgain) {
    Wishes wishes;
    wishes.tools = {spotAt(1, 100, 30)};
    Source source = recorded(TEST_DATA "/bench160.irmrec");
    Looker looker(source, wishes);
    double latest = 0.0;
    bool again = false;
    const auto s = looker.until(
        [&](const Snapshot& now) {
            again = again || now.seconds < latest - 0.5;
            latest = now.seconds;
            return again && now.seconds > 0.1;
        },
        [](const Snapshot& now) {
            EXPECT_TRUE(now.present && now.settled);
            EXPECT_NEAR(now.readings.at(0).hottest.celsius, 37.0, 0.5) << now.seconds;
        });
    ASSERT_NE(s, nullptr);
    // A frozen picture keeps its frame while the recording goes on.
    wishes.frozen = true;
    looker.session().wish(wishes);
    const auto frozen = looker.look();
    EXPECT_TRUE(frozen->frozen);
    EXPECT_EQ(looker.look()->taken, s->taken);
    wishes.frozen = false;
    looker.session().wish(wishes);
    EXPECT_GT(looker.look()->taken, s->taken);
}

} // namespace
