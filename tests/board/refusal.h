// The refusal of a board description.
#pragma once

#include "board/board_loader.h"

#include <string>

namespace board::test {

/// Returns the message that refuses a description, or an empty text for an accepted one.
inline std::string refusalOf(const std::string& description, const std::string& file = "b.toml") {
    try {
        (void)parseBoard(description, file);
        return {};
    } catch (const BoardError& error) {
        return error.what();
    }
}

} // namespace board::test
