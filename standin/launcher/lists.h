// The lists of --list: the things that a board description or an option can name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace standin {

/// The names of all lists, in their order.
[[nodiscard]] std::vector<std::string> listNames();

/// The lines of a list: one thing on each line, its parts separated by tabs.
///
///   boards        name, text for people
///   device-types  code, name
///   interfaces    module type or "info", interface
///   properties    interface, property, signature
///   faults        rule, meaning
///   registers     name, bytes: of the given board
///
/// @throw ArgumentsError for an unknown list, with similar names
[[nodiscard]] std::vector<std::string> listNamed(std::string_view name, const std::string& board);

} // namespace standin
