#include "zolt_board/tree.h"

#include <string_view>

namespace zolt_board {

namespace {

struct Marks {
    std::string_view branch;
    std::string_view lastBranch;
    std::string_view trunk;
    std::string_view gap;
};

constexpr Marks boxes{"├─ ", "└─ ", "│  ", "   "};
constexpr Marks ascii{"|- ", "`- ", "|  ", "   "};

void drawBranches(const Branch& branch, std::string& indentation, const Marks& marks,
                  Output& output) {
    for (const Branch& each : branch.branches) {
        const bool isLast = &each == &branch.branches.back();
        output.text.append(indentation)
            .append(isLast ? marks.lastBranch : marks.branch)
            .append(each.text)
            .append("\n");
        const std::size_t length = indentation.size();
        indentation.append(isLast ? marks.gap : marks.trunk);
        drawBranches(each, indentation, marks, output);
        indentation.resize(length);
    }
}

} // namespace

void draw(const Branch& root, Output& output) {
    output.text.append(root.text).append("\n");
    std::string indentation;
    drawBranches(root, indentation, output.utf8 ? boxes : ascii, output);
}

} // namespace zolt_board
