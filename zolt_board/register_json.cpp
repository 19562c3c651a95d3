#include "zolt_board/board_json.h"

#include <algorithm>
#include <cstddef>

namespace zolt_board {

namespace {

using board::ControlClass;
using board::ControlField;
using board::FaultKind;
using board::FaultRule;

Json numberOf(const board::BitField& field, std::span<const std::uint8_t> record) {
    const std::uint32_t value = field.decode(record);
    return field.highest() == 1 ? Json(value != 0) : Json(value);
}

// The number of registers with fields.
std::size_t sizeOf(const ControlClass& kind) {
    std::size_t size = 0;
    for (const ControlField& field : kind.fields) {
        const std::size_t last = std::max(field.bits.offset, field.bits.upperOffset);
        size = std::max(size, last + 1);
    }
    return size;
}

// The rules for which a test holds.
template <typename Fits>
void addFailures(const board::Board& board, Json& json, Fits fits) {
    for (std::size_t i = 0; i < board.faults.size(); ++i) {
        if (fits(board.faults[i])) {
            json["failures"].push_back(failureToJson(board.faults[i], i));
        }
    }
}

} // namespace

Json fieldsToJson(std::span<const board::BitField> fields, std::span<const std::uint8_t> record) {
    Json json = Json::object();
    for (const board::BitField& field : fields) {
        json[std::string(field.key)] = numberOf(field, record);
    }
    return json;
}

Json registersToJson(const ControlClass& kind, unsigned instance,
                     const board::CpldContents& contents, const board::Board& board) {
    const std::size_t address = addressOf(kind, instance);
    const std::size_t size = kind.stride == board::slotBlockSize ? kind.stride : sizeOf(kind);
    const auto bytes = std::span(contents.raw).subspan(address, size);
    Json fields = Json::object();
    Json named = Json::object();
    for (const ControlField& field : kind.fields) {
        fields[std::string(field.bits.key)] = numberOf(field.bits, bytes);
        const std::string name = nameOf(kind, instance, field);
        if (const auto found = contents.named.find(name); found != contents.named.end()) {
            Json read{{"bytes", bytesToJson(found->second)}};
            addFailures(board, read, [&](const FaultRule& rule) {
                return rule.kind == FaultKind::namedRead && fits(rule, name);
            });
            named[name] = std::move(read);
        }
    }
    Json json{{"address", address},
              {"bytes", bytesToJson(bytes)},
              {"fields", std::move(fields)},
              {"named", std::move(named)}};
    addFailures(board, json, [&](const FaultRule& rule) {
        return rule.kind == FaultKind::rawRead && rule.first < address + size &&
               rule.last >= address;
    });
    return json;
}

Json controlRegistersToJson(const board::Board& board, const board::CpldContents& contents) {
    Json all = Json::array();
    for (const ControlClass& kind : board::controlClasses) {
        for (unsigned instance = 1; instance <= kind.instances; ++instance) {
            Json registers = registersToJson(kind, instance, contents, board);
            const auto isZero = [](const std::string& bytes) {
                return bytes.find_first_not_of('0') == std::string::npos;
            };
            const bool isAllZero = isZero(registers["bytes"]) &&
                                   std::ranges::all_of(registers["named"], [&](const Json& read) {
                                       return isZero(read["bytes"]);
                                   });
            if (!isAllZero) {
                Json json{{"class", kind.key}, {"id", instance}};
                json.update(registers);
                all.push_back(std::move(json));
            }
        }
    }
    return all;
}

} // namespace zolt_board
