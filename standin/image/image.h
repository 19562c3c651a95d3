// The image of a board: one file that the platform's libraries map and share.
//
// zolt_sim writes the image into its private directory, and every process of the command maps it. A
// look-up costs no system call, and a fault that strikes once does so for all processes together.
// Numbers are in the machine's byte order, because an image never leaves the machine.
#pragma once

#include "board/cpld_map.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace standin {

/// The environment variable that holds the path of the running board's private directory.
constexpr const char* boardDirectoryVariable = "ZOLT_SIM_DIR";
constexpr const char* imageFileName = "board";

constexpr std::uint32_t noFault = 0; ///< fault number 0 stands for no fault

/// A fault, and how often it will still strike.
struct ImageFault {
    static constexpr std::uint32_t always = 0xFFFFFFFF;
    std::int32_t status;
    std::atomic<std::uint32_t> remaining;
};

/// A range of items in the image: where it starts, in bytes, and the number of items.
struct ImageRange {
    std::uint32_t start;
    std::uint32_t length;
};

/// A name and the bytes that it delivers. Entries are sorted by name, in byte order.
struct ImageName {
    ImageRange name;
    ImageRange value;
    std::uint32_t fault;
};

/// An object of the HAL: it shows a range of the raw registers.
struct ImageObject {
    ImageRange name;
    std::uint32_t firstAddress;
    std::uint32_t length;
    std::uint32_t missingFault;
    std::uint32_t readFault;
    std::int32_t unregisterStatus;
    std::uint32_t interruptCallback;
    std::uint32_t mostBytes; ///< most bytes that one read delivers
};

/// The logs that the platform's libraries write.
enum class LibraryLog : std::uint8_t { debug, calls };
constexpr std::size_t libraryLogs = 2;

struct ImageHeader {
    static constexpr std::array<char, 8> expectedMagic{'Z', 'S', 'I', 'M', 'B', 'R', 'D', '1'};

    std::array<char, 8> magic;
    std::uint32_t size; ///< of the whole image, in bytes
    ImageRange faults;  ///< of ImageFault; the first stands for no fault
    ImageRange names;   ///< of ImageName
    ImageRange objects; ///< of ImageObject
    std::array<std::atomic<std::int32_t>, libraryLogs> logErrors; ///< errno of the first line that
                                                                  ///< a log lost; 0: none
    std::array<std::uint8_t, board::rawAddressCount> raw;
    std::array<std::uint16_t, board::rawAddressCount> rawFault; ///< fault number by address
};

static_assert(std::atomic<std::uint32_t>::is_always_lock_free, "shared between processes");

} // namespace standin
