// The link to the detector core, on both forms of its port: virtual and a pty.
#include "support/link.h"

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <termios.h>

namespace {

using namespace irmtest;

using irmsim::Fault;

/// Lengths as a host finds them when it has just begun.
const std::string s_lengths = joined(g_writeData_length, g_readData_length);

struct Port : testing::Test {
    explicit Port(bool pty = false) {
        camera.serialOnPty(pty).install();
        link = std::make_unique<Link>();
        camera.clearPortCalls();
    }
    /// What something writes to standard error, and its result.
    template <typename Run>
    static std::string errorsOf(Run run) {
        std::string result;
        return linkErrors([&] { result = joined(run()); }) + result;
    }
    irmsim::Camera camera;
    std::unique_ptr<Link> link;
};

struct BothPorts : Port, testing::WithParamInterface<bool> {
    BothPorts() : Port(GetParam()) {}
};

INSTANTIATE_TEST_SUITE_P(Forms, BothPorts, testing::Bool(), [](const auto& form) {
    return std::string(form.param ? "pty" : "virtual");
});

/// A query: its result and the value.
template <auto Query, typename Value>
std::string asked(Link& link) {
    Value value = 9;
    return joined((link.*Query)(&value), value);
}

/// A query of a version: its result and the text, with what follows it.
template <auto Query>
std::string version(Link& link) {
    char text[17];
    std::fill_n(text, 17, '#');
    const int result = (link.*Query)(text);
    return joined(result, std::string(text, 16));
}

TEST_P(BothPorts, commandsAreSentOnceAndAcknowledged) {
    const struct {
        int (*run)(Link&);
        const char* frame;
        const char* prints = "";
        // clang-format off
    } commands[] = {
        {[](Link& l) { return l.autoShutter(true); }, "FFA5300101305A"},
        {[](Link& l) { return l.autoShutter(false); }, "FFA5300100315A"},
        {[](Link& l) { return l.insideShutter(); }, "FFA53100315A"},
        {[](Link& l) { return l.insideShutterNoVSK(); }, "FFA55100515A"},
        {[](Link& l) { return l.outsideShutter(); }, "FFA55200525A"},
        {[](Link& l) { return l.setIntTime(0, 100); }, "FFA570026400165A"},
        {[](Link& l) { return l.setIntTime(2, 100); }, "FFA570026400165A"},
        {[](Link& l) { return l.setIntTime(1, 0xFEDC); }, "FFA57002DCFE505A"},
        {[](Link& l) { return l.setVSK(1875); }, "FFA5780253072E5A"},
        {[](Link& l) { return l.changeTempRange(100, 0); }, "FFA5820464000000E25A", "change temp range intTime:100 vsk:0\n"},
        {[](Link& l) { return l.changeTempRange(190, 0x12345); }, "FFA58204BE0045235E5A", "change temp range intTime:190 vsk:74565\n"},
        {[](Link& l) { return l.changeTempRange(65535, 0xFFFFFFFF); }, "FFA58204FFFFFFFF865A", "change temp range intTime:65535 vsk:-1\n"},
        {[](Link& l) { return l.shutDown(); }, "FFA58400845A"},
    };
    // clang-format on
    unsigned long n = 0;
    for (const auto& c : commands) {
        EXPECT_EQ(printed([&] { EXPECT_EQ(c.run(*link), 0); }), c.prints);
        ASSERT_TRUE(received(camera, ++n)) << c.frame;
        EXPECT_EQ(link->sent(), c.frame);
        const std::string code(c.frame, 4, 2);
        EXPECT_EQ(link->answer(7), "7FA500" + code + "00" + code + "5A");
    }
    link.reset();
    EXPECT_EQ(joined(camera.coreCounts().allGood(), camera.coreCounts().bad), joined(n, 0));
    EXPECT_EQ(camera.portCalls().write, n);
}

TEST_P(BothPorts, aHostsCommandsAreTheLinks) {
    link = nullptr; // there is one at a time
    const WorkDir dir;
    std::unique_ptr<FPGA> host;
    printed([&] { host = std::make_unique<FPGA>(); });
    const struct {
        int (*run)(FPGA&);
        const char* frame;
        const char* prints = "";
    } commands[] = {
        {[](FPGA& h) { return h.autoShutter(true); }, "30:01"},
        {[](FPGA& h) { return h.autoShutter(false); }, "30:00"},
        {[](FPGA& h) { return h.insideShutter(); }, "31"},
        {[](FPGA& h) { return h.insideShutterNoVSK(); }, "51"},
        {[](FPGA& h) { return h.setIntTime(1, 0xFEDC); }, "70:DCFE"},
        {[](FPGA& h) { return h.setSerialVSK(1875); }, "78:5307", "============set vsk:1875\n"},
    };
    for (const auto& c : commands) {
        camera.clearReceived();
        const unsigned long before = camera.coreCounts().allGood();
        EXPECT_EQ(printed([&] { EXPECT_EQ(c.run(*host), 0); }), c.prints);
        ASSERT_TRUE(received(camera, before + 1)) << c.frame;
        EXPECT_EQ(frames(camera), c.frame);
    }
    unsigned short vsk = 9, sum = 9;
    EXPECT_EQ(joined(host->getSerialVSK(&vsk), host->getSerialSum(&sum), vsk, sum),
              "0 0 1875 30000");
}

TEST_P(BothPorts, queriesAreAnswered) {
    camera.coreAnswers({"irmsim CPU 1.0", "abcdefghijklmno", 30000, 0xBEEF, 0xDEADBEEF});
    const struct {
        std::string (*run)(Link&);
        const char* frame;
        int reply;
        const char* result;
        // clang-format off
    } queries[] = {
        {asked<&Link::readDeltaAD, unsigned>, "FFA5610400000000655A", 11, "0 3735928559"},
        {asked<&Link::readSerialVSK, unsigned short>, "FFA57700775A", 9, "0 1875"},
        {asked<&Link::readSerialSum, unsigned short>, "FFA57900795A", 9, "0 30000"},
        {asked<&Link::readSensor, unsigned short>, "FFA596020000945A", 9, "0 48879"},
        {version<&Link::readCoreCpuVersion>, "FFA58000805A", 22, "0 irmsim CPU 1.0 #"},
        {version<&Link::readCoreFPGAVersion>, "FFA58100815A", 22, "0 abcdefghijklmno#"},
    };
    // clang-format on
    for (const auto& q : queries) {
        EXPECT_EQ(q.run(*link), q.result);
        EXPECT_EQ(joined(link->sent(), g_readData_length), joined(q.frame, q.reply));
    }
    EXPECT_EQ(link->readSerialSum(nullptr) + link->readDeltaAD(nullptr), 0);
    camera.coreGarbled(3); // the echo, which the VSK's query alone looks at
    EXPECT_EQ(queries[1].run(*link), "-1 0");
    EXPECT_EQ(queries[2].run(*link), "0 30000");
    EXPECT_EQ(camera.coreCounts().allGood(), 10U);
}

TEST_P(BothPorts, aDetachedPortHearsNothingUntilItIsAttached) {
    const std::string failed = "write serial failed: Bad file descriptor\n";
    link->closeSerial();
    EXPECT_EQ(errorsOf([&] { return asked<&Link::readSerialVSK, unsigned short>(*link); }),
              failed + "-1 0");
    EXPECT_EQ(errorsOf([&] { return version<&Link::readCoreCpuVersion>(*link).size(); }),
              failed + "18"); // "0 ", 15 zeros, '#'
    link->restoreSerial();
    EXPECT_EQ((asked<&Link::readSerialVSK, unsigned short>(*link)), "0 1875");
    EXPECT_EQ(joined(camera.portCalls().write, camera.portCalls().close), "1 0");
    link = nullptr;
    link = std::make_unique<Link>();
    link->restoreSerial(); // without a detached one
    EXPECT_EQ(int{link->m_fd}, -1);
    link = nullptr;
    EXPECT_EQ(joined(camera.portCalls().open, camera.portCalls().close), "1 2");
}

TEST_P(BothPorts, threeOperationsDoNothing) {
    link->readPowerStatus();
    link->readSensorTemp(7);
    link->setTempRange(0x11);
    link = nullptr;
    EXPECT_EQ(joined(camera.portCalls().read, camera.portCalls().write, frames(camera)), "0 0 ");
}

TEST_P(BothPorts, isSetUpRaw) {
    link = nullptr;
    link = std::make_unique<Link>();
    EXPECT_EQ(camera.portCalls().openFlags, O_RDWR | O_NOCTTY);
    const termios set = camera.portAttributes();
    EXPECT_EQ(joined(cfgetispeed(&set) == B115200, cfgetospeed(&set) == B115200), "1 1");
    EXPECT_EQ(set.c_cflag & (CSIZE | PARENB | CSTOPB | CLOCAL | CREAD),
              tcflag_t{CS8 | CLOCAL | CREAD});
    EXPECT_EQ(set.c_iflag & (IXON | ICRNL | INPCK), 0U);
    EXPECT_EQ((set.c_lflag & (ICANON | ECHO | ECHOE | ISIG)) + (set.c_oflag & OPOST), 0U);
    EXPECT_EQ(joined(int{set.c_cc[VTIME]}, int{set.c_cc[VMIN]}), "1 0");
}

TEST_F(Port, mayBeTheFirstDescriptor) {
    link = nullptr;
    const int kept = dup(STDIN_FILENO); // a host may have closed its standard input
    close(STDIN_FILENO);
    link = std::make_unique<Link>();
    unsigned short sum = 9;
    EXPECT_EQ(joined(link->m_fd, link->readSerialSum(&sum), sum), "0 0 30000");
    link = nullptr;
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1); // closed
    dup2(kept, STDIN_FILENO);
    close(kept);
}

