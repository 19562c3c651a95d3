// A board description together with the descriptions that it takes over, as one TOML table.
#pragma once

#include "board/description_text.h"
#include "board/toml_table.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace board {

/// The key that names the base of a description.
constexpr std::string_view baseKey = "base";

constexpr std::size_t mostDescriptions = 8; ///< in a chain, from a description to its last base

/// Finds the file of a board that comes with the tool, by its name.
using BoardFinder = std::function<std::string(const std::string& name)>;

/// Whether a text names a board that comes with the tool. Any other text is a path.
[[nodiscard]] bool isBoardName(std::string_view text);

struct DescriptionChain {
    toml::table table;              ///< the description, with all that it takes over
    std::vector<std::string> files; ///< the last base first, the description last
};

/// Reads the bases of a description, and lays each description over its base.
///
/// @param description  its bounds are those of the whole chain
/// @param name         its file: the path of a base is relative to the file's directory
/// @param find         may be empty: no board comes with the tool then
/// @param errors       if given, gets the errors of the changes
/// @throw BoardError when a description cannot be read or is no TOML, when the chain has a circle
/// or
///        is too long
[[nodiscard]] DescriptionChain readChain(const DescriptionFile& description,
                                         const std::string& name, const BoardFinder& find,
                                         Errors* errors);

} // namespace board
