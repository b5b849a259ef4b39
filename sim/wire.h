#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

/// Observations on their way out of a host: records in a pipe, for a process on the same machine.
namespace irmsim {

/// Head of a record. After it come the bytes that were transferred, filled up with zeros to a
/// multiple of 8.
struct WireHeader {
    std::uint32_t size; ///< of the whole record
    std::uint8_t call;  ///< an Observation::Call
    std::uint8_t flags; ///< wirePort, wireReal
    std::uint16_t reserved;
    std::uint32_t address;
    std::uint32_t length; ///< bytes that a read or write asked for; cut to 32 bits
    std::int64_t result;
    std::int64_t time; ///< ns, the observation's
    std::int64_t wall; ///< ns since the epoch, when it was told
};
static_assert(sizeof(WireHeader) == 40 && offsetof(WireHeader, address) == 8 &&
              offsetof(WireHeader, result) == 16 && offsetof(WireHeader, wall) == 32);
static_assert(std::is_trivially_copyable_v<WireHeader>);

inline constexpr std::uint8_t wirePort = 1; ///< of the serial port, else of the FPGA device
inline constexpr std::uint8_t wireReal = 2; ///< of the machine's own device
inline constexpr std::size_t wireAlign = 8;

/// The environment variable that names the pipe to the process that is to be observed: its id, a
/// colon, and the descriptor to write to. The id stays when a process executes another program.
inline constexpr char courierVariable[] = "IRMSIM_COURIER";

} // namespace irmsim
