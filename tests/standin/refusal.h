// Boards that are refused.
#pragma once

#include "standin/board/board_loader.h"

#include <string>

namespace standin::test {

/// What is said of a description that is refused; nothing when it is taken.
inline std::string refusalOf(const std::string& description, const std::string& file = "b.toml") {
    try {
        (void)parseBoard(description, file);
        return {};
    } catch (const BoardError& error) {
        return error.what();
    }
}

} // namespace standin::test
