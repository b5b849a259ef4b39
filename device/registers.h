#pragma once

#include "records.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

/// The FPGA's register map: names, addresses, widths and units, and nothing about the bus.
/// Every value is little-endian and starts at its address. Reading a register that can only be
/// written, or the reverse, does not compile.
namespace irmcore::reg {

/// An unsigned value of six bytes.
struct Uint48 {
    std::uint64_t value;
};

/// One register. `Read` and `Write` are the types that travel in each direction; `void` where
/// the register has no such direction.
template <typename Read, typename Write>
struct Register {
    std::uint16_t address;
    const char* name;
    const char* unit;
};

template <typename T>
using ReadOnly = Register<T, void>;
template <typename T>
using WriteOnly = Register<void, T>;
template <typename R, typename W = R>
using ReadWrite = Register<R, W>;
using ControlByte = ReadWrite<std::uint8_t>;

/// A group of bits in a control byte.
struct Field {
    ControlByte byte;
    std::uint8_t shift;
    std::uint8_t width;
    const char* name;

    /// The bits of the byte that belong to the field.
    constexpr std::uint8_t mask() const {
        return static_cast<std::uint8_t>(((1U << width) - 1U) << shift);
    }
};

/// One bit of a control byte.
constexpr Field bit(ControlByte byte, std::uint8_t index, const char* name) {
    return Field{byte, index, 1, name};
}

/// A run of bytes that travels in one transfer.
struct Block {
    std::uint16_t address;
    std::uint32_t length; ///< bytes
    const char* name;
    const char* unit;
};

/// The same register repeated, once per slot.
template <typename Read, typename Write>
struct Slots {
    std::uint16_t base;
    std::uint16_t stride; ///< bytes from one slot to the next
    std::uint8_t count;
    const char* name;
    const char* unit;

