// The registers' part.
#include "decode.h"

#include <algorithm>
#include <cstring>

namespace irmcore::app {

namespace {

using reg::Entry;

constexpr reg::Field lensCode{
    {reg::detectorState.address, reg::detectorState.name, reg::detectorState.unit},
    0,
    3,
    "lensCode"};
static_assert(lensCode.mask() == reg::lensCodeMask);

constexpr std::array fields{
    reg::imageMode,
    reg::lensVariant,
    reg::irInsetPosition,
    reg::ccdInsetPosition,
    lensCode,
    reg::bit(lensCode.byte, reg::detectorPowerBit, "detectorPower"),
    reg::line1Shown,
    reg::line2Shown,
    reg::saturation,
    reg::colorBar,
    reg::frozen,
    reg::alarm,
    reg::laser,
    reg::lamp,
    reg::ccdCamera,
    reg::ccdMixIrSize,
    reg::irMixCcdSize,
};

constexpr std::uint32_t longestValue = 8; // a longer register is a block

struct Parts {
    unsigned count;
    std::array<const char*, 4> names;
};

/// The words that a register has, by name.
Parts partsOf(const Entry& entry) {
    if (entry.address == reg::pointPosition.base)
        return {2, {"x", "y"}};
    if (entry.address == reg::areaBounds.base)
        return {4, {"x0", "y0", "x1", "y1"}};
    if (entry.address == reg::areaPos.base)
        return {4, {"maxX", "maxY", "minX", "minY"}};
    return {1, {}};
}

/// The width of a register in a direction, or what it is known to be in the other.
std::uint32_t widthOf(const Entry& entry, bool write) {
    const std::uint32_t width = write ? entry.writeWidth : entry.readWidth;
    return entry.words * (width != 0 ? width : entry.readWidth + entry.writeWidth);
}

QString labelOf(const Entry& entry, unsigned slot) {
    const QString name = QString::fromLatin1(entry.name);
    return entry.slots > 1 ? QStringLiteral("%1[%2]").arg(name).arg(slot) : name;
}

Value numberValue(const QString& name, double number, const char* unit = "", int decimals = 0) {
    const QString unitText = QString::fromUtf8(unit);
    QString text = QString::number(number, 'f', decimals);
    if (decimals > 0)
        while (text.endsWith(QLatin1Char('0')) || text.endsWith(QLatin1Char('.'))) {
            const bool point = text.endsWith(QLatin1Char('.'));
            text.chop(1);
            if (point)
                break;
        }
    return {name, unitText.isEmpty() ? text : text + QLatin1Char(' ') + unitText, number, unitText};
}

Value textValue(const QString& name, const QString& text) { return {name, text, text, {}}; }

void addByte(std::vector<Value>& to, const Entry& entry, const QString& name, unsigned byte) {
    to.push_back(
        {name,
         QStringLiteral("0x") + QString::number(byte, 16).rightJustified(2, QLatin1Char('0')),
         static_cast<int>(byte),
         {}});
    for (const reg::Field& field : fields)
        if (field.byte.address == entry.address)
            to.push_back(
                numberValue(QString::fromLatin1(field.name), (byte & field.mask()) >> field.shift));
}

/// A number in a register as its unit says.
void addNumber(std::vector<Value>& to, const Entry& entry, const QString& name, std::int64_t raw) {
    const auto is = [&](const char* unit) { return std::strcmp(entry.unit, unit) == 0; };
    const auto number = static_cast<double>(raw);
    if (is(reg::imageControl.unit)) {
        addByte(to, entry, name, static_cast<unsigned>(raw));
    } else if (is(reg::sensorTemp.unit)) { // the signed ones
        const double counts = raw < 0x8000 ? number : number - 0x10000;
        to.push_back(numberValue(name, counts / 256.0, "°C", 8));
    } else if (is(reg::irMixCcdBlend.unit)) {
        to.push_back(numberValue(name, number / 128.0, "", 7));
    } else if (is(reg::gain.unit)) {
        to.push_back(numberValue(name, number));
        if (raw != 0) {
            const auto span = reg::gainOfSpanOne / raw; // whole counts, as the library takes it
            to.push_back(numberValue(QStringLiteral("span"), static_cast<double>(span), "AD"));
        }
    } else if (is(reg::windowControl.unit)) {
        Value value = numberValue(name, number);
        if (raw == 0 || raw == 0xFF)
            value.text = raw == 0 ? QStringLiteral("library") : QStringLiteral("FPGA");
        to.push_back(value);
    } else {
        const bool unit = partsOf(entry).count == 1 && !is(reg::isoEnable.unit);
        to.push_back(numberValue(name, number, unit ? entry.unit : ""));
    }
}

std::vector<Value> colorValues(const std::uint8_t* bytes, std::size_t n) {
    constexpr std::size_t entry = 4;
    const std::size_t entries = n / entry;
    std::vector<Value> values{numberValue(QStringLiteral("entries"), static_cast<double>(entries))};
    if (n >= entry) {
        values.push_back(textValue(QStringLiteral("first"), hexOf(bytes, entry)));
        values.push_back(
            textValue(QStringLiteral("last"), hexOf(bytes + (n / entry - 1) * entry, entry)));
    }
    return values;
}

Value versionValue(const std::uint8_t* bytes, std::size_t n) {
    QString text;
    for (std::size_t i = 0; i < n; ++i)
        text += bytes[i] >= ' ' && bytes[i] < 0x7F ? QChar(bytes[i]) : QChar(QLatin1Char('.'));
    const QString name = QString::fromLatin1(reg::version.name);
    return {name, QLatin1Char('"') + text + QLatin1Char('"'), text, {}};
}

} // namespace

QString textOf(const Decoded& decoded) {
    QString text;
    for (const Value& value : decoded.values) {
        if (!text.isEmpty())
            text += QStringLiteral(", ");
        if (value.name != decoded.name || value.text.isEmpty())
            text += value.text.isEmpty() ? value.name : value.name + QLatin1Char(' ');
        text += value.text;
    }
    return text;
}

QString hexOf(const std::uint8_t* bytes, std::size_t n) {
    constexpr std::size_t most = 24;
    QString text;
    for (std::size_t i = 0; i < std::min(n, most); ++i)
        text += QStringLiteral("%1 ").arg(bytes[i], 2, 16, QLatin1Char('0')).toUpper();
    text.chop(1);
    return n > most ? QStringLiteral("%1... (%2 bytes)").arg(text).arg(n) : text;
}

std::int64_t numberIn(const std::uint8_t* bytes, std::size_t n) {
    std::int64_t number = 0;
    for (std::size_t i = n; i-- > 0;)
        number = number * 256 + bytes[i];
    return number;
}

/// Whether an address that a point and an area share is the area's. Four bytes make a point.
bool RegisterDecoder::isArea(bool write, std::uint32_t address, std::size_t length) const {
    const std::size_t area = (address - reg::areaBounds.base) / reg::areaBounds.stride;
    if (address < reg::areaBounds.base || area >= m_area.size())
        return false;
    return write ? length != sizeof(_fpga_point) : m_area[area];
}

RegisterDecoder::Piece RegisterDecoder::pieceAt(bool write, std::uint32_t address, std::size_t left,
                                                std::size_t length) const {
    Piece best;
    int bestScore = -1;
    for (const Entry& entry : reg::map) {
        const std::uint32_t width = widthOf(entry, write);
        const std::uint32_t slot = entry.stride == 0 ? 0 : (address - entry.address) / entry.stride;
        const std::uint32_t offset = address - entry.address - slot * entry.stride;
        if (address < entry.address || slot >= entry.slots || offset >= width ||
            (entry.address == reg::frame.address && offset != 0)) // nothing lies within it
            continue;
        const bool block = width > longestValue;
        const std::uint32_t part = block ? width : width / partsOf(entry).count;
        const std::uint32_t rest = part - offset % part;
        Piece piece{&entry, slot, offset / part, std::min<std::size_t>(rest, left), false};
        piece.whole = block ? offset == 0 : rest == part && left >= part;
        const bool point =
            entry.address == reg::pointPosition.base || entry.address == reg::pointAd.base;
        const bool area = entry.address >= reg::areaBounds.base && entry.slots > 1;
        const bool direction = (write ? entry.writeWidth : entry.readWidth) != 0;
        const bool chosen = isArea(write, address, length) ? area : point || !area;
        // What begins a block and is too long for anything else there is of the block.
        const bool ofBlock = block && offset == 0 && length > longestValue;
        const int score = (ofBlock ? 16 : 0) + (direction ? 8 : 0) + (piece.whole ? 4 : 0) +
                          (block ? 0 : 2) + (chosen ? 1 : 0);
        if (score > bestScore) {
            bestScore = score;
            best = piece;
        }
    }
    return best;
}

/// A frame comes in one part of 38400 bytes or in eight of 27648; any other read begins anew.
std::vector<Value> RegisterDecoder::frameValues(std::size_t length, const std::uint8_t* bytes,
                                                std::size_t n) {
    const bool part = length == reg::framePart384 && n == length;
    m_framePart = part ? m_framePart % reg::frameParts384 + 1 : 0;
    std::vector<Value> values;
    if (part)
        values.push_back(numberValue(QStringLiteral("part"), m_framePart));
    const std::size_t pixels = n / 2;
    values.push_back(numberValue(QStringLiteral("pixels"), static_cast<double>(pixels)));
    if (pixels == 0)
        return values;
    std::int64_t low = 0xFFFF;
    std::int64_t high = 0;
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::int64_t ad = numberIn(bytes + 2 * i, 2);
        low = std::min(low, ad);
        high = std::max(high, ad);
        sum += ad;
    }
    values.push_back(numberValue(QStringLiteral("min"), static_cast<double>(low), "AD"));
    values.push_back(numberValue(QStringLiteral("max"), static_cast<double>(high), "AD"));
    const double mean = static_cast<double>(sum) / static_cast<double>(pixels);
    values.push_back(numberValue(QStringLiteral("mean"), mean, "AD", 1));
    return values;
}

