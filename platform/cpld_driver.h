// The platform's CPLD driver library: the CPLD's registers by raw address.
//
// The CPLD has one byte-wide register file of 64 KiB. An address is given in the low 16 bits; the
// driver also takes a 16-bit address that was sign-extended (0xFFFF8A00 is register 0x8A00) and
// refuses any other with bits above them.
#pragma once

#include <cstdint>

extern "C" {

/// Reads one register.
///
/// @param buffer   receives the byte; owned by the caller, at least @p length bytes.
/// @param address  raw CPLD address.
/// @param length   1; anything else is refused.
/// @return 0, or a non-zero status of the driver. On failure the buffer is left as it was.
std::int32_t cpld_read_device(std::uint8_t* buffer, std::uint32_t address, std::uint32_t length);

/// Reads a block of consecutive registers, in address order.
///
/// @param buffer   receives the bytes; owned by the caller, at least @p length bytes.
/// @param address  raw CPLD address of the first register.
/// @param length   number of registers; the block must end within the register file.
/// @param stride   distance between two registers of the block; the driver knows only 1.
/// @return 0, or a non-zero status of the driver. On failure the buffer is left as it was: a block
///         is delivered whole or not at all.
std::int32_t cpld_read_block_device(std::uint8_t* buffer, std::uint32_t address,
                                    std::uint32_t length, std::uint32_t stride);
}
