// Findings of the registers: whether they deliver the same by name and by address, and whether the
// control registers name slots that exist.
#include "board/slot_registers.h"
#include "zolt_board/joined.h"
#include "zolt_board/subjects.h"

#include <algorithm>
#include <string>
#include <utility>

namespace zolt_board {

namespace {

class RegisterCheck {
public:
    RegisterCheck(const ReaderView& board, Findings& findings)
        : board_(&board), findings_(&findings) {}

    void checkClass(const board::ControlClass& kind) {
        for (unsigned instance = 1; instance <= kind.instances; ++instance) {
            for (const board::ControlField& field : kind.fields) {
                if (!field.suffix.empty()) {
                    const std::string name = board::nameOf(kind, instance, field);
                    check(name, field.bits, board::addressOf(kind, instance));
                }
            }
        }
    }

    void checkRiserMap() {
        const std::string name(board::riserMapName);
        const board::Bytes* const bytes = board_->named(name);
        if (bytes == nullptr ||
            !board_->readable().raw(board::riserMapStart, board::riserMapSize)) {
            return;
        }
        const auto raw =
            std::span(board_->contents().raw).subspan(board::riserMapStart, board::riserMapSize);
        if (bytes->size() != raw.size()) {
            addDifference(name, joined("the name delivers ", counted(bytes->size(), "byte"),
                                       ", the addresses ", raw.size()));
            return;
        }
        const auto [byName, byAddress] = std::ranges::mismatch(*bytes, raw);
        if (byName != bytes->end()) {
            addDifference(name, joined("byte ", byName - bytes->begin(), " is ", inHex(*byName, 2),
                                       " by name and ", inHex(*byAddress, 2), " by address"));
        }
    }

private:
    void check(const std::string& name, const board::BitField& field, std::uint16_t address) {
        const board::Bytes* const bytes = board_->named(name);
        const auto raw = board_->rawBlock(field, address);
        if (bytes != nullptr && !raw.empty()) {
            const board::Bytes byAddress = field.delivered(raw);
            if (*bytes != byAddress) {
                addDifference(name, joined("the name delivers ", bytesText(*bytes),
                                           ", the address ", bytesText(byAddress)));
            }
        }
        const auto value = board_->value(name, field, address);
        if (field.key == "picpwr_index" && value && namesMissingSlot(*value)) {
            findings_->push_back({Kind::picpwrOutOfRange, name,
                                  joined("the PICPWR index is ", *value),
                                  "1 to 63, or 0 or 128 to 255 for no module"});
        }
    }

    // An instance without a module names no slot: its number is 0, or has the highest bit set.
    static bool namesMissingSlot(std::uint32_t picpwr) {
        constexpr std::uint32_t noModule = 0x80;
        return picpwr > board::slotCount && picpwr < noModule;
    }

    void addDifference(const std::string& name, std::string what) {
        findings_->push_back(
            {Kind::viewsDisagree, name, std::move(what), "the same by name and by address"});
    }

    const ReaderView* board_;
    Findings* findings_;
};

} // namespace

void checkRegisters(const ReaderView& board, Findings& findings) {
    RegisterCheck views(board, findings);
    views.checkClass(board::slotRegisters);
    for (const board::ControlClass& kind : board::controlClasses) {
        views.checkClass(kind);
    }
    views.checkRiserMap();
}

} // namespace zolt_board
