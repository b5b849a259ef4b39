#include "../core/fpga.h"
#include "../core/settings.h"
#include "modify.h"

#include <array>
#include <cstdio>
#include <unistd.h>

namespace settings = irmcore::settings;

float s_modify[200] = {};
float m_minModifyTemp = 79.0F;
float m_maxModifyTemp = -20.0F;

namespace {

using Path = std::array<char, 64>; // holds any two indices

/// The Modify file for a lens and range, or the one shared by all.
Path modifyFile(int lens, int range) {
    Path path{};
    if (lens != 0)
        std::snprintf(path.data(), path.size(), settings::modifyFileOfLens, lens, range);
    else if (range != 0)
        std::snprintf(path.data(), path.size(), settings::modifyFileOfRange, range);
    if (path[0] == '\0' || ::access(path.data(), F_OK) != 0)
        std::snprintf(path.data(), path.size(), "%s", settings::modifyFile);
    return path;
}

/// The keys of all entries. They never change, and making them would be a third of a reading.
const std::array<QString, irmcore::modifyEntries>& keys() {
    static const auto all = [] {
        std::array<QString, irmcore::modifyEntries> texts;
        for (int k = 0; k < irmcore::modifyEntries; ++k)
            texts[static_cast<std::size_t>(k)] =
                QString::fromLatin1(irmcore::modifyKey(k).text.data());
        return texts;
    }();
    return all;
}

const QString& keyOf(float celsius) {
    return keys()[static_cast<std::size_t>(irmcore::modifyEntry(celsius))];
}

} // namespace

void FPGA::updateModify(int len, int temp) {
    m_minModifyTemp = 79.0F;
    m_maxModifyTemp = -20.0F;
    const Path path = modifyFile(len, temp);
    std::printf("update modify filename:%s len:%d\n", path.data(), len);
    const settings::File file(path.data());
    for (int k = 0; k < irmcore::modifyEntries; ++k) {
        const float factor = file.number(keys()[static_cast<std::size_t>(k)], 0.0);
        const bool given = factor != 0.0F;
        s_modify[k] = given ? factor : 0.0F; // not -0
        if (!given)
            continue;
        const auto celsius = static_cast<float>(irmcore::modifyTemp(k));
        if (celsius <= m_minModifyTemp)
            m_minModifyTemp = celsius;
        m_maxModifyTemp = celsius; // they rise from -20
    }
    const float minFactor = file.number(keyOf(m_minModifyTemp), 1.0);
    const float maxFactor = file.number(keyOf(m_maxModifyTemp), 1.0);
    std::printf("minTemp:%f modify:%f  maxTemp:%f modify:%f \n",
                static_cast<double>(m_minModifyTemp), static_cast<double>(minFactor),
                static_cast<double>(m_maxModifyTemp), static_cast<double>(maxFactor));
    irmcore::fillGaps({s_modify, m_minModifyTemp, minFactor, m_maxModifyTemp, maxFactor});
}

void FPGA::updateModify(int len) { updateModify(len, 0); }
