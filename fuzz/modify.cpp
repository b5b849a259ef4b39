// "Parameter/Modify" with any content, and a shutter update with its factors.
#include "files.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace {

using namespace irmfuzz;

bool onTheGrid(float celsius) { // of half degrees
    return celsius >= -20.0F && celsius <= 79.5F && celsius * 2 == std::floor(celsius * 2);
}

} // namespace

std::uint64_t irmfuzz::execute(const std::uint8_t* data, std::size_t size) {
    Fixture& fixture = Fixture::get();
    Host& host = fixture.host;
    Digest out;
    fixture.reset();
    writeFile("Parameter/Modify", data, size);

    host.updateModify(0);
    require(onTheGrid(m_minModifyTemp) && onTheGrid(m_maxModifyTemp), "the ends are keys");
    const bool given = m_minModifyTemp <= m_maxModifyTemp;
    require(given || (m_minModifyTemp == 79.0F && m_maxModifyTemp == -20.0F) ||
                (m_minModifyTemp == 79.0F && m_maxModifyTemp == 79.5F),
            "without a factor the ends are those of the start");
    // A factor holds up to the next one, and the ends' beyond them.
    const int first = irmcore::modifyEntry(m_minModifyTemp);
    const int last = irmcore::modifyEntry(m_maxModifyTemp);
    for (int k = 0; given && k < irmcore::modifyEntries; ++k)
        require(k > first || s_modify[k] == s_modify[first], "the lowest factor holds below it");
    for (int k = 0; given && k < irmcore::modifyEntries; ++k)
        require(k < last || s_modify[k] == s_modify[last], "the highest factor holds above it");
    // A key at an end that is there and holds no factor makes a 0 of it.
    const bool whole = given && s_modify[first] != 0.0F && s_modify[last] != 0.0F;
    for (const float factor : s_modify) {
        require(!std::isnan(factor) && (factor != 0.0F || !whole), "every gap is filled");
        out.add(factor);
    }

    constexpr std::array<double, 4> insides{-30.0, 0.0, 26.5, 100.0};
    const double inside = insides[size % insides.size()];
    fixture.camera.temperatures(inside, inside);
    host.updateShutterTemp(true);
    require(std::find(std::begin(s_modify), std::end(s_modify), host.getModifyValue()) !=
                std::end(s_modify),
            "the factor looked up is one of the table");
    requireDerived();
    sweep(*host.m_sysTempHandler, out);
    out.add(host.m_irPara.readShutterDeltaAD());
    require(host.checkBiaoDingTab() <= 0, "a table is found good or not");
    return out.value();
}
