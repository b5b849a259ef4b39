// Hosts, FPGAs and detector cores that do what none should.
#include "operations.h"
#include "sim/settle.h"

#include <set>

namespace {

using namespace irmtest;

struct Hostile : Host {
    /// A count without faults, and a host that works.
    void works() {
        start();
        _fpga_point at{3, 4};
        IrTempStru out{};
        camera.poke(0x1014, word(36864));
        EXPECT_EQ(host->getSpotTemp(1, 0, PARA_SYSTEM, {}, at, out), 0);
        camera.unpoke(0x1014);
        EXPECT_EQ(text(out), "OK 131.56427");
    }
};

/// Shows what something prints only when something is wrong.
template <typename Run>
void quietly(Run run) {
    std::string output;
    const std::string errors = linkErrors([&] { output = printed(run); });
    if (testing::Test::HasFailure())
        std::fputs((output + errors).c_str(), stdout);
}

/// Operations of the classes that the façade is made of.
std::vector<Operation> parts() {
    std::vector<Operation> all;
    add<&TempHandler::setTempSetup, &TempHandler::getTempSetup, &TempHandler::irTemp2AD,
        &TempHandler::setHumid, &TempHandler::getDewpoint, &TempHandler::setEnvTemp,
        &TempHandler::setReflecTemp, &TempHandler::calcTrans, &TempHandler::getTrans,
        &TempHandler::setTempRangeMinMax, &IRPara::calTemp, &IRPara::calAD, &IRPara::calDeltaAD,
        &IRPara::calShutterDeltaAD, &IRPara::calSensorDeltaAD, &IRPara::setShutterTemp,
        &IRPara::setSensorTemp, &IRPara::setLenTemp, &IRPara::setADToTempTab,
        &IRPara::getADToTempTab, &ISOHandler::setIsoInfo, &ISOHandler::setIsoPosition,
        &ISOHandler::calIsoColor, &ISOHandler::setIsoPalette, &CalcTrans::getTrans,
        &CalcTrans::calcH2OTrans, &CalcTrans::calcCO2Trans, &CalcTrans::findOrderTable,
        &CalcTrans::getDistanceFromLine>(all, Rule::open);
    return all;
}

/// What is wrong with the readings that a host can get.
std::string readings(Probe& host) {
    const std::set<std::string> statuses{"OK", "L", "LE", "H", "HE", "NULL"};
    std::string all;
    const auto look = [&](const IrTempStru& reading) {
        const std::string status(reading.status, strnlen(reading.status, sizeof reading.status));
        if (statuses.count(status) == 0 || !std::isfinite(reading.temp))
            all += status + ' ' + joined(reading.temp) + '\n';
    };
    IrTempStru out{}, other{};
    for (const int type : {0, 1, 2}) {
        _fpga_point at{3, 4};
        host.getSpotTemp(1, type, PARA_SYSTEM, {}, at, out);
        look(out);
    }
    _area area{{1, 2, 3, 4}};
    _area_val val{};
    Area_Temp temps{};
    host.getAreaTemp(2, area, PARA_CUSTOM, {0.5F, 3, 1, 0}, val, temps);
    host.getAutoMinMaxTemp(&out, &other);
    for (const IrTempStru& reading : {temps.tempMax, temps.tempMin, temps.tempAvg, out, other})
        look(reading);
    const int lens = host.get_set_lenIndex();
    for (const float t : {host.updateDeltaTemp(), host.getModifyShutterTemp(),
                          lens < -1 || lens > 6 ? NAN : host.getSensorTemp()})
        if (!std::isfinite(t))
            all += "lens " + joined(lens, "drift", t) + '\n';
    return all;
}

TEST_F(Hostile, hostsGetDefinedResultsAndTheNextOneWorks) {
    Random random(1);
    auto all = operations();
    const auto more = parts();
    all.insert(all.end(), more.begin(), more.end());
    for (int round = 0; round < 40; ++round)
        quietly([&] {
            for (const Operation& op : all) {
                if (op.abuse == nullptr)
                    continue;
                if (op.name.rfind("Serial::", 0) == 0) { // some only while no command is under way
                    irmsim::settle(std::chrono::seconds(1));
                    host->getSerial()->readSerialSum(nullptr);
                }
                op.abuse(*this, random);
            }
            host.reset(); // one link a process
            Serial(nullptr, nullptr).readSerialSum(nullptr);
            Serial(nullptr, "/no/such/port").shutDown();
            EXPECT_EQ(Serial::workThread(nullptr), nullptr);
            TempHandler(nullptr).irAD2Temp(hostileWord(random));
            camera.corePowerUp();
            host.emplace();
        });
    works();
}

TEST_F(Hostile, anyRegisterValuesGiveDefinedReadings) {
    Random random(2);
    const auto bytes = [&](std::size_t n) {
        std::vector<std::uint8_t> all(n);
        const unsigned kind = random() % 3; // ends only, any, or mostly zero
        for (std::uint8_t& byte : all) {
            const std::uint32_t any = random();
            byte = static_cast<std::uint8_t>(kind == 0                   ? any % 2 * 255
                                             : kind == 1 || any % 8 == 0 ? any >> 8
                                                                         : 0);
        }
        return all;
    };
    for (int seed = 0; seed < 40; ++seed)
        quietly([&] {
            camera.poke(0, bytes(0x1800)).poke(0x4000, bytes(38400));
            if (seed % 4 == 0)
                host.reset(), host.emplace();
            host->updateShutterTemp(true);
            for (const Operation& op : operations())
                if (op.rule != Rule::alone)
                    op.run(*this);
            EXPECT_EQ(readings(*host), "") << seed;
            camera.unpoke(0).unpoke(0x4000);
        });
    works();
}

TEST_F(Hostile, anyAnswersOfTheCoreEndAndAreDefined) {
    Random random(3);
    camera.coreSilent(true);
    const auto one = [&](const Operation& op, bool tooLong) {
        // Truncated, split, too long, late; sometimes all right as far as they go.
        for (unsigned part = random() % 6; part > 0; --part) {
            std::vector<std::uint8_t> bytes(1 + random() % (tooLong ? 5000 : 5));
            for (std::uint8_t& byte : bytes)
                byte = static_cast<std::uint8_t>(random() % 2 != 0 ? random() : 0x77);
            camera.coreSends(std::move(bytes), 0.03 * (random() % 100));
        }
        camera.failCall(0, {}); // the calls are counted from here
        const double before = camera.seconds();
        const std::string result = op.run(*this);
        irmsim::settle(std::chrono::seconds(1));
        EXPECT_TRUE(camera.callsMet() < 1000 && camera.seconds() - before < 62) << op.name;
        EXPECT_TRUE(op.rule != Rule::vsk || result[0] == '0' || result.rfind("-1", 0) == 0);
    };
    for (int seed = 0; seed < 40; ++seed)
        quietly([&] {
            for (const Operation& op : operations())
                if ((op.name.rfind("Serial::", 0) == 0 && op.rule != Rule::alone) ||
                    op.rule == Rule::vsk)
                    one(op, seed % 10 == 0);
        });
    camera.coreSilent(false).advance(10);
    unsigned short sum = 0;
    start();
    EXPECT_EQ(joined(host->getSerialSum(&sum), sum), "0 30000");
}

} // namespace
