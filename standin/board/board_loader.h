// Board descriptions, from TOML to the model.
#pragma once

#include "standin/board/board.h"
#include "standin/board/toml_table.h"

#include <string>
#include <string_view>

namespace standin {

/// Reads a board description. The keys are described in docs/board-description.md.
/// @throw BoardError when the file cannot be read, is not TOML, or describes no possible board
[[nodiscard]] Board loadBoard(const std::string& path);

/// The same for a description at hand; @p name stands for the file in messages.
[[nodiscard]] Board parseBoard(std::string_view description, const std::string& name);

} // namespace standin
