#include "zolt_board/register_differences.h"

#include "zolt_board/riser_map_differences.h"

#include "board/cpld_map.h"
#include "board/number.h"
#include "board/slot_registers.h"

#include <algorithm>
#include <set>
#include <utility>

namespace zolt_board {

namespace {

using board::Bytes;

// The bytes that a name delivers for a value.
Bytes namedBytes(const board::BitField& field, std::uint32_t value) {
    Bytes bytes{static_cast<std::uint8_t>(value & 0xFF)};
    if (field.upperBits != 0) {
        bytes.push_back(static_cast<std::uint8_t>(value >> 8));
    }
    return bytes;
}

bool agree(const board::BitField& field, const RegisterView& view) {
    return !view.named || *view.named == namedBytes(field, view.raw);
}

// The value that a name delivers, or its bytes if they are no value of the field.
Shown shownNamed(const board::BitField& field, const RegisterView& view) {
    const Bytes& bytes = *view.named;
    std::uint32_t value = bytes.empty() ? 0 : bytes[0];
    value |= bytes.size() > 1 ? std::uint32_t{bytes[1]} << 8 : 0;
    return value <= field.highest() && bytes == namedBytes(field, value) ? shownField(field, value)
                                                                         : Shown(bytes);
}

std::string placeOf(const board::ControlClass& kind, unsigned instance) {
    std::string place(kind.key);
    return kind.instances == 1 ? place : place.append(" ").append(std::to_string(instance));
}

std::span<const std::uint8_t> blockOf(const board::CpldContents& contents,
                                      const board::ControlClass& kind, unsigned instance) {
    return std::span(contents.raw).subspan(addressOf(kind, instance), board::mostRegisters);
}

template <typename Visit>
void eachInstance(Visit visit) {
    for (const board::ControlClass& kind : board::controlClasses) {
        for (unsigned instance = 1; instance <= kind.instances; ++instance) {
            visit(kind, instance);
        }
    }
}

std::string slotPrefix(unsigned id) {
    return std::string("PICPWR_").append(std::to_string(id));
}

// The names whose reads the other comparisons compare.
std::set<std::string> comparedNames() {
    std::set<std::string> names{std::string(board::riserMapName)};
    for (unsigned id = 1; id <= board::slotCount; ++id) {
        for (const board::ControlField& field : board::slotFields) {
            names.insert(slotPrefix(id).append(field.suffix));
        }
    }
    eachInstance([&](const board::ControlClass& kind, unsigned instance) {
        for (const board::ControlField& field : kind.fields) {
            names.insert(nameOf(kind, instance, field));
        }
    });
    return names;
}

// The bits of the raw registers that the other comparisons compare as fields.
Bytes comparedBits() {
    Bytes bits(board::rawAddressCount);
    const auto add = [&](std::span<const board::ControlField> fields, std::size_t address) {
        for (const board::ControlField& field : fields) {
            Bytes block(board::slotBlockSize);
            field.bits.encode(field.bits.highest(), block);
            for (std::size_t i = 0; i < block.size(); ++i) {
                bits[address + i] |= block[i];
            }
        }
    };
    for (unsigned id = 1; id <= board::slotCount; ++id) {
        add(board::slotFields, board::slotBlockStart + board::slotBlockSize * (id - 1));
    }
    eachInstance([&](const board::ControlClass& kind, unsigned instance) {
        add(kind.fields, addressOf(kind, instance));
    });
    return bits;
}

// The registers of the payload block that hold bytes of a slot, or nothing. The comparison of the
// slots explains them.
std::vector<bool> explainedPayloads(const BoardView& view) {
    std::vector<bool> explained(board::rawAddressCount);
    const auto* const start = view.cpld().raw.data();
    for (std::size_t i = 0; i < board::payloadBlockSize; ++i) {
        const std::size_t address = board::payloadBlockStart + i;
        explained[address] = view.cpld().raw[address] == 0;
    }
    for (unsigned id = 1; id <= board::slotCount; ++id) {
        const SlotView& slot = view.slot(id);
        const auto bytes = view.bytesAt(slot, slot.size());
        std::fill_n(explained.begin() + (bytes.data() - start), bytes.size(), true);
    }
    return explained;
}

// The raw registers of the riser map that hold the same byte as the map that the name delivers.
void explainRiserMap(const BoardView& view, const Bytes& map, std::vector<bool>& explained) {
    for (std::size_t i = 0; i < board::riserMapSize; ++i) {
        const std::size_t address = board::riserMapStart + i;
        explained[address] = view.cpld().raw[address] == (i < map.size() ? map[i] : 0);
    }
}

const Bytes& riserMapOf(const BoardView& view) {
    return view.cpld().named.at(std::string(board::riserMapName));
}

void compareRawRegisters(const BoardView& before, const BoardView& after,
                         std::vector<Change>& changes) {
    std::vector<bool> first = explainedPayloads(before);
    std::vector<bool> second = explainedPayloads(after);
    explainRiserMap(before, riserMapOf(before), first);
    explainRiserMap(after, riserMapOf(after), second);
    const Bytes bits = comparedBits();
    // Registers that need no report get the same value.
    const Bytes& raw = before.cpld().raw;
    Bytes other = after.cpld().raw;
    for (std::size_t address = 0; address < other.size(); ++address) {
        const bool differsInFieldsOnly = ((raw[address] ^ other[address]) & ~bits[address]) == 0;
        if (differsInFieldsOnly || (first[address] && second[address])) {
            other[address] = raw[address];
        }
    }
    constexpr unsigned hexDigits = 4;
    ChangeList(changes, "raw").bytes("register", raw, other, 0, hexDigits);
}

void compareOtherNames(const BoardView& before, const BoardView& after,
                       std::vector<Change>& changes) {
    const auto& first = before.cpld().named;
    const auto& second = after.cpld().named;
    std::set<std::string> names;
    for (const auto* const board : {&first, &second}) {
        for (const auto& [name, bytes] : *board) {
            names.insert(name);
        }
    }
    const std::set<std::string> compared = comparedNames();
    for (const std::string& name : names) {
        const auto shown = [&](const auto& named) {
            const auto found = named.find(name);
            return found == named.end() ? Shown() : Shown(found->second);
        };
        if (!compared.contains(name)) {
            ChangeList(changes, std::string("register ").append(name))
                .value("", shown(first), shown(second));
        }
    }
}

} // namespace

RegisterView viewOf(const board::CpldContents& contents, const std::string& name,
                    const board::BitField& field, std::span<const std::uint8_t> block) {
    RegisterView view{.raw = field.decode(block)};
    if (const auto found = contents.named.find(name);
        !name.empty() && found != contents.named.end()) {
        view.named = found->second;
    }
    return view;
}

bool isZero(const board::BitField& field, const RegisterView& view) {
    return view.raw == 0 && agree(field, view);
}

void compareRegister(const board::BitField& field, const RegisterView& before,
                     const RegisterView& after, ChangeList& changes) {
    const std::string key(field.key);
    const Shown rawBefore = shownField(field, before.raw);
    const Shown rawAfter = shownField(field, after.raw);
    if (agree(field, before) && agree(field, after)) {
        changes.value(key, rawBefore, rawAfter);
        return;
    }
    changes.valueIn(Change::View::named, key, shownNamed(field, before), shownNamed(field, after));
    changes.valueIn(Change::View::raw, key, rawBefore, rawAfter);
}

void compareControlRegisters(const BoardView& before, const BoardView& after,
                             std::vector<Change>& changes) {
    eachInstance([&](const board::ControlClass& kind, unsigned instance) {
        ChangeList list(changes, placeOf(kind, instance));
        for (const board::ControlField& field : kind.fields) {
            const auto view = [&](const BoardView& board) {
                return viewOf(board.cpld(),
                              field.suffix.empty() ? "" : nameOf(kind, instance, field), field.bits,
                              blockOf(board.cpld(), kind, instance));
            };
            compareRegister(field.bits, view(before), view(after), list);
        }
    });
}

void compareOtherRegisters(const BoardView& before, const BoardView& after,
                           std::vector<Change>& changes) {
    compareRiserMaps(riserMapOf(before), riserMapOf(after), changes);
    compareOtherNames(before, after, changes);
    compareRawRegisters(before, after, changes);
}

} // namespace zolt_board
