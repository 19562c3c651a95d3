// Compares each board of a list with itself and with the next one, and checks what holds for every
// comparison: it is empty exactly if the boards show the same, and the other way round it says the
// opposite. Prints how many pairs are the same, how many differ, and how many files are no boards.
//
// compare_boards FILE...
#include "tests/zolt_board/board_image.h"

#include "board/board_loader.h"
#include "zolt_board/differences.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using zolt_board::Change;
using zolt_board::differences;

// What the comparison the other way round says.
Change mirrored(Change change) {
    using Kind = Change::Kind;
    std::swap(change.before, change.after);
    if (change.kind == Kind::added || change.kind == Kind::removed) {
        change.kind = change.kind == Kind::added ? Kind::removed : Kind::added;
    }
    if (!change.movedFrom.empty()) {
        std::swap(change.place, change.movedFrom);
    }
    return change;
}

std::vector<std::string> sortedTexts(const std::vector<Change>& changes) {
    std::vector<std::string> texts;
    texts.reserve(changes.size());
    for (const Change& change : changes) {
        texts.push_back(textOf(change).append(" from ").append(change.movedFrom));
    }
    std::ranges::sort(texts);
    return texts;
}

class Checker {
public:
    void check(const board::Board& before, const board::Board& after, const std::string& names) {
        const std::vector<Change> changes = differences(before, after);
        const bool isSame = zolt_board::test::imageOf(before) == zolt_board::test::imageOf(after);
        isSame ? ++same_ : ++different_;
        if (changes.empty() != isSame) {
            complain(names, isSame ? "the boards are the same, but: " + textOf(changes.front())
                                   : "the difference is not seen");
        }
        std::vector<Change> expected;
        std::ranges::transform(changes, std::back_inserter(expected), mirrored);
        const auto there = sortedTexts(expected);
        const auto back = sortedTexts(differences(after, before));
        const auto [one, other] = std::ranges::mismatch(there, back);
        if (one != there.end() || other != back.end()) {
            complain(names, "the other way round: " + (one == there.end() ? "nothing" : *one) +
                                " / " + (other == back.end() ? "nothing" : *other));
        }
        // A board may have two things of one name, and lose both.
        std::vector<Change> values;
        std::ranges::copy_if(changes, std::back_inserter(values), [](const Change& change) {
            return change.kind == Change::Kind::changed;
        });
        const auto texts = sortedTexts(values);
        if (const auto twice = std::ranges::adjacent_find(texts); twice != texts.end()) {
            complain(names, "twice: " + *twice);
        }
    }

    int finish(unsigned refused) const {
        std::printf("%u same, %u different, %u no boards\n", same_, different_, refused);
        return failed_ ? 1 : 0;
    }

private:
    void complain(const std::string& names, const std::string& text) {
        std::printf("%s: %s\n", names.c_str(), text.c_str());
        failed_ = true;
    }

    unsigned same_ = 0;
    unsigned different_ = 0;
    bool failed_ = false;
};

} // namespace

int main(int argc, char* argv[]) {
    try {
        Checker checker;
        unsigned refused = 0;
        std::optional<board::Board> last;
        for (int at = 1; at < argc; ++at) {
            const std::string name = argv[at];
            try {
                board::Board board = board::loadBoard(name);
                checker.check(board, board, name);
                if (last) {
                    checker.check(*last, board, name + " and the one before");
                }
                last = std::move(board);
            } catch (const board::BoardError&) {
                ++refused;
            }
        }
        return checker.finish(refused);
    } catch (const std::exception& error) {
        (void)std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }
}
