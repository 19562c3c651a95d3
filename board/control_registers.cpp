#include "board/control_registers.h"

#include "board/control_register_layout.h"
#include "board/described_once.h"
#include "board/field_reader.h"

#include <string>
#include <vector>

namespace board {

namespace {

void readFields(TomlTable& table, const ControlClass& kind, ControlInstance& bytes) {
    for (const ControlField& field : kind.fields) {
        readFields(table, {&field.bits, 1}, bytes);
    }
}

void readClass(TomlTable& root, const ControlClass& kind, Board& board) {
    std::vector<ControlInstance> instances(kind.instances);
    DescribedOnce described{std::string(kind.key)};
    root.eachTable(kind.key, [&](TomlTable& table) {
        const auto id = kind.instances == 1 ? table.integer("id", 1, 1).value_or(1)
                                            : table.requiredInteger("id", 1, kind.instances);
        described.note(id, table.place("id"));
        readFields(table, kind, instances[static_cast<std::size_t>(id - 1)]);
    });
    for (unsigned instance = 1; instance <= kind.instances; ++instance) {
        storeInstance(kind, instance, instances[instance - 1], board);
    }
}

} // namespace

void readControlRegisters(TomlTable& root, Board& board) {
    for (const ControlClass& kind : controlClasses) {
        readClass(root, kind, board);
    }
}

} // namespace board
