// One run of the tool inside the fuzzer's process. All that the tool meets comes from the input:
// the operator, the console, the platform's libraries, the I2C devices and the system bus.
#pragma once

#include "tests/fuzz/bytes.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace zolt::fuzz {

struct Session {
    std::string_view typed{}; ///< what the operator has not typed yet
    Bytes console{};          ///< how the console takes each write
    Bytes board{};            ///< how each call of platform, I2C device and bus ends

    std::string printed{};       ///< all text that the tool handed to the console
    bool inputEnded = false;     ///< the tool has seen the end of the input
    unsigned menusBehindEnd = 0; ///< main menus since then
    std::size_t trees = 0;       ///< of the sysinfo library, not handed back yet
    std::size_t objects = 0;     ///< of the HAL, not destroyed yet
};

/// The running session; null between two sessions.
extern Session* session;

/// Begins a call of the board: requires that the tool has handed out all text before it.
/// @return the results of this call and of those to come
Bytes& nextAnswer();

/// Whether the call goes well. Most answers do, also those behind the input's end.
/// @param how  first byte of an answer
constexpr bool goesWell(std::uint8_t how) {
    return how < 0xC0;
}

/// Replaces the C library's standard input by what the operator types, until the object is
/// destroyed.
class TypedInput {
public:
    TypedInput();
    TypedInput(const TypedInput&) = delete;
    TypedInput& operator=(const TypedInput&) = delete;
    ~TypedInput();
};

} // namespace zolt::fuzz
