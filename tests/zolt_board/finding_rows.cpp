#include "tests/zolt_board/finding_rows.h"

namespace zolt_board::test {

std::vector<FindingRow> findingRows() {
    std::vector<FindingRow> rows;
    for (const auto& subject :
         {slotRows(), oemAreaRows(), riserMapRows(), registerRows(), nodeRows(), serviceRows()}) {
        rows.insert(rows.end(), subject.begin(), subject.end());
    }
    return rows;
}

} // namespace zolt_board::test
