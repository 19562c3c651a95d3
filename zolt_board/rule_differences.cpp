#include "zolt_board/rule_differences.h"

#include "board/fault_rule_text.h"
#include "zolt_board/compare_lists.h"

namespace zolt_board {

void compareRules(const std::vector<std::string>& before, const std::vector<std::string>& after,
                  ChangeList changes) {
    const Pairs pairs(before, after, [](const std::string& rule) { return rule; });
    const auto nameOf = [](const std::string& rule) {
        return std::string("'").append(rule).append("'");
    };
    for (const std::string* const rule : pairs.removed) {
        changes.removed(nameOf(*rule));
    }
    for (const std::string* const rule : pairs.added) {
        changes.added(nameOf(*rule));
    }
    if (pairs.isOtherOrder) {
        changes.reordered("rules");
    }
}

void compareFaults(const board::Board& before, const board::Board& after,
                   std::vector<Change>& changes) {
    const auto textsOf = [](const board::Board& board) {
        std::vector<std::string> texts;
        texts.reserve(board.faults.size());
        for (const board::FaultRule& rule : board.faults) {
            texts.push_back(faultRuleText(rule));
        }
        return texts;
    };
    compareRules(textsOf(before), textsOf(after), ChangeList(changes, "faults"));
}

} // namespace zolt_board
