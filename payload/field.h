// The result of decoding: the lines of a listing. Each line consists of its values and the function
// that prints them.
#pragma once

#include "console/output.h"

#include <cstdint>
#include <variant>

namespace zolt {

/// A line without a value.
struct Heading {
    Line<> line;
};

/// A field with one value, or the heading of a numbered unit.
struct Value {
    Line<Number> line;
    std::uint16_t value;
};

/// A field of a numbered unit.
struct UnitValue {
    Line<Number, Number> line; ///< number of the unit, value
    std::uint8_t unit;         ///< from 1
    std::uint8_t value;
};

/// A field with text.
struct TextValue {
    Line<Text> line;
    Text text; ///< points into the decoded bytes
};

using Field = std::variant<Heading, Value, UnitValue, TextValue>;

/// A function that receives the decoded fields one by one. The decoder keeps none.
using TakeField = void (*)(const Field& field);

/// Prints a field's line.
void printField(const Field& field);

} // namespace zolt
