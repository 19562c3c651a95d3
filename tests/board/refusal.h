// Board descriptions, as the loader accepts or refuses them.
#pragma once

#include "board/board_loader.h"

#include <cstdlib>
#include <fstream>
#include <string>

namespace board::test {

inline std::string repeated(const char* text, int count) {
    std::string all;
    while (count-- > 0) {
        all += text;
    }
    return all;
}

/// Appends a description and its refusal to the file that ZOLT_DESCRIPTIONS names. The test of the
/// schema compares them with the schema.
/// @param refusal  empty for an accepted description
inline void record(const std::string& description, const std::string& refusal) {
    constexpr std::size_t longest = 100'000;
    const char* const file = std::getenv("ZOLT_DESCRIPTIONS");
    if (file != nullptr && description.size() <= longest) {
        std::ofstream(file, std::ios::app) << description.size() << ' ' << refusal.size() << '\n'
                                           << description << refusal << '\n';
    }
}

/// Reads a description without errors.
inline Board boardOf(const std::string& description, const std::string& file) {
    Board board = parseBoard(description, file);
    record(description, "");
    return board;
}

/// Returns the message that refuses a description, or an empty text for an accepted one.
inline std::string refusalOf(const std::string& description, const std::string& file = "b.toml") {
    std::string refusal;
    try {
        (void)parseBoard(description, file);
    } catch (const BoardError& error) {
        refusal = error.what();
    }
    record(description, refusal);
    return refusal;
}

} // namespace board::test
