// The image of a board: one file that the platform's libraries map and share.
//
// zolt_sim writes the image into its private directory, and every process of the command maps it. A
// look-up costs no system call, and all processes count the calls of a fault together.
// Numbers are in the machine's byte order, because an image never leaves the machine.
#pragma once

#include "board/cpld_map.h"
#include "standin/image/topology.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace standin {

/// The environment variable that holds the path of the running board's private directory.
constexpr const char* boardDirectoryVariable = "ZOLT_SIM_DIR";
constexpr const char* imageFileName = "board";

/// A fault, the calls that still pass, and the calls to which it still applies.
struct ImageFault {
    static constexpr std::uint32_t always = 0xFFFFFFFF;  ///< a number of calls without end
    static constexpr std::uint32_t forever = 0xFFFFFFFF; ///< a delay without end
    std::int32_t status;                                 ///< of the call; 0: the call succeeds
    std::uint32_t delay;                                 ///< of the call, in milliseconds
    std::atomic<std::uint32_t> passing;
    std::atomic<std::uint32_t> remaining;
};

/// The number of a fault in the list of faults.
using ImageFaultNumber = std::uint16_t;

/// A fault of reads that touch one of the addresses, or of the bytes of an object, from first to
/// last.
struct ImageReadFault {
    std::uint16_t first;
    std::uint16_t last;
    ImageFaultNumber fault;
};

/// A range of items in the image: where it starts, in bytes, and the number of items.
struct ImageRange {
    std::uint32_t start;
    std::uint32_t length;
};

/// A name and the bytes that it delivers. Entries are sorted by name, in byte order. A list of
/// fault numbers begins with the last rule.
struct ImageName {
    ImageRange name;
    ImageRange value;
    ImageRange faults; ///< of ImageFaultNumber
};

/// An object of the HAL: it shows a range of the raw registers.
struct ImageObject {
    ImageRange name;
    std::uint32_t firstAddress;
    std::uint32_t length;
    ImageRange missingFaults; ///< of ImageFaultNumber
    ImageRange readFaults;    ///< of ImageReadFault, the last rule first
    std::int32_t unregisterStatus;
    std::uint32_t interruptCallback;
    std::uint32_t mostBytes; ///< most bytes that one read delivers
};

/// The logs that the platform's libraries write.
enum class LibraryLog : std::uint8_t { debug, calls };
constexpr std::size_t libraryLogs = 2;

struct ImageHeader {
    static constexpr std::array<char, 8> expectedMagic{'Z', 'S', 'I', 'M', 'B', 'R', 'D', '3'};

    std::array<char, 8> magic;
    std::uint32_t size;                               ///< of the whole image, in bytes
    ImageRange faults;                                ///< of ImageFault
    ImageRange names;                                 ///< of ImageName
    ImageRange objects;                               ///< of ImageObject
    ImageRange rawFaults;                             ///< of ImageReadFault, the last rule first
    std::array<ImageRange, topologyTypes> typeFaults; ///< of ImageFaultNumber, by device type
    std::array<std::atomic<std::int32_t>, libraryLogs> logErrors; ///< errno of the first line that
                                                                  ///< a log lost; 0: none
    std::array<std::uint8_t, board::rawAddressCount> raw;
};

static_assert(std::atomic<std::uint32_t>::is_always_lock_free, "shared between processes");

} // namespace standin
