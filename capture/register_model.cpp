#include "capture/register_model.h"

#include "board/control_register_layout.h"
#include "board/cpld_map.h"
#include "board/module_layout.h"
#include "board/slot_registers.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>

namespace capture {

namespace {

// The reads of the registers of one block: raw bytes by offset, named values by name.
class Block {
public:
    Block(const Observation& observation, const RawBytes& known, std::uint16_t address)
        : observation_(&observation), known_(&known), address_(address) {}

    [[nodiscard]] std::optional<std::uint8_t> byte(std::size_t offset) const {
        const auto found = known_->find(static_cast<std::uint16_t>(address_ + offset));
        return found == known_->end() ? std::nullopt : std::optional(found->second);
    }

    // The value that a name delivered; none when the read failed or delivered other bytes than a
    // field of this size has.
    [[nodiscard]] std::optional<std::uint32_t> named(const std::string& name,
                                                     std::uint32_t highest) const {
        const auto found = observation_->named.find(name);
        const std::size_t size = highest > 0xFF ? 2 : 1;
        if (found == observation_->named.end() || found->second.status != 0 ||
            found->second.bytes.size() != size) {
            return std::nullopt;
        }
        const Bytes& bytes = found->second.bytes;
        const std::uint32_t low = bytes[0];
        const std::uint32_t value = size == 1 ? low : low | std::uint32_t{bytes[1]} << 8;
        return value <= highest ? std::optional(value) : std::nullopt;
    }

    // Takes a field from its raw bytes, else from its name.
    void take(const board::BitField& field, const std::string& name,
              std::span<std::uint8_t> record) const {
        const auto lower = byte(field.offset);
        const auto upper = byte(field.upperOffset);
        if (lower && (field.upperBits == 0 || upper)) {
            Bytes raw(record.size());
            raw[field.offset] = *lower;
            if (field.upperBits != 0) {
                raw[field.upperOffset] = *upper;
            }
            field.encode(field.decode(raw), record);
        } else if (const auto value = named(name, field.highest())) {
            field.encode(*value, record);
        }
    }

private:
    const Observation* observation_;
    const RawBytes* known_;
    std::uint16_t address_;
};

board::Slot slotOf(std::uint8_t id, const Observation& observation, const RawBytes& known) {
    const Block block(observation, known, board::addressOf(board::slotRegisters, id));
    std::array<std::uint8_t, board::slotBlockSize> record{};
    for (const board::ControlField& field : board::slotRegisters.fields) {
        block.take(field.bits, board::nameOf(board::slotRegisters, id, field), record);
    }
    board::Slot slot{
        .id = id,
        .dstat = static_cast<std::uint8_t>(record[0] >> 6),
        .dbyp = (record[0] & 0x20) != 0,
        .dpen = (record[0] & 0x10) != 0,
        .apen = (record[0] & 0x08) != 0,
        .astat = (record[0] & 0x01) != 0,
        .moduleClass = record[1],
        .moduleClassIndex = record[2],
        .payloadOffset = static_cast<std::uint16_t>(record[3] | record[4] << 8),
    };
    for (std::size_t k = 0; k < slot.dslIds.size(); ++k) {
        slot.dslIds[k] = block.byte(board::firstDslId + k).value_or(0);
    }
    return slot;
}

bool isEmpty(const board::Slot& slot) {
    const auto isZero = [](std::uint8_t id) { return id == 0; };
    return slot.dstat == 0 && !slot.dbyp && !slot.dpen && !slot.apen && !slot.astat &&
           slot.moduleClass == 0 && slot.moduleClassIndex == 0 && slot.payloadOffset == 0 &&
           std::ranges::all_of(slot.dslIds, isZero);
}

// The bytes of the payload block that belong to slots.
class Placement {
public:
    explicit Placement(const RawBytes& known) : known_(&known) {}

