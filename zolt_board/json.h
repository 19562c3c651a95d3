// JSON as all reports of zolt_board write it.
//
// Names are in snake case, and stay. Numbers are numbers, bytes are texts of hexadecimal digits in
// pairs. A text that a board may hold in another encoding than UTF-8 is an object.
// docs/board-report.schema.json describes the reports.
#pragma once

#include "board/bytes.h"
#include "board/service_model.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>

namespace zolt_board {

/// Keeps the order of the members.
using Json = nlohmann::ordered_json;

/// Bytes: "01FF".
[[nodiscard]] Json bytesToJson(std::span<const std::uint8_t> bytes);

/// A text that need not be UTF-8: { "text": "abc", "bytes": "616263" }; "text" is missing when the
/// bytes are no UTF-8.
[[nodiscard]] Json textToJson(std::string_view text);

/// A number, or "nan", "inf" or "-inf", which JSON has no numbers for.
[[nodiscard]] Json numberToJson(double number);

/// A value of the bus, by its type. Arrays, structs and dictionary entries are arrays, a variant is
/// { "signature", "value" }, and a number that is none or infinite is "nan", "inf" or "-inf".
[[nodiscard]] Json valueToJson(std::string_view signature, const board::Value& value);

/// The start of a report. @param report  the verb
[[nodiscard]] Json reportOf(std::string_view report);

/// The text of a document: ASCII without control characters other than newlines, one at the end.
[[nodiscard]] std::string documentText(const Json& document);

} // namespace zolt_board
