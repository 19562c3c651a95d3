// What decoding yields: the lines of a listing, each as its values and how they print.
#pragma once

#include "console/output.h"

#include <cstdint>
#include <span>
#include <variant>
#include <vector>

namespace zolt {

/// A line that shows no byte.
struct Heading {
    Format<> line;
};

/// The heading of one of several units, or a field that shows one value.
struct Value {
    Format<Number> line;
    std::uint16_t value;
};

/// A field of one of several units.
struct UnitValue {
    Format<Number, Number> line; ///< number of the unit, value
    std::uint8_t unit;           ///< from 1
    std::uint8_t value;
};

/// A field that shows text.
struct TextValue {
    Format<Text> line;
    Text text; ///< lies in the bytes that were decoded
};

using Field = std::variant<Heading, Value, UnitValue, TextValue>;
using Fields = std::vector<Field>;

/// Prints one line for each field, in order.
void printFields(std::span<const Field> fields);

} // namespace zolt
