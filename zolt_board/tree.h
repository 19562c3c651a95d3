// Draws a tree with box characters, or with ASCII.
#pragma once

#include "zolt_board/output.h"

#include <string>
#include <utility>
#include <vector>

namespace zolt_board {

struct Branch {
    std::string text; ///< one line, safe for the terminal
    std::vector<Branch> branches{};

    explicit Branch(std::string line) : text(std::move(line)) {}

    Branch& add(std::string line) { return branches.emplace_back(std::move(line)); }
};

/// Writes the tree. The line of the root has no mark.
void draw(const Branch& root, Output& output);

} // namespace zolt_board
