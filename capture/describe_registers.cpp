#include "capture/describe_registers.h"

#include "board/control_register_layout.h"
#include "board/cpld_map.h"
#include "board/field_writer.h"
#include "board/module_writer.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <span>
#include <string>
#include <utility>

namespace capture {

namespace {

using board::DocumentTable;
using board::WrittenNumber;
using board::WrittenRow;

WrittenRow rowOf(const board::ControlClass& kind, unsigned instance, const board::Board& board) {
    board::ControlInstance record{};
    for (std::size_t i = 0; i < record.size(); ++i) {
        const auto found = board.controlBytes.find(
            static_cast<std::uint16_t>(board::addressOf(kind, instance) + i));
        record[i] = found == board.controlBytes.end() ? 0 : found->second;
    }
    WrittenRow row;
    for (const board::ControlField& field : kind.fields) {
        std::ranges::move(board::fieldsOf(std::span(&field.bits, 1), record),
                          std::back_inserter(row));
    }
    if (!row.empty() && kind.instances > 1) {
        row.emplace(row.begin(), "id", WrittenNumber{instance});
    }
    return row;
}

struct Flag {
    const char* key;
    bool board::Slot::*is;
};
constexpr Flag flags[] = {{"dbyp", &board::Slot::dbyp},
                          {"dpen", &board::Slot::dpen},
                          {"apen", &board::Slot::apen},
                          {"astat", &board::Slot::astat}};

void writeDslIds(const board::Slot& slot, DocumentTable& table) {
    const auto isZero = [](std::uint8_t id) { return id == 0; };
    const auto end = std::ranges::find_if_not(slot.dslIds.rbegin(), slot.dslIds.rend(), isZero);
    board::WrittenList ids;
    for (auto id = slot.dslIds.begin(); id != end.base(); ++id) {
        ids.emplace_back(WrittenNumber{*id, 2});
    }
    if (!ids.empty()) {
        table.set("dsl_ids", std::move(ids));
    }
}

// Writes the bytes that a slot carries. They stay bytes if no module has them, and if the area
// behind the payload is no list of descriptors.
void writeModuleOf(const board::Slot& slot, DocumentTable& table) {
    const auto payload = board::decodePayload(slot.payload);
    const auto area = slot.oemArea.empty() ? std::nullopt : board::decodeOemArea(slot.oemArea);
    if (payload && (slot.oemArea.empty() || area)) {
        DocumentTable& module = table.table("module");
        if (!slot.moduleType.empty()) {
            module.set("type", slot.moduleType);
            module.set("object", slot.objectName);
        }
        writeModule(*payload, area, module);
        return;
    }
    if (!slot.payload.empty()) {
        table.set("payload", slot.payload);
    }
    if (!slot.oemArea.empty()) {
        table.set("oem_area", slot.oemArea);
    }
}

void writeSlot(const board::Slot& slot, DocumentTable& table) {
    table.set("id", WrittenNumber{slot.id});
    if (slot.dstat != 0) {
        table.set("dstat", WrittenNumber{slot.dstat});
    }
    for (const Flag& flag : flags) {
        if (slot.*flag.is) {
            table.set(flag.key, true);
        }
    }
    // The class register follows the payload's class unless the description says another.
    if (slot.moduleClass != (slot.payload.size() > 1 ? slot.payload[1] : 0)) {
        table.set("module_class", WrittenNumber{slot.moduleClass, 2});
    }
    if (slot.moduleClassIndex != 0) {
        table.set("module_class_index", WrittenNumber{slot.moduleClassIndex});
    }
    if (slot.payloadOffset != 0 || !slot.payload.empty()) {
        table.set("payload_offset", WrittenNumber{slot.payloadOffset, 4});
    }
    writeDslIds(slot, table);
    writeModuleOf(slot, table);
}

// Registers with addresses in a row are one override.
void writeRawOverrides(const board::Board& board, DocumentTable& table) {
    for (auto run = board.rawOverrides.begin(); run != board.rawOverrides.end();) {
        const std::uint16_t start = run->first;
        board::Bytes bytes;
        for (; run != board.rawOverrides.end() && run->first == start + bytes.size(); ++run) {
            bytes.push_back(run->second);
        }
        std::string key = "0x";
        for (int shift = 12; shift >= 0; shift -= 4) {
            key.push_back("0123456789ABCDEF"[start >> shift & 0xF]);
        }
        if (bytes.size() == 1) {
            table.set(key, WrittenNumber{bytes[0], 2});
        } else {
            table.set(key, std::move(bytes));
        }
    }
}

} // namespace

void writeControls(const board::Board& board, DocumentTable& root) {
    for (const board::ControlClass& kind : board::controlClasses) {
        std::vector<WrittenRow> rows;
        for (unsigned instance = 1; instance <= kind.instances; ++instance) {
            if (WrittenRow row = rowOf(kind, instance, board); !row.empty()) {
                rows.push_back(std::move(row));
            }
        }
        if (!rows.empty()) {
            root.setRows(kind.key, std::move(rows));
        }
    }
}

void writeSlots(const board::Board& board, DocumentTable& root) {
    for (const board::Slot& slot : board.slots) {
        writeSlot(slot, root.append("slot"));
    }
}

void writeRiserMap(const board::Board& board, DocumentTable& root) {
    if (board.riserMap == board::Bytes(board::riserMapSize)) {
        return;
    }
    DocumentTable& table = root.table("riser_map");
    const auto map = board::decodeRiserMap(board.riserMap);
    if (!map || !board::writeRiserMap(*map, table)) {
        table.set("bytes", board.riserMap);
    }
}

void writeOverrides(const board::Board& board, DocumentTable& root) {
    const auto object = board.halObjects.find(std::string(board::payloadBlockName));
    if (object != board.halObjects.end()) {
        const board::HalObject plain;
        DocumentTable& table = root.table("hal").table(object->first);
        if (object->second.interruptCallback) {
            table.set("interrupt_callback", true);
        }
        if (object->second.unregisterStatus != 0) {
            table.set("unregister_status", WrittenNumber{object->second.unregisterStatus});
        }
        if (object->second.mostBytes != plain.mostBytes) {
            table.set("most_bytes", WrittenNumber{object->second.mostBytes});
        }
    }
    DocumentTable& overrides = root.table("override");
    for (const auto& [name, bytes] : board.namedOverrides) {
        if (bytes.size() == 1) {
            overrides.table("named").set(name, WrittenNumber{bytes[0], 2});
        } else {
            overrides.table("named").set(name, bytes);
        }
    }
    writeRawOverrides(board, overrides.table("raw"));
}

} // namespace capture