TEST_F(Port, knowsFifteenSpeeds) {
    const std::tuple<int, speed_t, unsigned> speeds[] = {
        {115200, B115200, 1}, {38400, B38400, 2}, {19200, B19200, 2}, {9600, B9600, 2},
        {4800, B4800, 2},     {2400, B2400, 2},   {1200, B1200, 2},   {300, B300, 2},
        {57600, B300, 0},     {0, B300, 0},       {-1, B300, 0}};
    for (const auto& [baud, constant, times] : speeds) { // each stands in the table so often
        camera.clearPortCalls();
        EXPECT_EQ(errorsOf([&, b = baud] { return link->set_speed(b), 0; }), "0");
        const termios set = camera.portAttributes();
        EXPECT_TRUE(cfgetispeed(&set) == constant && cfgetospeed(&set) == constant) << baud;
        EXPECT_EQ(joined(camera.portCalls().attributes, camera.portCalls().flush),
                  joined(1 + times, 2 * times));
    }
    camera.clearPortCalls();
    camera.failPortSetup(2, EIO);
    EXPECT_EQ(errorsOf([&] { return link->set_speed(9600), 0; }),
              "tcsetattr m_fd: Input/output error\n0");
    EXPECT_EQ(joined(camera.portCalls().attributes, camera.portCalls().flush), "2 1");
}

