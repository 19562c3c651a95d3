// Boards with one thing wrong, each beside its nearest neighbour without it.
#pragma once

#include "zolt_board/finding.h"

#include <ostream>
#include <string>
#include <vector>

namespace zolt_board::test {

struct FindingRow {
    Kind kind;
    const char* name;
    std::string wrong;              ///< description of a board
    std::vector<std::string> lines; ///< all its findings
    std::string right;              ///< a board without findings
};

inline void PrintTo(const FindingRow& row, std::ostream* out) {
    *out << row.wrong;
}

[[nodiscard]] std::vector<FindingRow> slotRows();
[[nodiscard]] std::vector<FindingRow> oemAreaRows();
[[nodiscard]] std::vector<FindingRow> riserMapRows();
[[nodiscard]] std::vector<FindingRow> registerRows();
[[nodiscard]] std::vector<FindingRow> nodeRows();
[[nodiscard]] std::vector<FindingRow> serviceRows();

/// The rows of all subjects.
[[nodiscard]] std::vector<FindingRow> findingRows();

} // namespace zolt_board::test
