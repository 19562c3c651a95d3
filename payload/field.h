// What decoding yields: the lines of a listing, each as its values and what prints them.
#pragma once

#include "console/output.h"

#include <cstdint>
#include <variant>

namespace zolt {

/// A line that shows no byte.
struct Heading {
    Line<> line;
};

/// The heading of one of several units, or a field that shows one value.
struct Value {
    Line<Number> line;
    std::uint16_t value;
};

/// A field of one of several units.
struct UnitValue {
    Line<Number, Number> line; ///< number of the unit, value
    std::uint8_t unit;         ///< from 1
    std::uint8_t value;
};

/// A field that shows text.
struct TextValue {
    Line<Text> line;
    Text text; ///< lies in the bytes that were decoded
};

using Field = std::variant<Heading, Value, UnitValue, TextValue>;

/// Whoever takes the fields that decoding yields, one after the other. None is kept.
using TakeField = void (*)(const Field& field);

/// Prints a field's line.
void printField(const Field& field);

} // namespace zolt
