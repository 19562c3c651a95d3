// Values of the system bus in a board description: whether a value fits its D-Bus type.
#pragma once

#include "board/service_model.h"

#include <string_view>

namespace board {

/// Whether a signature is one complete type.
[[nodiscard]] bool isCompleteType(std::string_view signature);

/// Whether @p signature is one complete type and @p value fits it: numbers are within the type's
/// range, lists have the right shape and length, object paths and signatures are valid.
[[nodiscard]] bool valueFits(std::string_view signature, const Value& value);

/// Takes the parts of a value, in the order in which they stand in a message. Each function returns
/// a negative errno to end the value.
class ValueSink {
public:
    ValueSink() = default;
    ValueSink(const ValueSink&) = delete;
    ValueSink& operator=(const ValueSink&) = delete;
    virtual ~ValueSink() = default;

    /// @param code   a basic type of D-Bus
    /// @param value  points to the type's C value; to the characters for texts
    virtual int basic(char code, const void* value) = 0;
    /// @param kind      'a' array, 'r' structure, 'e' dictionary entry, 'v' variant
    /// @param contents  the signature of the parts that follow
    virtual int open(char kind, std::string_view contents) = 0;
    virtual int close() = 0;
};

/// Hands @p value to the sink as the type @p signature.
/// @return -EINVAL for a value that does not fit, or the sink's error
int putValue(std::string_view signature, const Value& value, ValueSink& sink);

} // namespace board
