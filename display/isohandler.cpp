#include "isohandler.h"

#include "palette.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace {

constexpr std::ptrdiff_t entryBytes = sizeof(_yuv_item);
constexpr int lastEntry = irmcore::paletteSize - 1;

/// Types of an isotherm.
constexpr int below = 0;
constexpr int between = 1;
constexpr int above = 2;

struct NamedColor {
    std::string_view name;
    unsigned char yuv[3];
};

constexpr unsigned char red[] = {81, 90, 239};

constexpr std::array opaqueColors{
    NamedColor{"Green", {145, 54, 34}}, NamedColor{"Black", {16, 128, 128}},
    NamedColor{"White", {235, 128, 128}}, NamedColor{"Red", {81, 90, 239}},
    NamedColor{"Blue", {40, 239, 109}}};

/// The colour that covers what is below it; none for a tint.
const NamedColor* opaque(const Isotherm& iso) {
    const char* end = std::find(std::begin(iso.color), std::end(iso.color), '\0');
    const std::string_view name(iso.color, static_cast<std::size_t>(end - iso.color));
    const auto found = std::find_if(opaqueColors.begin(), opaqueColors.end(),
                                    [&](const NamedColor& color) { return color.name == name; });
    return found == opaqueColors.end() ? nullptr : &*found;
}

void paint(unsigned char* entry, const unsigned char* yuv) { std::memcpy(entry, yuv, 3); }

unsigned char* entryOf(unsigned char* table, int index) { return table + index * entryBytes; }

} // namespace

ISOHandler::ISOHandler() : m_upperIndex(0), m_lowerIndex(0) {}

void ISOHandler::setIsoInfo(Isotherm iso) { m_isoInfo = iso; }

Isotherm ISOHandler::getIsoInfo() { return m_isoInfo; }

void ISOHandler::setIsoPosition(int maxIndex, int minIndex) {
    switch (m_isoInfo.type) {
    case below:
        m_lowerIndex = 0;
        m_upperIndex = std::min(minIndex, lastEntry);
        break;
    case between:
        m_lowerIndex = std::max(minIndex, 0);
        m_upperIndex = std::min(maxIndex, lastEntry);
        break;
    case above:
        m_lowerIndex = std::max(maxIndex, 0);
        m_upperIndex = lastEntry;
        break;
    default:
        break;
    }
}

void ISOHandler::calIsoColor(unsigned char* entry, unsigned char index) {
    if (entry == nullptr || index < m_lowerIndex)
        return;
    for (std::size_t i = 0; i < std::size(red); ++i)
        entry[i] = static_cast<unsigned char>((entry[i] + red[i]) / 2);
}

void ISOHandler::setIsoPalette(unsigned char* table) {
    if (table == nullptr)
        return;
    paint(entryOf(table, irmcore::belowWindowEntry), entryOf(table, 0));
    paint(entryOf(table, irmcore::aboveWindowEntry), entryOf(table, lastEntry));
    const NamedColor* color = opaque(m_isoInfo);
    for (int i = m_lowerIndex; i <= m_upperIndex; ++i)
        if (color != nullptr)
            paint(entryOf(table, i), color->yuv);
        else
            calIsoColor(entryOf(table, i), static_cast<unsigned char>(i));
    paint(entryOf(table, irmcore::isothermEntry), color != nullptr ? color->yuv : red);
}