TEST_F(Port, knowsTwoSizesFourParitiesTwoStops) {
    termios before{};
    before.c_cflag = CS6 | PARENB | PARODD | CSTOPB | CRTSCTS;
    before.c_iflag = INPCK | IXON | IXOFF | ICRNL | INLCR | IGNCR | ISTRIP | PARMRK | BRKINT;
    const struct {
        int size, stop, parity;
        const char* result;
        tcflag_t control, input;
    } cases[] = {
        {8, 1, 'N', "0", CS8 | PARODD, 0},
        {7, 1, 'n', "0", CS7 | PARODD, 0},
        {7, 2, 'o', "0", CS7 | PARENB | PARODD | CSTOPB, INPCK},
        {8, 1, 'O', "0", CS8 | PARENB | PARODD, INPCK},
        {8, 2, 'e', "0", CS8 | PARENB | CSTOPB, INPCK},
        {8, 1, 'E', "0", CS8 | PARENB, INPCK},
        {8, 1, 's', "0", CS8 | PARODD, 0},
        {8, 2, 'S', "0", CS8 | PARODD | CSTOPB, 0},
        {6, 1, 'N', "Unsupported data size\n-1", before.c_cflag, before.c_iflag},
        {9, 3, 'x', "Unsupported data size\n-1", before.c_cflag, before.c_iflag},
        {8, 3, 'x', "Unsupported parity\n-1", before.c_cflag, before.c_iflag},
        {8, 3, 'N', "Unsupported stop bits\n-1", before.c_cflag, before.c_iflag},
        {8, 0, 'N', "Unsupported stop bits\n-1", before.c_cflag, before.c_iflag},
    };
    for (const auto& c : cases) {
        tcsetattr(link->m_fd, TCSANOW, &before);
        EXPECT_EQ(errorsOf([&] { return link->set_Parity(c.size, c.stop, c.parity); }), c.result);
        const termios set = camera.portAttributes();
        EXPECT_EQ(joined(set.c_cflag, set.c_iflag), joined(c.control, c.input)) << c.parity;
    }
    camera.failPortSetup(1, EIO);
    EXPECT_EQ(errorsOf([&] { return link->set_Parity(8, 1, 'N'); }),
              "SetupSerial 1: Input/output error\n-1");
    camera.failPortSetup(2, EIO);
    EXPECT_EQ(errorsOf([&] { return link->set_Parity(8, 1, 'N'); }),
              "SetupSerial 3: Input/output error\n-1");
}

