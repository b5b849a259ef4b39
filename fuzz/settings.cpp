// "Parameter/Setting" with any content.
#include "files.h"

#include <cmath>

namespace {

using namespace irmfuzz;

std::uint64_t execute(const std::uint8_t* data, std::size_t size) {
    Fixture& fixture = Fixture::get();
    Host& host = fixture.host;
    Digest out;
    fixture.reset();
    writeFile("Parameter/Setting", data, size);

    host.setSystemTempPara();
    const TempSetup used = host.getSystemTempSetup();
    require(used.emiss >= 0.001F && used.emiss <= 1.001F && used.dist >= 0 &&
                used.dist <= 100000.0F && std::fabs(used.offset) <= 100.001F,
            "the parameters in use are within their ranges");
    const float trans = host.m_sysTempHandler->getTrans();
    require(trans >= 0.0F && trans <= 1.0F, "the air lets nothing to all through");
    require(std::isfinite(host.m_sysTempHandler->getDewpoint()), "the dew point is finite");
    sweep(*host.m_sysTempHandler, out);
    out.add(trans);

    const TempSetup stored = host.m_sysTempSetup;
    host.readTempSetup();
    require(std::memcmp(&stored, &host.m_sysTempSetup, sizeof stored) == 0,
            "both readings of the parameters store the same");
    for (const float value : {stored.emiss, stored.dist, stored.offset})
        require(!std::isnan(value), "a parameter is a number");

    const unsigned long mark = fixture.portWrites();
    host.m_coreVersionNum = static_cast<int>(size % 3) - 1;
    host.init();
    fixture.waitForWorker(mark, 1);
    if (host.m_coreVersionNum == -1) // of three commands only the last is certain to arrive
        for (unsigned long n = 1; fixture.line.last.at(2) != 0x31;)
            fixture.waitForWorker(mark, ++n);
    out.add(m_vskTemp);
    out.add(m_vskValue0);
    out.add(m_vskValue1);
    host.setVSK(5); // sends nothing
    out.add(m_vskTemp);
    if (size % 4 == 0) { // it takes its time
        require(host.setSystemAdToTempTab() == 0, "a table is loaded");
        out.add(host.m_tempRange);
        sweep(*host.m_sysTempHandler, out);
    }
    requireDerived();
    return out.value();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    Fixture::get();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    check(data, size, execute);
    return 0;
}
