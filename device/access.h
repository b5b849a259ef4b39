#pragma once

#include "fpgabottom.h"
#include "registers.h"

#include <cstdint>
#include <type_traits>

/// Typed access to the registers, for the sources of `FPGABottom`.
namespace irmcore {

/// The transfer result of what was refused or failed.
inline constexpr unsigned char refused = 255;

// Values travel as they lie in memory.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);

/// Reads one register; 0 when that fails. `result`, if wanted, takes the transfer result.
template <typename Read, typename Write>
Read get(FPGABottom& fpga, const reg::Register<Read, Write>& r, unsigned char* result = nullptr) {
    static_assert(!std::is_void_v<Read>, "this register cannot be read");
    Read value{};
    const unsigned char n = fpga.readData(r.address, &value, reg::wireWidth<Read>());
    if (result != nullptr)
        *result = n;
    return value;
}

/// Writes one register; returns the transfer result.
template <typename Read, typename Write>
unsigned char set(FPGABottom& fpga, const reg::Register<Read, Write>& r, Write value) {
    static_assert(!std::is_void_v<Write>, "this register cannot be written");
    return fpga.writeData(r.address, &value, reg::wireWidth<Write>());
}

/// Reads a register's byte, replaces the bits of `mask` by `bits` and writes it back. `bits` may
/// lie outside the mask.
inline unsigned char modify(FPGABottom& fpga, const reg::ControlByte& r, int mask, int bits) {
    const int old = get(fpga, r);
    return set(fpga, r, static_cast<std::uint8_t>(((old & ~mask) | bits) & 0xFF));
}

inline unsigned char switchBit(FPGABottom& fpga, const reg::Field& f, bool on) {
    return modify(fpga, f.byte, f.mask(), on ? f.mask() : 0);
}

inline unsigned char bitOf(FPGABottom& fpga, const reg::Field& f) {
    return (get(fpga, f.byte) & f.mask()) != 0 ? 1 : 0;
}

} // namespace irmcore