    // Gives a slot its payload and its OEM area, if all their bytes are known and free.
    void place(board::Slot& slot) {
        const std::size_t stated =
            at(slot.payloadOffset + board::lengthField.offset).value_or(0) * board::payloadSizeUnit;
        Bytes payload = bytes(slot.payloadOffset, stated);
        if (payload.empty() || stated > board::longestPayload) {
            return;
        }
        const std::size_t behind = slot.payloadOffset + stated;
        Bytes area = bytes(behind, at(behind).value_or(0));
        slot.payload = std::move(payload);
        take(slot.payloadOffset, stated);
        take(behind, area.size());
        slot.oemArea = std::move(area);
    }

private:
    // A byte of the block by payload offset; none when it is not known.
    [[nodiscard]] std::optional<std::uint8_t> at(std::size_t offset) const {
        const auto found = known_->find(static_cast<std::uint16_t>(board::payloadsStart + offset));
        return offset >= board::payloadRoom || found == known_->end()
                   ? std::nullopt
                   : std::optional(found->second);
    }

    // All bytes of a range; empty when one of them is not known, or belongs to another slot.
    [[nodiscard]] Bytes bytes(std::size_t offset, std::size_t size) const {
        Bytes range;
        for (std::size_t i = offset; i < offset + size; ++i) {
            const auto byte = at(i);
            if (!byte || taken_.contains(i)) {
                return {};
            }
            range.push_back(*byte);
        }
        return range;
    }

    void take(std::size_t offset, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) {
            taken_[offset + i] = true;
        }
    }

    const RawBytes* known_;
    std::map<std::size_t, bool> taken_;
};

void modelSlots(const Observation& observation, const RawBytes& known, board::Board& board) {
    Placement placement(known);
    for (std::uint8_t id = 1; id <= board::slotCount; ++id) {
        board::Slot slot = slotOf(id, observation, known);
        if (std::ranges::find(observation.payloads, id, &PayloadReading::slot) !=
            observation.payloads.end()) {
            placement.place(slot);
        }
        if (!isEmpty(slot) || !slot.payload.empty()) {
            board.slots.push_back(std::move(slot));
        }
    }
}

void modelControls(const Observation& observation, const RawBytes& known, board::Board& board) {
    for (const board::ControlClass& kind : board::controlClasses) {
        for (unsigned instance = 1; instance <= kind.instances; ++instance) {
            const Block block(observation, known, board::addressOf(kind, instance));
            board::ControlInstance record{};
            for (const board::ControlField& field : kind.fields) {
                block.take(field.bits, board::nameOf(kind, instance, field), record);
            }
            board::storeInstance(kind, instance, record, board);
        }
    }
}

void modelRiserMap(const Observation& observation, const RawBytes& known, board::Board& board) {
    const auto named = observation.named.find(std::string(board::riserMapName));
    if (named != observation.named.end() && named->second.status == 0) {
        board.riserMap = named->second.bytes;
        return;
    }
    for (std::uint32_t i = 0; i < board::riserMapSize; ++i) {
        const auto found = known.find(static_cast<std::uint16_t>(board::riserMapStart + i));
        board.riserMap[i] = found == known.end() ? 0 : found->second;
    }
}

void addBytes(RawBytes& known, std::uint32_t address, const Bytes& bytes) {
    for (const std::uint8_t byte : bytes) {
        if (address < board::rawAddressCount) {
            known[static_cast<std::uint16_t>(address)] = byte;
        }
        ++address;
    }
}

} // namespace

RawBytes knownRegisters(const Observation& observation) {
    RawBytes known;
    for (const PayloadReading& payload : observation.payloads) {
        if (payload.foundObject && payload.hal.status == 0) {
            addBytes(known, board::payloadsStart + payload.offset, payload.hal.bytes);
        }
        if (payload.raw && payload.raw->status == 0) {
            addBytes(known, board::payloadsStart + payload.offset, payload.raw->bytes);
        }
    }
    for (const auto* reads : {&observation.rawWords, &observation.rawBytes}) {
        for (const auto& [address, reading] : *reads) {
            if (reading.status == 0) {
                addBytes(known, address, reading.bytes);
            }
        }
    }
    return known;
}

void modelRegisters(const Observation& observation, const RawBytes& known, board::Board& board) {
    modelSlots(observation, known, board);
    modelControls(observation, known, board);
    modelRiserMap(observation, known, board);
}

} // namespace capture
