// The board as the platform's libraries find it: one file, mapped and shared.
//
// zolt_sim lays the image out in its private directory; every process of the command maps it. A
// look-up costs no system call, and what happens once happens once for all of them. The numbers
// are those of the machine: an image never leaves it.
#pragma once

#include "standin/board/cpld_map.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace standin {

/// Names the private directory of the running board to every process of the command.
constexpr const char* boardDirectoryVariable = "ZOLT_SIM_DIR";
constexpr const char* imageFileName = "board";

constexpr std::uint32_t noFault = 0; ///< fault number 0 is never ordered

/// A fault and how often it may still strike.
struct ImageFault {
    static constexpr std::uint32_t always = 0xFFFFFFFF;
    std::int32_t status;
    std::atomic<std::uint32_t> remaining;
};

/// Bytes of the image, counted from its start.
struct ImageRange {
    std::uint32_t start;
    std::uint32_t length;
};

/// A name and what it delivers. Entries are sorted by name, in byte order.
struct ImageName {
    ImageRange name;
    ImageRange value;
    std::uint32_t fault;
};

/// An object of the HAL: a window on the raw registers.
struct ImageObject {
    ImageRange name;
    std::uint32_t firstAddress;
    std::uint32_t length;
    std::uint32_t missingFault;
    std::uint32_t readFault;
    std::int32_t unregisterStatus;
    std::uint32_t interruptCallback;
    std::uint32_t mostBytes; ///< delivered by one read
};

struct ImageHeader {
    static constexpr std::array<char, 8> expectedMagic{'Z', 'S', 'I', 'M', 'B', 'R', 'D', '1'};

    std::array<char, 8> magic;
    std::uint32_t size; ///< of the whole image
    ImageRange faults;  ///< of ImageFault; the first one stands for none
    ImageRange names;   ///< of ImageName
    ImageRange objects; ///< of ImageObject
    std::array<std::uint8_t, rawAddressCount> raw;
    std::array<std::uint16_t, rawAddressCount> rawFault; ///< fault number by address
};

static_assert(std::atomic<std::uint32_t>::is_always_lock_free, "shared between processes");

} // namespace standin
