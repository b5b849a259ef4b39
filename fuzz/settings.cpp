// "Parameter/Setting" with any content.
#include "files.h"

#include <cmath>

std::uint64_t irmfuzz::execute(const std::uint8_t* data, std::size_t size) {
    Fixture& fixture = Fixture::get();
    Host& host = fixture.host;
    Digest out;
    fixture.reset();
    writeFile("Parameter/Setting", data, size);

    host.setSystemTempPara();
    requireParameters(host, out);
    sweep(*host.m_sysTempHandler, out);

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
        fixture.waitForFrame(0x31);
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
