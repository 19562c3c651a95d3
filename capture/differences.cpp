#include "capture/differences.h"

#include "board/cpld_contents.h"
#include "board/cpld_map.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <optional>

namespace capture {

namespace {

std::string inHex(std::uint32_t value) {
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16).ptr;
    std::string text(digits.data(), end);
    std::ranges::transform(text, text.begin(),
                           [](char c) { return c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c; });
    return std::string("0x").append(text.size() < 4 ? 4 - text.size() : 0, '0').append(text);
}

std::string withStatus(std::string rule, std::int32_t status) {
    constexpr std::int32_t defaultStatus = -1;
    return status == defaultStatus ? rule : rule.append(" status ").append(std::to_string(status));
}

using Readings = std::map<std::string, Reading>;

// The number of names that a prefix covers, if their reads all failed with the same status; else 0.
std::size_t failuresUnder(const std::string& prefix, std::int32_t status,
                          const Readings& readings) {
    std::size_t count = 0;
    for (auto read = readings.lower_bound(prefix);
         read != readings.end() && read->first.starts_with(prefix); ++read, ++count) {
        if (read->second.status != status) {
            return 0;
        }
    }
    return count;
}

// The shortest pattern that covers the name and other failures, or the name alone. Patterns end
// behind an underscore, so that they cover the registers of a unit or of a class.
std::string patternFor(const std::string& name, std::int32_t status, const Readings& readings) {
    std::size_t length = 0;
    do {
        const std::string prefix = name.substr(0, length);
        if (failuresUnder(prefix, status, readings) > 1) {
            return std::string(prefix).append("*");
        }
        const std::size_t next = name.find('_', length);
        length = next == std::string::npos ? name.size() : next + 1;
    } while (length < name.size());
    return name;
}

bool covers(const std::string& pattern, const std::string& name) {
    return pattern.ends_with('*') ? name.starts_with(pattern.substr(0, pattern.size() - 1))
                                  : name == pattern;
}

void addNamedFaults(const Readings& readings, std::vector<std::string>& rules) {
    std::string pattern;
    for (const auto& [name, reading] : readings) {
        if (reading.status == 0 || (!pattern.empty() && covers(pattern, name))) {
            continue;
        }
        pattern = patternFor(name, reading.status, readings);
        rules.push_back(withStatus(std::string("named-read ").append(pattern), reading.status));
    }
}

// A range of raw addresses of which at least one cannot be read.
struct FailedRange {
    std::uint32_t first;
    std::uint32_t last;
    std::int32_t status;
};

// The part of a failed read that no successful read covers: a part of it must have failed.
FailedRange failedPart(std::uint32_t first, std::uint32_t length, std::int32_t status,
                       const RawBytes& readable) {
    FailedRange range{first, first + length - 1, status};
    const auto isReadable = [&](std::uint32_t address) {
        return readable.contains(static_cast<std::uint16_t>(address));
    };
    while (range.first < range.last && isReadable(range.first)) {
        ++range.first;
    }
    while (range.last > range.first && isReadable(range.last)) {
        --range.last;
    }
    return range;
}

// Registers that raw reads delivered. The bytes of the HAL's object say nothing of raw reads.
RawBytes readableRegisters(const Observation& observation) {
    Observation raw;
    raw.rawBytes = observation.rawBytes;
    raw.rawWords = observation.rawWords;
    raw.payloads = observation.payloads;
    for (PayloadReading& payload : raw.payloads) {
        payload.foundObject = false;
    }
    return knownRegisters(raw);
}

// Whether the driver refuses a block at this address on every board.
bool isOutsideRegisters(std::uint32_t first, std::uint32_t length) {
    return first >= board::rawAddressCount || length > board::rawAddressCount - first;
}

std::vector<FailedRange> failedRanges(const Observation& observation) {
    const RawBytes readable = readableRegisters(observation);
    std::vector<FailedRange> ranges;
    const auto add = [&](std::uint32_t first, std::uint32_t length, std::int32_t status) {
        if (status != 0 && !isOutsideRegisters(first, length)) {
            ranges.push_back(failedPart(first, length, status, readable));
        }
    };
    for (const auto& [address, reading] : observation.rawBytes) {
        add(address, 1, reading.status);
    }
    for (const auto& [address, reading] : observation.rawWords) {
        add(address, 2, reading.status);
    }
    for (const PayloadReading& payload : observation.payloads) {
        if (payload.raw) {
            add(board::payloadsStart + payload.offset, payload.length, payload.raw->status);
        }
    }
    std::ranges::sort(ranges, {},
                      [](const FailedRange& range) { return std::pair(range.first, range.last); });
    return ranges;
}

// Joins ranges of one status that have no readable register between them.
std::vector<FailedRange> joined(const std::vector<FailedRange>& ranges, const RawBytes& readable) {
    std::vector<FailedRange> rules;
    for (const FailedRange& range : ranges) {
        if (!rules.empty() && rules.back().status == range.status) {
            FailedRange& before = rules.back();
            const auto between = readable.upper_bound(static_cast<std::uint16_t>(before.last));
            if (between == readable.end() || between->first > range.first ||
                range.first <= before.last) {
                before.last = std::max(before.last, range.last);
                continue;
            }
        }
        rules.push_back(range);
    }
    return rules;
}

// A range of raw addresses, or of an object's bytes: one or two numbers.
std::string inHex(const FailedRange& range) {
    return range.first == range.last ? inHex(range.first)
                                     : inHex(range.first).append("-").append(inHex(range.last));
}

void addRawFaults(const Observation& observation, std::vector<std::string>& rules) {
    for (const FailedRange& range :
         joined(failedRanges(observation), readableRegisters(observation))) {
        rules.push_back(withStatus(std::string("raw-read ").append(inHex(range)), range.status));
    }
}

bool isOutsideObject(const PayloadReading& payload) {
    const std::uint32_t index = payload.offset + board::payloadIndexOfOffset0;
    return index > board::payloadBlockSize || payload.length > board::payloadBlockSize - index;
}

// The object's bytes that bulk reads delivered, or would have delivered without a limit.
RawBytes readableBytes(const Observation& observation) {
    RawBytes readable;
    for (const PayloadReading& payload : observation.payloads) {
        if (payload.foundObject && payload.hal.status == 0) {
            const std::uint32_t index = payload.offset + board::payloadIndexOfOffset0;
            for (std::uint32_t i = 0; i < payload.length; ++i) {
                readable[static_cast<std::uint16_t>(index + i)] = 0;
            }
        }
    }
    return readable;
}

// How many of a payload's first bytes a shorter read of the payload has, if that read failed in
// another way. The long read's rule is for the bytes behind them, and stands behind the rule of the
// short one.
std::uint32_t lengthOfOtherFailure(const Observation& observation, const PayloadReading& payload) {
    for (const PayloadReading& other : observation.payloads) {
        if (other.offset == payload.offset && other.length < payload.length && other.foundObject &&
            other.hal.status != 0 && other.hal.status != payload.hal.status) {
            return other.length;
        }
    }
    return 0;
}

// Reads beyond the object's end fail on every board.
std::vector<FailedRange> failedBulkReads(const Observation& observation, const RawBytes& readable) {
    std::vector<FailedRange> ranges;
    for (const PayloadReading& payload : observation.payloads) {
        if (payload.foundObject && payload.hal.status != 0 && !isOutsideObject(payload)) {
            const std::uint32_t skipped = lengthOfOtherFailure(observation, payload);
            ranges.push_back(failedPart(payload.offset + board::payloadIndexOfOffset0 + skipped,
                                        payload.length - skipped, payload.hal.status, readable));
        }
    }
    std::ranges::sort(ranges, {},
                      [](const FailedRange& range) { return std::pair(range.first, range.last); });
    return ranges;
}

void addHalFaults(const Observation& observation, std::vector<std::string>& rules) {
    const std::string name(board::payloadBlockName);
    const bool isMissing = std::ranges::any_of(
        observation.payloads, [](const PayloadReading& payload) { return !payload.foundObject; });
    if (isMissing) {
        rules.push_back(std::string("hal-object ").append(name));
        return;
    }
    const RawBytes readable = readableBytes(observation);
    const std::vector<FailedRange> ranges =
        joined(failedBulkReads(observation, readable), readable);
    // One rule is for all bytes, if that fails no read that succeeded.
    const bool isWhole = readable.empty() && ranges.size() == 1;
    for (const FailedRange& range : ranges) {
        std::string rule = std::string("hal-read ").append(name);
        if (!isWhole) {
            rule.append(" ").append(inHex(range));
        }
        rules.push_back(withStatus(std::move(rule), range.status));
    }
}

// The most bytes that one read of the HAL's object delivered, if one delivered less than asked.
std::optional<std::uint32_t> mostBytesIn(const Observation& observation) {
    std::size_t most = 0;
    bool isShort = false;
    for (const PayloadReading& payload : observation.payloads) {
        if (payload.foundObject && payload.hal.status == 0) {
            most = std::max(most, payload.hal.bytes.size());
            isShort = isShort || payload.hal.bytes.size() < payload.length;
        }
    }
    return isShort ? std::optional(static_cast<std::uint32_t>(most)) : std::nullopt;
}

} // namespace

void addOverrides(const Observation& observation, const RawBytes& known, board::Board& board) {
    const board::CpldContents derived = deriveCpldContents(board);
    for (const auto& [name, reading] : observation.named) {
        if (reading.status != 0) {
            continue;
        }
        const auto found = derived.named.find(name);
        if (found == derived.named.end() || found->second != reading.bytes) {
            board.namedOverrides[name] = reading.bytes;
        }
    }
    for (const auto& [address, byte] : known) {
        if (derived.raw[address] != byte) {
            board.rawOverrides[address] = byte;
        }
    }
    if (observation.payloadBlock) {
        board::HalObject& object = board.halObjects[std::string(board::payloadBlockName)];
        object.interruptCallback = observation.payloadBlock->interruptCallback;
        object.unregisterStatus = observation.payloadBlock->unregisterStatus;
        if (const auto most = mostBytesIn(observation)) {
            object.mostBytes = *most;
        }
    }
}

std::vector<std::string> registerFaults(const Observation& observation) {
    std::vector<std::string> rules;
    addNamedFaults(observation.named, rules);
    addRawFaults(observation, rules);
    addHalFaults(observation, rules);
    return rules;
}

} // namespace capture
