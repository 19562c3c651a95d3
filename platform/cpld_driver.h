// The platform's CPLD driver library: the CPLD's registers by raw address.
//
// The CPLD has one byte-wide register file of 64 KiB. An address has 16 bits. The driver also
// accepts an address that was sign-extended to 32 bits (0xFFFF8A00 is register 0x8A00). It refuses
// any other address above 0xFFFF.
#pragma once

#include <cstdint>

extern "C" {

/// Reads one register.
///
/// @param buffer   receives the byte; owned by the caller, at least @p length bytes.
/// @param address  raw CPLD address.
/// @param length   1; the driver refuses any other.
/// @return 0, or a non-zero status of the driver. A failure leaves the buffer unchanged.
std::int32_t cpld_read_device(std::uint8_t* buffer, std::uint32_t address, std::uint32_t length);

/// Reads a block of consecutive registers, in address order.
///
/// @param buffer   receives the bytes; owned by the caller, at least @p length bytes.
/// @param address  raw CPLD address of the first register.
/// @param length   number of registers; the block must end within the register file.
/// @param stride   distance between two registers of the block; the driver accepts only 1.
/// @return 0, or a non-zero status of the driver. A failure leaves the buffer unchanged: the driver
///         delivers a whole block or nothing.
std::int32_t cpld_read_block_device(std::uint8_t* buffer, std::uint32_t address,
                                    std::uint32_t length, std::uint32_t stride);
}
