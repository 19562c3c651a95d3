// One cell of the fault matrix: a run of the tool in which one call of its surroundings fails.
//
// A preload library wraps each call. The wrapper makes a Call, which numbers the call, writes it
// into the log, and says whether and in which way the call has to fail. Calls that a wrapped call
// makes itself are the platform's own: they are neither counted nor logged.
//
// The log is text in a shared file, so that it survives a crash. A record is one line of five
// fields, separated by tabs: kind, bytes that standard output has received, allocations so far,
// what was asked, what came back. The file starts with two numbers of 8 bytes: the log's length,
// and how often something failed because the cell orders it.
#pragma once

#include "tests/support/wrapped_calls.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace faults {

/// What has to fail. Numbers count from 1; 0 means that nothing fails.
struct Cell {
    long call = 0;       ///< number of the first call that fails
    long calls = 1;      ///< how many calls in a row fail
    long allocation = 0; ///< number of the memory allocation that fails
    char way[32] = "";   ///< a word
    int amount = 0;      ///< the number that belongs to the word: a status, an errno, a length
};

extern Cell cell;

/// The bytes that standard output has received.
extern std::uint64_t printed;

/// Empties the log and counts from the start.
void beginLog(char* log, std::size_t size);

/// Counts a failure that the cell orders.
void countFailure();

/// Appends text to the log. Tabs separate fields, a line feed ends a record.
[[gnu::format(printf, 1, 2)]] void log(const char* format, ...);

/// Appends bytes to the log as hexadecimal digits; "-" stands for no bytes.
void logBytes(const void* bytes, std::size_t count);

/// Whether the tool runs and no wrapper is at work: its allocations count.
[[nodiscard]] bool toolRuns();
[[nodiscard]] bool insideCall();
[[nodiscard]] long allocationsSoFar();

/// While one lives, allocations belong to the wrappers: they do not count.
class Quiet {
public:
    Quiet();
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;
    ~Quiet();
};

/// From here on, the calls and the allocations are the tool's.
void startTool();

/// Logs each allocation that the tool has not given back.
void logAllocationsLeft();

/// One call of the tool.
class Call {
public:
    /// Logs the start of the call. @p asked says what the tool asks for.
    Call(const char* kind, std::string_view asked);
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
    /// Ends the record.
    ~Call();

    /// Whether this call has to fail in the way of this word.
    [[nodiscard]] bool fails(std::string_view way) const;
    [[nodiscard]] int amount() const { return cell.amount; }

    /// False for a call that a wrapped call makes.
    [[nodiscard]] bool counts() const { return counts_; }

    /// Throws when the call has to fail by an exception, and logs its text.
    void throwIfOrdered() const;

private:
    bool counts_;
    bool ordered_ = false;
};

using zolt::test::next;

/// Lets the platform's allocations count. Returns what leaveReal() restores.
[[nodiscard]] int enterReal();
void leaveReal(int before);
void logException(const char* text);

/// Runs the real call. The platform's allocations within it count. An exception of it goes through
/// after the log has its text.
template <typename Real>
auto real(const Call& call, Real run) -> decltype(run()) {
    struct Inside {
        Inside() = default;
        Inside(const Inside&) = delete;
        Inside& operator=(const Inside&) = delete;
        ~Inside() { leaveReal(before); }
        int before = enterReal();
    };
    try {
        const Inside inside;
        return run();
    } catch (const std::exception& error) {
        if (call.counts()) {
            logException(error.what());
        }
        throw;
    }
}

} // namespace faults
