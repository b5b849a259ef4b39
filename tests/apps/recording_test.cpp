#include "apps/recording.h"

#include "sim/cameradir.h"
#include "sim/tape.h"
#include "support/link.h"

#include <QBuffer>
#include <QFile>

#include <cerrno>
#include <cstring>
#include <numeric>
#include <vector>

namespace app = irmcore::app;
using namespace irmtest;

namespace {

using irmsim::Observation;

/// Observes this process's camera, and keeps what it does as a recording.
class Recorder {
public:
    Recorder() {
        m_buffer.open(QIODevice::WriteOnly);
        m_writer.head(app::RecordingHead{});
        irmsim::setObserver(&m_observer);
    }
    ~Recorder() { irmsim::setObserver(nullptr); }
    QByteArray take() {
        irmsim::setObserver(nullptr);
        m_writer.end(0);
        return m_buffer.data();
    }

private:
    void hear(const Observation& o) {
        const auto call = static_cast<std::uint8_t>(o.call);
        m_writer.call({0, call, o.port ? irmsim::wirePort : std::uint8_t{0}, 0, o.address,
                       static_cast<std::uint32_t>(o.length), o.result, o.time.count(), 0},
                      o.bytes, o.bytes == nullptr ? 0 : static_cast<std::size_t>(o.result));
    }
    QBuffer m_buffer;
    app::RecordingWriter m_writer{m_buffer, true};
    irmsim::Observer m_observer{
        [](void* self, const Observation& o) { static_cast<Recorder*>(self)->hear(o); }, this};
};

/// A camera that a recording is replayed on.
struct Replayed {
    explicit Replayed(const QByteArray& recording) {
        const auto end = app::readRecording(
            recording.constData(), recording.size(),
            {[](const app::RecordingHead&) {},
             [this](irmsim::WireHeader header, const QByteArray& bytes) {
                 const auto count = static_cast<std::size_t>(bytes.size());
                 header.size = static_cast<std::uint32_t>(sizeof header + (count + 7) / 8 * 8);
                 const std::size_t at = tape.size();
                 tape.resize(at + header.size);
                 std::memcpy(tape.data() + at, &header, sizeof header);
                 std::copy_n(bytes.constData(), count,
                             reinterpret_cast<char*>(tape.data()) + at + sizeof header);
             }});
        EXPECT_EQ(end.text.toStdString(), "");
        std::string error;
        camera.replay(irmsim::Tape::of(tape.data(), tape.size(), error).value(), false).install();
        EXPECT_EQ(error, "");
    }
    std::vector<std::uint8_t> tape;
    irmsim::Camera camera;
};

std::string calls(const QByteArray& recording) {
    std::ostringstream all;
    app::readRecording(recording.constData(), recording.size(),
                       {[](const app::RecordingHead&) {},
                        [&](const irmsim::WireHeader& h, const QByteArray& bytes) {
                            if ((h.flags & irmsim::wirePort) == 0)
                                all << +h.call << ' ' << h.address << ' ' << h.length << ' '
                                    << h.result << ' ' << h.time << ' '
                                    << bytes.toHex().toStdString() << '\n';
                        }});
    return all.str();
}

std::string spot(FPGA& host, unsigned short x, unsigned short y) {
    _fpga_point at{x, y};
    IrTempStru reading{};
    const int result = host.getSpotTemp(0, 0, PARA_SYSTEM, TempSetup{}, at, reading);
    return joined(result, reading.status, reading.ad, reading.temp, "");
}

/// A session of a host: what it read.
std::string session(FPGA& host) {
    std::string all;
    std::vector<unsigned short> frame(384U * 288U);
    host.init();
    usleep(500000);
    for (int round = 0; round < 3; ++round) {
        host.updateSensorTemp(true);
        host.updateShutterTemp(true);
        all += joined(int(host.fpga_read_IRAD_384(frame.data())),
                      std::accumulate(frame.begin(), frame.end(), 0ULL), "");
        all += spot(host, 20, 30) + spot(host, 100, 60);
        _area part{{10, 10, 50, 40}};
        _area_val values{};
        Area_Temp readings{};
        host.getAreaTemp(6, part, PARA_SYSTEM, TempSetup{}, values, readings);
        host.setSerialVSK(static_cast<unsigned short>(1800 + round));
        usleep(500000);
        unsigned short vsk = 0; // the same question, another answer each time
        host.getSerialVSK(&vsk);
        all += joined(readings.tempAvg.temp, values.pos[0], values.pos[3], vsk, "\n");
    }
    return all;
}

TEST(Recording, replayedSessionIsTheSameToTheBit) {
    const WorkDir dir;
    std::string error;
    ASSERT_TRUE(irmsim::writeCameraDirectory(".", irmsim::Surroundings{}, error)) << error;
    std::string then;
    QByteArray recording;
    const auto run = [](std::string& readings) {
        Recorder recorder;
        printed([&] { readings = session(*std::make_unique<FPGA>()); });
        return recorder.take();
    };
    {
        irmsim::Camera camera;
        camera.scene(irmsim::Scene::gradient(384, 288, 0, 60)).noise(2, 7);
        camera.warmUp({26.5, 30, 27, 33, 10}).failTransfer(60, irmsim::Fault::refused(EIO));
        camera.install();
        recording = run(then);
        ASSERT_EQ(camera.faults(), 1U);
    }
    const Replayed replayed(recording);
    std::string now;
    EXPECT_EQ(calls(run(now)), calls(recording));
    EXPECT_EQ(now, then);
    EXPECT_EQ(std::count(now.begin(), now.end(), '\n'), 3);
}

TEST(Recording, otherRequestsAreAnsweredFromWhatIsKnown) {
    std::vector<unsigned short> frame(160U * 120U);
    QByteArray recording;
    const auto ramp = irmsim::Scene::gradient(160, 120, 10, 50);
    irmsim::Camera live;
    live.scene(ramp).install();
    {
        Recorder recorder;
        FPGABottom host;
        Link link;
        host.fpga_read_IRAD(frame.data());
        _fpga_point middle{80, 60};
        host.fpga_point_position_set(0, &middle);
        host.fpga_point_ad_get(0, frame.data());
        host.fpga_set_levelSpan(30000, 1000);
        float sensor = 0;
        host.fpga_read_sensorTemp(&sensor);
        link.readSerialSum(frame.data());
        recording = recorder.take();
    }
    live.uninstall();
    const unsigned short left = live.board().ad(0, 0), there = live.board().ad(33, 5);
    ASSERT_LT(left, there);

    const Replayed replayed(recording);
    FPGABottom host;
    float sensor = 0;
    host.fpga_read_sensorTemp(&sensor); // before the frame: the first one to come
    EXPECT_EQ(sensor, 26.5F);
    std::vector<unsigned short> large(384U * 288U);
    EXPECT_EQ(host.fpga_read_IRAD_384(large.data()), 0); // in another size
    EXPECT_EQ(host.fpga_get_auto_min(), left);           // never asked then
    unsigned short ad = 0;
    _fpga_point place{33, 5};
    host.fpga_point_position_set(3, &place);
    host.fpga_point_ad_get(3, &ad);
    EXPECT_EQ(ad, there);
    _area_val values{};
    _area column{{33, 5, 33, 40}};
    host.fpga_area_set(6, &column);
    host.fpga_area_val_get(6, &values);
    EXPECT_EQ(joined(values.minAD, values.pos[0], values.pos[1]), joined(there, 33, 5));
    host.fpga_set_levelSpan(31000, 500);
    EXPECT_EQ(host.fpga_get_level(), 31000);
    char version[16] = {};
    const std::string said = printed(
        [&] {
            for (int i = 0; i < 2; ++i)
                EXPECT_EQ(host.fpga_get_version(version), 255);
            host.fpga_read_IRAD_384(large.data()); // there is only one: it stays
        },
        STDERR_FILENO);
    EXPECT_EQ(large[33 * 384 / 160 + 10 * 384], there);
    EXPECT_EQ(said.find("register 0x00F0 (version)"), said.rfind("register 0x00F0 (version)"));
    EXPECT_NE(said.find("recording has ended"), std::string::npos);
    Link link;
    unsigned short sum = 0;
    link.readSerialSum(&sum);
    EXPECT_EQ(sum, 30000); // as the simulated core says
    const std::string silence = linkErrors([&] { link.readSensor(&sum); });
    EXPECT_EQ(sum, 0);
    EXPECT_NE(silence.find("command 0x96"), std::string::npos);
}

QByteArray kept() {
    QFile file(QStringLiteral(TEST_DATA "/bench160.irmrec"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What reading so many of its bytes comes to: the calls, or what is wrong.
std::string readingOf(const QByteArray& bytes) {
    const auto end = app::readRecording(bytes.constData(), bytes.size(),
                                        {[](const app::RecordingHead&) {}, [](auto&, auto&) {}});
    return end.broken ? end.text.toStdString()
                      : std::to_string(end.calls) + (end.complete ? "" : " cut");
}

TEST(Recording, isReadToTheLastWholeItemWhereverItIsCut) {
    const QByteArray whole = kept();
    int last = 0;
    for (int size = 600; size < whole.size(); size += 37) {
        const std::string read = readingOf(whole.left(size));
        ASSERT_NE(read.find(" cut"), std::string::npos) << size << ' ' << read;
        EXPECT_GE(std::stoi(read), last);
        last = std::stoi(read);
    }
    EXPECT_EQ(readingOf(whole.left(40)), "its head is not complete");
    EXPECT_EQ(readingOf({}), "it is empty");
    EXPECT_EQ(readingOf("irmcore: no such file\n"), "it is not a recording of irmcore");
    const auto end = whole.lastIndexOf("\x63"
                                       "end") -
                     1;
    EXPECT_EQ(readingOf(whole.left(end) + "\xFF" + whole.mid(end)).substr(0, 21),
              "it is damaged at byte");
    QByteArray newer = whole;
    newer.replace("\x65major\x01", "\x65major\x02");
    EXPECT_EQ(readingOf(newer), "it is of version 2, made by irmcore 0.1.0; this program reads "
                                "version 1");
    // An item of a later version: {"later": [1, {}]}.
    EXPECT_EQ(readingOf(whole + QByteArray("\xA1\x65later\x82\x01\xA0", 10)), readingOf(whole));
}

// Made once by `irmcore record` on the built-in scene with noise, with the table of twoEntries;
// counts and sums by taking the file apart with another program, temperatures by hand: with the
// shutter's term at 26.5 °C the table has t = -20 + (AD - 2279.00 - 28672) · 420 / 16384, which is
// that of a surface of emissivity 0.95; W = 0.95 t⁴ + 0.05 · 298.15⁴.
TEST(Recording, keptOneReadsAsEver) {
    const WorkDir dir;
    write("etc/calc_len0_temp0.conf", twoEntries);
    write("Parameter/Setting", "[GlobalPara]\nEmiss=1\nDistan=0\n");
    const Replayed replayed(kept());
    std::optional<FPGA> host;
    printed([&] { host.emplace(); });
    TempSetup setup{1.0F, 0.0F, 0.0F, 0};
    host->setSystemTempSetup(setup);
    host->updateSensorTemp(true);
    host->updateShutterTemp(true);
    std::vector<unsigned short> frame(160U * 120U);
    const auto nextFrame = [&] {
        printed([&] { host->fpga_read_IRAD(frame.data()); });
        return std::accumulate(frame.begin(), frame.end(), 0ULL);
    };
    const auto expect = [&](int slot, unsigned short x, unsigned short y, unsigned ad,
                            double celsius) {
        _fpga_point at{x, y};
        IrTempStru reading{};
        EXPECT_EQ(host->getSpotTemp(slot, 0, PARA_SYSTEM, TempSetup{}, at, reading), 0);
        EXPECT_EQ(joined(reading.status, reading.ad), joined("OK", ad));
        EXPECT_NEAR(reading.temp, celsius, 0.005);
    };
    EXPECT_EQ(nextFrame(), 637120286U);
    expect(3, 110, 80, 32344, 16.1954); // recorded
    expect(0, 33, 5, 32336, 16.0016);   // of the frame
    EXPECT_EQ(nextFrame(), 637120242U);
    expect(3, 110, 80, 32347, 16.2681);
    setup.emiss = 0.5F; // (2 W - 298.15⁴)^(1/4), of the count as it was
    host->setSystemTempSetup(setup);
    expect(0, 33, 5, 32338, 6.1823);
}

} // namespace
