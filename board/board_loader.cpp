#include "board/board_loader.h"

#include "board/bus_names.h"
#include "board/control_registers.h"
#include "board/cpld_map.h"
#include "board/described_once.h"
#include "board/description_text.h"
#include "board/fault_order.h"
#include "board/i2c_description.h"
#include "board/message_text.h"
#include "board/module.h"
#include "board/module_type.h"
#include "board/number.h"
#include "board/payload_block.h"
#include "board/riser_map.h"
#include "board/service_description.h"

#include <algorithm>
#include <limits>

namespace board {

namespace {

constexpr auto highestByte = std::numeric_limits<std::uint8_t>::max();
constexpr auto highestWord = std::numeric_limits<std::uint16_t>::max();

std::uint8_t byteOr0(TomlTable& table, std::string_view key, std::uint8_t highest = highestByte) {
    return static_cast<std::uint8_t>(table.integer(key, 0, highest).value_or(0));
}

void readDslIds(TomlTable& table, Slot& slot) {
    const auto ids = table.bytes("dsl_ids").value_or(Bytes{});
    if (ids.size() > slot.dslIds.size()) {
        table.place("dsl_ids").refuse("slot: 'dsl_ids' has more than 8 identifiers");
    }
    // The size fits: GCC 12 warns in a release for AArch64 without the second bound.
    std::copy_n(ids.begin(), std::min(ids.size(), slot.dslIds.size()), slot.dslIds.begin());
}

// Reads where the service publishes a module. A module without a type is not published.
void readObjectPath(TomlTable& module, Slot& slot, DescribedOnce& objects) {
    const auto type = module.text("type");
    const auto object = module.text("object");
    if (type.has_value() != object.has_value()) {
        module.place().refuse("module: give both 'type' and 'object', or neither");
    }
    if (!type) {
        return;
    }
    if (std::ranges::find(moduleTypes, *type, &ModuleType::name) == std::end(moduleTypes)) {
        std::vector<std::string> names;
        for (const ModuleType& known : moduleTypes) {
            names.emplace_back(known.name);
        }
        module.place("type").refuse("module: " + inQuotes(*type) + " is not a module type" +
                                    suggestion(*type, names));
    }
    if (!isPathElement(*object)) {
        module.place("object").refuse("module: 'object' must be letters, digits and underscores");
    }
    objects.note(*type + '/' + *object, module.place("object"));
    slot.moduleType = *type;
    slot.objectName = *object;
}

// Reads a slot's payload and OEM area: those of its module, or plain bytes.
void readModuleBytes(TomlTable& table, Slot& slot, DescribedOnce& objects) {
    slot.payload = table.bytes("payload").value_or(Bytes{});
    slot.oemArea = table.bytes("oem_area").value_or(Bytes{});
    if (auto module = table.table("module")) {
        if (!slot.payload.empty() || !slot.oemArea.empty()) {
            module->place().refuse("slot: 'module' cannot stand beside 'payload' or 'oem_area'");
        }
        ModuleBytes bytes = readModule(*module);
        slot.payload = std::move(bytes.payload);
        slot.oemArea = std::move(bytes.oemArea);
        readObjectPath(*module, slot, objects);
        module->finish();
    }
    if (slot.payload.size() > longestPayload) {
        table.place("payload").refuse("slot: 'payload' has " + std::to_string(slot.payload.size()) +
                                      " bytes, at most " + std::to_string(longestPayload) + " fit");
    }
}

void readSlots(TomlTable& root, Board& board) {
    DescribedOnce described("slot");
    DescribedOnce objects("object");
    PayloadBlock block;
    root.eachTable("slot", [&](TomlTable& table) {
        Slot slot;
        slot.id = static_cast<std::uint8_t>(table.requiredInteger("id", 1, slotCount));
        described.note(slot.id, table.place("id"));
        slot.dstat = byteOr0(table, "dstat", 3);
        slot.dbyp = table.boolean("dbyp").value_or(false);
        slot.dpen = table.boolean("dpen").value_or(false);
        slot.apen = table.boolean("apen").value_or(false);
        slot.astat = table.boolean("astat").value_or(false);
        slot.moduleClassIndex = byteOr0(table, "module_class_index");
        readDslIds(table, slot);
        readModuleBytes(table, slot, objects);
        // The class register follows the payload, unless the description gives another class.
        slot.moduleClass =
            static_cast<std::uint8_t>(table.integer("module_class", 0, highestByte)
                                          .value_or(slot.payload.size() > 1 ? slot.payload[1] : 0));
        block.place(table, slot);
        board.slots.push_back(std::move(slot));
    });
}

void readRiserMapTable(TomlTable& root, Board& board) {
    if (auto table = root.table("riser_map")) {
        board.riserMap = readRiserMap(*table);
        table->finish();
    }
}

void readHalObjects(TomlTable& root, Board& board) {
    // Every board has this one object, unless a fault takes it away.
    board.halObjects[std::string(payloadBlockName)] = {};
    auto hal = root.table("hal");
    if (!hal) {
        return;
    }
    if (auto table = hal->table(payloadBlockName)) {
        HalObject& object = board.halObjects[std::string(payloadBlockName)];
        object.interruptCallback = table->boolean("interrupt_callback").value_or(false);
        object.unregisterStatus = static_cast<std::int32_t>(
            table
                ->integer("unregister_status", std::numeric_limits<std::int32_t>::min(),
                          std::numeric_limits<std::int32_t>::max())
                .value_or(0));
        if (const auto most = table->integer("most_bytes", 0, payloadBlockSize)) {
            object.mostBytes = static_cast<std::uint32_t>(*most);
        }
        table->finish();
    }
    hal->finish();
}

void readRawOverrides(TomlTable& table, Board& board) {
    DescribedOnce described("raw"); // an address can be written in several ways
    for (const std::string& key : table.names()) {
        const auto address = numberIn(key, 0, highestWord);
        if (!address) {
            table.place(key).refuse("raw: " + inQuotes(key) +
                                    " is no raw address (0x0000 to 0xFFFF)");
        }
        std::int64_t next = *address;
        for (const std::uint8_t byte : table.bytes(key).value_or(Bytes{})) {
            if (next > highestWord) {
                table.place(key).refuse("raw: the bytes at '" + key + "' run past 0xFFFF");
            }
            described.note(addressText(next), table.place(key));
            board.rawOverrides[static_cast<std::uint16_t>(next++)] = byte;
        }
    }
}

void readOverrides(TomlTable& root, Board& board) {
    auto overrides = root.table("override");
    if (!overrides) {
        return;
    }
    if (auto named = overrides->table("named")) {
        for (const std::string& key : named->names()) {
            board.namedOverrides[key] = named->bytes(key).value_or(Bytes{});
        }
    }
    if (auto raw = overrides->table("raw")) {
        readRawOverrides(*raw, board);
    }
    overrides->finish();
}

void readFaults(TomlTable& root, Board& board) {
    FaultOrders orders(board);
    root.eachText("faults", [&](const std::string& rule, const Place& place) {
        try {
            orders.order(rule);
        } catch (const FaultRuleError& error) {
            place.refuse("fault " + inQuotes(rule) + ": " + error.what());
        }
    });
}

// Each function reads one part of a description, and refuses unknown keys in it.
constexpr void (*parts[])(TomlTable& root, Board& board) = {
    readSlots, //
    readControlRegisters,
    readRiserMapTable,
    readService,
    readI2c,
    readHalObjects,
    readOverrides,
    readFaults, // last: a rule must fit the parts above
};

// @param errors  if given, gets all errors; else the first error is thrown
Board readBoard(const DescriptionFile& description, const std::string& name,
                const BoardFinder& find, Errors* errors, KeyObserver* observer = nullptr) {
    DescriptionChain chain = readChain(description, name, find, errors);
    const Reading reading{.files = std::move(chain.files), .errors = errors, .observer = observer};
    TomlTable root(chain.table, "board", reading);
    Board board;
    (void)root.text(baseKey); // is known, and read already
    root.attempt([&] { board.name = root.text("name").value_or(""); });
    for (const auto& readPart : parts) {
        root.attempt([&] { readPart(root, board); });
    }
    root.finish();
    return board;
}

template <typename Open>
Errors errorsOf(Open open, const std::string& name, const BoardFinder& find) {
    Errors errors;
    try {
        (void)readBoard(open(), name, find, &errors);
    } catch (const BoardError& error) { // nothing behind such an error can be read
        errors.emplace_back(error.what());
    }
    return errors;
}

} // namespace

Board parseBoard(std::string_view description, const std::string& name, const BoardFinder& find) {
    return readBoard({std::string(description)}, name, find, nullptr);
}

Board loadBoard(const std::string& path, const BoardFinder& find) {
    return readBoard(readDescription(path), path, find, nullptr);
}

void observeKeys(std::string_view description, const std::string& name, KeyObserver& observer) {
    (void)readBoard({std::string(description)}, name, {}, nullptr, &observer);
}

Errors errorsIn(std::string_view description, const std::string& name, const BoardFinder& find) {
    return errorsOf([&] { return DescriptionFile{std::string(description)}; }, name, find);
}

Errors errorsInFile(const std::string& path, const BoardFinder& find) {
    return errorsOf([&] { return readDescription(path); }, path, find);
}

} // namespace board
