#include "board/control_register_layout.h"

#include <string>

namespace board {

std::string nameOf(const ControlClass& kind, unsigned instance, const ControlField& field) {
    std::string name(kind.prefix);
    if (kind.instances > 1) {
        name += std::to_string(instance);
    }
    return name.append(field.suffix);
}

void storeInstance(const ControlClass& kind, unsigned instance, const ControlInstance& bytes,
                   Board& board) {
    const auto address = addressOf(kind, instance);
    for (const ControlField& field : kind.fields) {
        const auto storeRaw = [&](std::uint8_t offset) {
            board.controlBytes[static_cast<std::uint16_t>(address + offset)] = bytes[offset];
        };
        storeRaw(field.bits.offset);
        if (field.bits.upperBits != 0) {
            storeRaw(field.bits.upperOffset);
        }
        if (!field.suffix.empty()) {
            board.controlRegisters.push_back(
                {nameOf(kind, instance, field), field.bits.delivered(bytes)});
        }
    }
}

} // namespace board
