// Readings, their parameters, the table and the temperatures that they depend on.
#include "operation.h"

#include <array>
#include <cmath>
#include <vector>

namespace irmfuzz {

namespace {

TempSetup setup(Run& run) {
    if (run.in.take<bool>()) // one that is accepted
        return {0.01F * static_cast<float>(1 + run.in.below(100)),
                static_cast<float>(run.in.take<std::uint16_t>()),
                static_cast<float>(run.in.take<std::int8_t>()) * 0.5F, 7};
    const auto emiss = run.in.take<float>(), dist = run.in.take<float>();
    return {emiss, dist, run.in.take<float>(), run.in.take<std::uint32_t>()};
}

void tell(Run& run, const IrTempStru& reading) {
    requireReading(reading);
    run.out.add(reading);
}

/// A query's result and reading.
void told(Run& run, int result, const IrTempStru& reading, bool refused) {
    require(result == 0 || result == -1, "a query is answered or not");
    run.out.add(result);
    if (result == 0)
        tell(run, reading);
    else
        require(std::strcmp(reading.status, refused ? "" : "NULL") == 0,
                "a reading that is none is marked NULL, one that was not tried is left");
}

void spot(Run& run) {
    const int index = run.in.take<bool>() ? run.in.take<int>() : static_cast<int>(run.in.below(20));
    const int type = run.in.below(8) == 7 ? run.in.take<int>() : static_cast<int>(run.in.below(4));
    _fpga_point at{run.in.take<std::uint16_t>(), run.in.take<std::uint16_t>()};
    const auto mode = run.in.takeEnum<ParaMode_t>();
    IrTempStru out{};
    const int result = run.host().getSpotTemp(index, type, mode, setup(run), at, out);
    told(run, result, out, index < 0 || type < 0 || type > 2);
    run.out.add(run.host().getSpotAD(index, at));
}

void lineSpot(Run& run) {
    _fpga_point at{run.in.take<std::uint16_t>(), run.in.take<std::uint16_t>()};
    const int line = run.in.take<std::int8_t>();
    const auto mode = static_cast<ParaMode_t>(run.in.below(3));
    IrTempStru out{};
    const int result = run.host().getLineTemp(line, mode, setup(run), at, out);
    told(run, result, out, false);
}

void areaTemps(Run& run) {
    const int index = run.in.take<bool>() ? run.in.take<int>() : static_cast<int>(run.in.below(20));
    _area area{};
    for (auto& bound : area.bounds)
        bound = run.in.take<std::uint16_t>();
    _area_val values{};
    Area_Temp out{};
    const auto mode = static_cast<ParaMode_t>(run.in.below(3));
    const int result = run.host().getAreaTemp(index, area, mode, setup(run), values, out);
    require(result == 0 || result == -1, "an area is taken or not");
    if (result != 0)
        return;
    for (const IrTempStru& reading : {out.tempMax, out.tempMin, out.tempAvg})
        tell(run, reading);
}

void ends(Run& run) {
    const auto low = place<IrTempStru>(run.in), high = place<IrTempStru>(run.in);
    if (run.in.take<bool>())
        run.host().getMinMaxTemp(low.get(), high.get());
    else
        run.host().getAutoMinMaxTemp(low.get(), high.get());
    if (low)
        tell(run, *low);
    if (high)
        tell(run, *high);
}

void parameters(Run& run) {
    Host& host = run.host();
    switch (run.in.below(5)) {
    case 0:
        require(host.setSystemTempSetup(setup(run)) == 1, "parameters are taken");
        break;
    case 1:
        host.setEnvTemp(run.in.take<float>());
        break;
    case 2:
        host.setHumid(run.in.take<float>());
        break;
    case 3:
        host.setReflecTemp(run.in.take<float>());
        break;
    default: {
        const int min = run.in.take<std::int16_t>(), max = run.in.take<int>();
        host.setTempRangeMinMax(min, max);
    }
    }
    requireParameters(host, run.out);
}

void conversions(Run& run) {
    TempHandler& model = *run.host().m_sysTempHandler;
    tell(run, model.irAD2Temp(run.in.take<unsigned>()));
    tell(run, model.irAD2Temp(run.in.take<std::uint16_t>()));
    const IrTempStru count = model.irTemp2AD(run.in.take<float>());
    requireCount(count);
    run.out.add(count.ad);
    TempHandler alone(nullptr);
    require(std::strcmp(alone.irAD2Temp(7).status, "NULL") == 0, "without a camera no reading");
}

/// A frame is what its words are, one by one.
void frame(Run& run) {
    Host& host = run.host();
    constexpr std::array names{"OK", "L", "LE", "HE", "H"};
    constexpr float untouched = -1234.5F;
    const auto mode = run.in.takeEnum<ParaMode_t>();
    const TempSetup parameters = setup(run);
    const int count = run.in.below(16) == 15 ? -1 : static_cast<int>(run.in.below(9));
    const std::size_t words = count < 0 ? 0 : static_cast<std::size_t>(count);
    // On the heap and no larger than needed: overruns are seen.
    std::vector<std::uint16_t> ad;
    while (ad.size() < words)
        ad.push_back(run.in.take<std::uint16_t>());
    std::vector<float> temp(words, untouched);
    std::vector<std::uint8_t> status(words, 0xFF);
    const unsigned missing = run.in.below(8);
    const int result = host.getFrameTemp(missing == 3 ? nullptr : ad.data(), count, mode,
                                         parameters, missing == 1 ? nullptr : temp.data(),
                                         missing == 2 ? nullptr : status.data());
    run.out.add(result);
    if (words == 0)
        return; // a buffer without room may be null
    require(result == (missing == 3 ? -1 : 0), "a frame is converted when it is there");
    TempHandler& model = mode == PARA_CUSTOM ? *host.m_queryTempHandler : *host.m_sysTempHandler;
    for (std::size_t i = 0; i < words; ++i) {
        const bool told = result == 0 && missing != 1, marked = result == 0 && missing != 2;
        require(told || temp[i] == untouched, "no temperatures where none are wanted");
        require(marked || status[i] == 0xFF, "no statuses where none are wanted");
        if (run.faulty) // or the freeze state may be read differently for each
            continue;
        const IrTempStru reading = model.irAD2Temp(ad[i]);
        require(!told || std::memcmp(&temp[i], &reading.temp, sizeof(float)) == 0,
                "a frame's temperature is that of its word");
        require(!marked || (status[i] < names.size() &&
                            std::strcmp(names[status[i]], reading.status) == 0),
                "a frame's status is that of its word");
    }
}

/// Any table at all, installed by the host.
void table(Run& run) {
    TempInfoTab tab{};
    tab.maxAD = run.in.take<std::uint16_t>();
    tab.minAD = run.in.take<std::uint16_t>();
    const bool rising = run.in.take<bool>();
    tab.tempNum = static_cast<std::uint16_t>(run.in.below(irmcore::tableCapacity + 1));
    for (int i = 0; i < tab.tempNum; ++i) {
        tab.ad[i] = static_cast<std::uint16_t>(rising && i > 0 ? tab.ad[i - 1] + run.in.below(255)
                                                               : run.in.take<std::uint16_t>());
        tab.temp[i] = rising ? static_cast<std::int16_t>(10 * i - 20) : run.in.take<std::int16_t>();
    }
    require(run.host().m_irPara.setADToTempTab(tab) == 1, "a table is taken");
}

void tableConversions(Run& run) {
    IRPara& table = run.host().getIRPara();
    const IrTempStru reading = table.calTemp(run.in.take<unsigned>());
    tell(run, reading);
    const IrTempStru count = table.calAD(run.in.take<float>());
    requireCount(count);
    run.out.add(count.ad);
    run.out.add(table.calDeltaAD(run.in.take<float>()));
    table.setSensorTemp(run.in.take<float>(), run.in.take<bool>());
    table.setShutterTemp(run.in.take<float>());
    run.out.add(table.readSensorDeltaAD());
    run.out.add(table.readShutterDeltaAD());
}

void drift(Run& run) {
    Host& host = run.host();
    switch (run.in.below(6)) {
    case 0:
        run.out.add(host.updateDeltaTemp());
        break;
    case 1:
        host.setSensorTemp(run.in.take<float>(), run.in.take<bool>());
        break;
    case 2:
        host.updateSensorTemp(false);
        break;
    case 3:
        host.setShutterTemp(run.in.take<float>());
        host.setLenTemp(run.in.take<float>());
        break;
    case 4: { // it reads files
        if (run.files++ > 0)
            return;
        host.updateShutterTemp(true);
        break;
    }
    default:
        host.startBiaoDing(run.in.take<bool>());
    }
    for (const float celsius : {host.getDeltaTemp(), host.getSensorTemp(), host.getShutterTemp(),
                                host.getLenTemp(), host.getModifyShutterTemp()})
        run.out.add(celsius);
}

void correction(Run& run) {
    Host& host = run.host();
    const int check = host.checkBiaoDingTab();
    require(check == 0 || check == -1 || check == -2, "a table is found good or not");
    host.m_tempRange = run.in.take<bool>() ? 0 : run.in.take<int>();
    const auto inside = run.in.take<float>();
    const int celsius = run.in.take<int>();
    const auto ad = run.in.take<std::uint16_t>();
    const unsigned there = host.BiaoDingXiuzheng(0, 0, inside, celsius, ad);
    const unsigned back = host.BiaoDingXiuzhengGet(0, 0, inside, celsius, ad);
    require(inside != (host.m_tempRange == 0 ? 26.5F : 43.0F) || (there == ad && back == ad),
            "at the reference nothing is corrected");
    run.out.add(there);
    run.out.add(back);
}

void range(Run& run) { // it reads files
    Host& host = run.host();
    if (run.files++ > 0)
        return;
    switch (run.in.below(6)) {
    case 0:
        host.setTempRange(run.in.take<int>());
        break;
    case 1:
        host.get_set_lenIndex();
        break;
    case 2:
        host.setVSK(run.in.take<int>());
        break;
    case 3:
        host.m_coreVersionNum = 0;
        host.changeTempRange(run.in.take<int>(), run.in.take<std::uint16_t>());
        break;
    case 4:
        host.updateModify(run.in.take<int>(), run.in.take<int>());
        break;
    default:
        host.readTable(nullptr, run.in.take<bool>() ? &host.m_tempInfoTab : nullptr);
        host.m_coreVersionNum = run.in.take<std::int8_t>();
        host.init();
    }
    require(host.getLenIndex() >= -1 && host.getLenIndex() <= 6, "a lens is 0 to 6, or -1");
}

constexpr std::array<Operation, 14> all{
    spot,  lineSpot, areaTemps,        ends,  parameters, parameters, conversions,
    frame, table,    tableConversions, drift, drift,      correction, range};

} // namespace

Operations readingOperations() { return {all.data(), all.size()}; }

} // namespace irmfuzz