TEST_F(Port, framesHoldUpTo122Bytes) {
    EXPECT_EQ(s_lengths, "0 0");
    unsigned char payload[123];
    for (unsigned char i = 0; i < 123; ++i)
        payload[i] = i;
    EXPECT_EQ(link->packData({0x79, 0, nullptr}), 6);
    EXPECT_EQ(link->sent(), "FFA57900795A");
    EXPECT_EQ(link->packData({0x01, 122, payload}), 128);
    EXPECT_EQ(link->sent().substr(0, 12) + link->sent().substr(250), "FFA5017A0001797A5A");
    EXPECT_EQ(link->packData({0x02, 123, payload}), 0);
    EXPECT_EQ(joined(g_writeData_length, link->sent().substr(0, 8)), "128 FFA5017A");
    EXPECT_EQ(link->packData({0x03, 2, nullptr}), 8);
    EXPECT_EQ(link->sent(), "FFA503020000015A");
    unsigned char bytes[] = {0x82, 4, 100, 0, 0, 0};
    for (const auto& [n, sum] : {std::pair{6, 0xE2}, {1, 0x82}, {0, 0}, {-1, 0}})
        EXPECT_EQ(link->generateSum(bytes, n), sum);
}

TEST_F(Port, refusesToWriteWhatIsNotThere) {
    const unsigned char byte = 7;
    const std::string refused = "write serial failed: Invalid argument\n-1";
    EXPECT_EQ(errorsOf([&] { return link->writeData(nullptr, 3); }), refused);
    EXPECT_EQ(errorsOf([&] { return link->writeData(&byte, -1); }), refused);
    EXPECT_EQ(errorsOf([&] { return link->writeData(&byte, 0); }), "0");
    camera.failPortTransfer(1, Fault::refused(EIO));
    EXPECT_EQ(errorsOf([&] { return link->writeData(&byte, 1); }),
              "write serial failed: Input/output error\n-1");
}

TEST_F(Port, oldInputIsThrownAwayWhenItIsSetUp) {
    link->writeData(link->m_sendBuf, link->packData({0x79, 0, nullptr})); // its reply stays unread
    camera.sleepCall(std::chrono::seconds(1));
    EXPECT_EQ(link->set_Parity(8, 1, 'N'), 0);
    unsigned char byte = 0;
    EXPECT_EQ(link->readData(&byte, 1), 0);
}