Decoded RegisterDecoder::decode(bool write, std::uint32_t address, std::size_t length,
                                const std::uint8_t* bytes, std::size_t n) {
    if (address == reg::frame.address && !write)
        return {QString::fromLatin1(reg::frame.name), frameValues(length, bytes, n)};
    std::vector<Piece> pieces;
    std::size_t begin = 0;
    while (begin < length) {
        const auto at = static_cast<std::uint32_t>(address + begin);
        const Piece piece = pieceAt(write, at, length - begin, length);
        if (piece.entry == nullptr && !pieces.empty() && pieces.back().entry == nullptr)
            ++pieces.back().size;
        else
            pieces.push_back(piece);
        begin += piece.size;
    }
    if (write && n > 0 && address >= reg::areaBounds.base &&
        address < reg::areaBounds.at(2).address)
        m_area[address < reg::areaBounds.at(1).address ? 0 : 1] = isArea(write, address, length);

    const auto label = [](const Piece& piece) {
        return piece.entry != nullptr ? labelOf(*piece.entry, piece.slot)
                                      : QStringLiteral("unknown");
    };
    if (pieces.empty())
        return {};
    Decoded decoded{label(pieces.front()), {}};
    const bool several = label(pieces.back()) != decoded.name;
    begin = 0;
    for (const Piece& piece : pieces) {
        const std::uint8_t* from = bytes + begin;
        const std::size_t there = n > begin ? std::min(piece.size, n - begin) : 0;
        begin += piece.size;
        if (there == 0)
            break;
        QString name = label(piece);
        const bool known = piece.whole && there == piece.size;
        if (piece.entry != nullptr && partsOf(*piece.entry).count > 1) {
            const QString part = QString::fromLatin1(partsOf(*piece.entry).names[piece.part]);
            name = several ? name + QLatin1Char('.') + part : part;
        }
        const bool isLong = piece.size > longestValue;
        const std::uint32_t at = piece.entry != nullptr ? piece.entry->address : 0;
        if (piece.entry != nullptr && known && !isLong && at != reg::version.address)
            addNumber(decoded.values, *piece.entry, name, numberIn(from, there));
        else if (piece.entry != nullptr && (known || isLong) && at == reg::version.address)
            decoded.values.push_back(versionValue(from, there));
        else if (piece.entry != nullptr && isLong && at == reg::colorTable.address)
            for (Value& value : colorValues(from, there))
                decoded.values.push_back(std::move(value));
        else
            decoded.values.push_back(textValue(name, hexOf(from, there)));
    }
    if (several)
        decoded.name += QStringLiteral("..") + label(pieces.back());
    return decoded;
}

} // namespace irmcore::app