    /// The register of slot `i`, 0 to `count` - 1, moved by `offset` bytes.
    constexpr Register<Read, Write> at(unsigned i, unsigned offset = 0) const {
        return {static_cast<std::uint16_t>(base + stride * i + offset), name, unit};
    }
};

// clang-format off

// Picture composition
inline constexpr ControlByte imageControl   {0x00, "imageControl", "bits"};
inline constexpr Field       imageMode      {imageControl, 0, 3, "imageMode"};       // an Image_Mode_t
inline constexpr Field       lensVariant    = bit(imageControl, 7, "lensVariant");   // tells two lenses of code 7 apart
inline constexpr ControlByte insetControl   {0x01, "insetControl", "bits"};
inline constexpr Field       irInsetPosition {insetControl, 0, 2, "irInsetPosition"};  // infrared in visible
inline constexpr Field       ccdInsetPosition{insetControl, 4, 2, "ccdInsetPosition"}; // visible in infrared
inline constexpr ReadOnly<std::uint8_t> detectorState{0x0F, "detectorState", "bits"};
inline constexpr std::uint8_t lensCodeMask   = 0x07;
inline constexpr std::uint8_t detectorPowerBit = 7;
inline constexpr ControlByte overlays       {0x10, "overlays", "bits"};
inline constexpr Field       line1Shown     = bit(overlays, 0, "line1Shown");
inline constexpr Field       line2Shown     = bit(overlays, 1, "line2Shown");
inline constexpr Field       saturation     = bit(overlays, 6, "saturation");
inline constexpr Field       colorBar       = bit(overlays, 7, "colorBar");
inline constexpr ControlByte freezeControl  {0x14, "freezeControl", "bits"};
inline constexpr Field       frozen         = bit(freezeControl, 0, "frozen");
inline constexpr ControlByte switches       {0x15, "switches", "bits"};
inline constexpr Field       alarm          = bit(switches, 0, "alarm");
inline constexpr Field       laser          = bit(switches, 1, "laser");
inline constexpr Field       lamp           = bit(switches, 2, "lamp");
inline constexpr Field       ccdCamera      = bit(switches, 4, "ccdCamera");

// Board sensors
inline constexpr ReadOnly<std::int16_t> shutterTemp{0x1C, "shutterTemp", "1/256 °C"};
inline constexpr ReadOnly<std::int16_t> sensorTemp {0x1E, "sensorTemp", "1/256 °C"};

// Fusion of the two pictures
inline constexpr ControlByte mixSize        {0x25, "mixSize", "bits"};
inline constexpr Field       ccdMixIrSize   {mixSize, 0, 4, "ccdMixIrSize"};
inline constexpr Field       irMixCcdSize   {mixSize, 4, 4, "irMixCcdSize"};
inline constexpr ReadWrite<std::uint16_t> mixZoom{0x26, "mixZoom", ""};
inline constexpr ReadWrite<std::uint8_t>  mixDx  {0x28, "mixDx", "pixels"};
inline constexpr ReadWrite<std::uint8_t>  mixDy  {0x29, "mixDy", "pixels"};
inline constexpr WriteOnly<std::uint8_t>  irMixCcdBlend{0x2A, "irMixCcdBlend", "1/128"};
inline constexpr WriteOnly<std::uint8_t>  ccdMixIrBlend{0x2F, "ccdMixIrBlend", "1/128"};

// Screens
inline constexpr WriteOnly<std::uint8_t> armLcdMode  {0x30, "armLcdMode", ""};
inline constexpr WriteOnly<std::uint8_t> armLcdJingDu{0x31, "armLcdJingDu", ""};
inline constexpr WriteOnly<std::uint8_t> outputMode  {0x34, "outputMode", ""};

// Frame statistics; the second set holds those of what image mode 5 shows of the frame
inline constexpr ReadOnly<std::uint16_t> frameMax   {0x40, "frameMax", "AD"};
inline constexpr ReadOnly<std::uint16_t> frameMin   {0x42, "frameMin", "AD"};
inline constexpr ReadOnly<Uint48>        adSum      {0x44, "adSum", "AD"};
inline constexpr ReadOnly<std::uint16_t> shownMax   {0x4A, "shownMax", "AD"};
inline constexpr ReadOnly<std::uint16_t> shownMin   {0x4C, "shownMin", "AD"};
inline constexpr ReadOnly<std::uint16_t> frameMaxX  {0x50, "frameMaxX", "column"};
inline constexpr ReadOnly<std::uint16_t> frameMaxY  {0x52, "frameMaxY", "row"};
inline constexpr ReadOnly<std::uint16_t> frameMinX  {0x54, "frameMinX", "column"};
inline constexpr ReadOnly<std::uint16_t> frameMinY  {0x56, "frameMinY", "row"};
inline constexpr ReadOnly<std::uint16_t> shownMaxX  {0x58, "shownMaxX", "column"};
inline constexpr ReadOnly<std::uint16_t> shownMaxY  {0x5A, "shownMaxY", "row"};
inline constexpr ReadOnly<std::uint16_t> shownMinX  {0x5C, "shownMinX", "column"};
inline constexpr ReadOnly<std::uint16_t> shownMinY  {0x5E, "shownMinY", "row"};

// Display window
inline constexpr WriteOnly<std::uint8_t>  windowControl{0x60, "windowControl", "00 library, FF FPGA"};
inline constexpr ReadWrite<std::uint16_t> level        {0x62, "level", "AD"};
inline constexpr ReadWrite<std::uint16_t, std::uint32_t> gain{0x64, "gain", "4194304/span"}; // read 2 bytes, write 4
inline constexpr ReadOnly<std::uint32_t>  pixelCount   {0x6C, "pixelCount", "pixels in adSum"};
inline constexpr ReadOnly<std::uint16_t>  fpgaLevel    {0x70, "fpgaLevel", "AD"};
inline constexpr ReadOnly<std::uint16_t>  fpgaGain     {0x72, "fpgaGain", "4194304/span"};

// Board climate sensor
inline constexpr ReadOnly<std::uint16_t> sht11Temp {0x8C, "sht11Temp", "raw"};
inline constexpr ReadOnly<std::uint16_t> sht11Humid{0x8E, "sht11Humid", "raw"};

// Histogram
inline constexpr ReadOnly<std::uint16_t> histogramMax {0xA0, "histogramMax", "AD"};
inline constexpr ReadOnly<std::uint16_t> histogramMin {0xA2, "histogramMin", "AD"};
inline constexpr ReadOnly<std::uint16_t> histogramPeak{0xA4, "histogramPeak", "AD"};

inline constexpr Block version{0xF0, 15, "version", "text, not terminated"};

// Isotherm
inline constexpr WriteOnly<std::uint8_t>  isoEnable{0x200, "isoEnable", "0 or 1"};
inline constexpr WriteOnly<std::uint8_t>  isoType  {0x201, "isoType", ""};
inline constexpr WriteOnly<std::uint16_t> isoMin   {0x202, "isoMin", "AD"};
inline constexpr WriteOnly<std::uint16_t> isoMax   {0x204, "isoMax", "AD"};

// Measurement spots and areas. Points 12 to 16 share addresses with areas 0 and 1, area 5 with
// the line positions, areas 9 to 16 with the colour table.
inline constexpr Slots<void, _fpga_point>   pointPosition{0x1000, 16, 17, "pointPosition", "x, y"};
inline constexpr Slots<std::uint16_t, void> pointAd      {0x1004, 16, 17, "pointAd", "AD"};
inline constexpr Slots<void, std::uint16_t> areaBounds   {0x10C0, 64, 17, "areaBounds", "x0, y0, x1, y1"}; // 4 words
inline constexpr Slots<std::uint16_t, void> areaMax      {0x10D0, 64, 17, "areaMax", "AD"};
inline constexpr Slots<std::uint16_t, void> areaMin      {0x10D2, 64, 17, "areaMin", "AD"};
inline constexpr Slots<std::uint16_t, void> areaAvg      {0x10D4, 64, 17, "areaAvg", "AD"};
inline constexpr Slots<std::uint16_t, void> areaPos      {0x10E0, 64, 17, "areaPos", "x, y of max, of min"}; // 4 words
inline constexpr WriteOnly<std::uint16_t>   line1Row     {0x1200, "line1Row", "row"};
inline constexpr WriteOnly<std::uint16_t>   line2Column  {0x1202, "line2Column", "column"};
inline constexpr Block colorTable{0x1300, 1044, "colorTable", "261 entries Y, U, V, 0"};

/// The raw frame: successive reads here deliver successive parts. The length is that of the
/// largest part.
inline constexpr Block frame{0x4000, 38400, "frame", "AD, 16 bits a pixel"};

// clang-format on

inline constexpr std::size_t framePixels160 = 19200; // 160 x 120
inline constexpr std::size_t framePart384 = 27648;   ///< bytes of one of the eight parts
inline constexpr std::size_t frameParts384 = 8;

/// The gain register holds a span as this number divided by it.
inline constexpr std::int32_t gainOfSpanOne = 4194304;

/// Span 16448: what the library reports for a gain register that reads 0.
inline constexpr std::uint16_t spanOfZeroGain = 0x4040;
/// The same for the FPGA's own gain register.
inline constexpr std::uint16_t fpgaSpanOfZeroGain = 255;

/// One line of the map, without its type.
struct Entry {
    std::uint16_t address;
    std::uint16_t stride; ///< bytes from slot to slot, 0 when there is one slot
    std::uint8_t slots;
    std::uint8_t words;       ///< registers of this width in a row
    std::uint32_t readWidth;  ///< bytes of one, 0 when it cannot be read
    std::uint32_t writeWidth; ///< bytes of one, 0 when it cannot be written
    const char* name;
    const char* unit;
};

/// Bytes that a value of type `T` takes in the register window.
template <typename T>
constexpr std::uint32_t wireWidth() {
    if constexpr (std::is_void_v<T>)
        return 0;
    else if constexpr (std::is_same_v<T, Uint48>)
        return 6;
    else
        return sizeof(T);
}

template <typename R, typename W>
constexpr Entry entry(const Register<R, W>& r) {
    return {r.address, 0, 1, 1, wireWidth<R>(), wireWidth<W>(), r.name, r.unit};
}
template <typename R, typename W>
constexpr Entry entry(const Slots<R, W>& s, std::uint8_t words = 1) {
    return {s.base, s.stride, s.count, words, wireWidth<R>(), wireWidth<W>(), s.name, s.unit};
}
constexpr Entry entry(const Block& b, bool writable) {
    return {b.address, 0, 1, 1, b.length, writable ? b.length : 0, b.name, b.unit};
}

/// Every register, by rising address of its first slot.
inline constexpr std::array map{
    entry(imageControl),  entry(insetControl),   entry(detectorState), entry(overlays),
    entry(freezeControl), entry(switches),       entry(shutterTemp),   entry(sensorTemp),
    entry(mixSize),       entry(mixZoom),        entry(mixDx),         entry(mixDy),
    entry(irMixCcdBlend), entry(ccdMixIrBlend),  entry(armLcdMode),    entry(armLcdJingDu),
    entry(outputMode),    entry(frameMax),       entry(frameMin),      entry(adSum),
    entry(shownMax),      entry(shownMin),       entry(frameMaxX),     entry(frameMaxY),
    entry(frameMinX),     entry(frameMinY),      entry(shownMaxX),     entry(shownMaxY),
    entry(shownMinX),     entry(shownMinY),      entry(windowControl), entry(level),
    entry(gain),          entry(pixelCount),     entry(fpgaLevel),     entry(fpgaGain),
    entry(sht11Temp),     entry(sht11Humid),     entry(histogramMax),  entry(histogramMin),
    entry(histogramPeak), entry(version, false), entry(isoEnable),     entry(isoType),
    entry(isoMin),        entry(isoMax),         entry(pointPosition), entry(pointAd),
    entry(areaBounds, 4), entry(areaMax),        entry(areaMin),       entry(areaAvg),
    entry(areaPos, 4),    entry(line1Row),       entry(line2Column),   entry(colorTable, true),
    entry(frame, false),
};

namespace detail {

constexpr std::uint32_t width(const Entry& e) {
    return (e.readWidth > e.writeWidth ? e.readWidth : e.writeWidth) * e.words;
}

/// Addresses rise, and a register ends before the next one's first slot begins.
constexpr bool inOrderAndApart() {
    for (std::size_t i = 0; i + 1 < map.size(); ++i)
        if (map[i].address + width(map[i]) > map[i + 1].address)
            return false;
    return true;
}

/// Whether slot `slot` of `s` begins at `address`.
template <typename R, typename W>
constexpr bool meets(const Slots<R, W>& s, unsigned slot, unsigned address) {
    return s.at(slot).address == address;
}

} // namespace detail

static_assert(detail::inOrderAndApart());
// The overlaps that the board has: whoever wrote last owns the block.
static_assert(detail::meets(pointPosition, 12, areaBounds.at(0).address));
static_assert(detail::meets(pointPosition, 16, areaBounds.at(1).address));
static_assert(detail::meets(areaBounds, 5, line1Row.address));
static_assert(detail::meets(areaBounds, 9, colorTable.address));
static_assert(areaBounds.at(16).address + areaBounds.stride < frame.address);

} // namespace irmcore::reg