TEST_F(Port, findsAReplysHeader) {
    unsigned char unused[1] = {};
    const auto found = [&](int at, int second, int length) {
        std::fill_n(link->m_recvBuf, 128, static_cast<unsigned char>(0x7F));
        link->m_recvBuf[at + 1] = static_cast<unsigned char>(second);
        return link->unpackData(unused, length) >= 0;
    };
    EXPECT_TRUE(found(0, 0xA5, 1) && found(0, 0xA5, 128) && found(126, 0xA5, 127));
    EXPECT_TRUE(found(5, 0xA5, 6) && found(126, 0xA5, std::numeric_limits<int>::max()));
    EXPECT_FALSE(found(5, 0xA5, 5) || found(0, 0xA4, 128) || found(0, 0xA5, 0));
    EXPECT_FALSE(found(0, 0xA5, -1) || found(126, 0xA5, 126));
    EXPECT_EQ(link->unpackData(nullptr, 0), -1);
}

TEST_F(Port, aShortReplyEndsAfter201EmptyReads) {
    EXPECT_EQ(link->readData(link->m_recvBuf, 0), 0);
    EXPECT_EQ(camera.portCalls().read, 0U);
    unsigned char other[12];
    std::fill_n(other, 12, static_cast<unsigned char>(7));
    const double before = camera.seconds();
    camera.failPortTransfer(2, Fault::cutTo(3)); // in two parts
    link->writeData(link->m_sendBuf, link->packData({0x79, 0, nullptr}));
    EXPECT_EQ(link->readData(other, 12), 9);
    EXPECT_EQ(link->answer(12), "7FA500790230753E5A000000");
    EXPECT_EQ(other[0] + other[11], 0); // cleared, and not filled
    EXPECT_EQ(joined(camera.portCalls().read, camera.portCalls().emptyReads), "203 201");
    EXPECT_NEAR(camera.seconds() - before, 20.1, 1e-6);
    camera.clearPortCalls();
    camera.failPortTransfer(1, Fault::refused(EAGAIN), irmsim::Lasting::fromThenOn);
    EXPECT_EQ(link->readData(other, 12), 0);
    EXPECT_EQ(camera.portCalls().read, 201U);
}

TEST_F(Port, aSilentCoreGivesZeros) {
    camera.coreSilent(true);
    EXPECT_EQ((asked<&Link::readSerialSum, unsigned short>(*link)), "0 0");
    EXPECT_EQ((asked<&Link::readDeltaAD, unsigned>(*link)), "0 0");
    EXPECT_EQ((asked<&Link::readSerialVSK, unsigned short>(*link)), "-1 0");
    EXPECT_EQ(version<&Link::readCoreFPGAVersion>(*link), "0 " + std::string(15, '\0') + '#');
    EXPECT_EQ(camera.portCalls().emptyReads, 804U);
    // An answer that came too late is not the next query's.
    camera.coreSilent(false).coreLate(25);
    EXPECT_EQ((asked<&Link::readSerialSum, unsigned short>(*link)), "0 0");
    camera.coreLate(0).advance(10);
    EXPECT_EQ((asked<&Link::readSensor, unsigned short>(*link)), "0 6784");
}

TEST_F(Port, aDeadPortTakesNoTime) {
    const struct {
        const char* error;
        bool absent;
    } cases[] = {{"No such file or directory", true}, {"Input/output error", false}};
    for (const auto& c : cases) {
        camera.portPresent(!c.absent);
        c.absent ? camera.plugInPort() : camera.unplugPort();
        const double before = camera.seconds();
        link = nullptr; // there is one at a time
        EXPECT_EQ(errorsOf([&] { return link = std::make_unique<Link>(), 0; }),
                  std::string("open device failed: ") + c.error + "\n0");
        EXPECT_LT(int{link->m_fd}, 0);
        const std::string failed = "write serial failed: Bad file descriptor\n";
        EXPECT_EQ(errorsOf([&] { return asked<&Link::readSerialVSK, unsigned short>(*link); }),
                  failed + "-1 0");
        EXPECT_EQ(errorsOf([&] { return link->setVSK(1), link = nullptr, 0; }), failed + "0");
        EXPECT_EQ(camera.seconds(), before);
    }
    camera.portPresent(true).plugInPort();
    link = std::make_unique<Link>();
    camera.unplugPort(); // while it is open
    EXPECT_EQ(errorsOf([&] { return asked<&Link::readSerialVSK, unsigned short>(*link); }),
              "write serial failed: Input/output error\n-1 0");
    EXPECT_EQ(joined(frames(camera)), "");
}

} // namespace
