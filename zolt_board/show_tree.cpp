#include "board/device_type.h"
#include "board/fault_rule_text.h"
#include "board/field_writer.h"
#include "board/module_codec.h"
#include "board/riser_map_codec.h"
#include "zolt_board/i2c_tree.h"
#include "zolt_board/joined.h"
#include "zolt_board/service_tree.h"
#include "zolt_board/show.h"
#include "zolt_board/summary.h"
#include "zolt_board/tree.h"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <span>
#include <utility>

namespace zolt_board {

namespace {

using board::BitField;
using board::Slot;

using Record = std::span<const std::uint8_t>;

// The fields of a record that are not 0: "dpen, class 0x2A".
std::string fieldsText(std::span<const BitField> fields, Record record) {
    std::string text;
    for (const auto& [key, value] : board::fieldsOf(fields, record)) {
        text.append(text.empty() ? "" : ", ").append(key);
        if (const auto* const number = std::get_if<board::WrittenNumber>(&value.content)) {
            const auto shown = static_cast<std::uint32_t>(number->value);
            text.append(" ").append(number->hexDigits == 0
                                        ? std::to_string(shown)
                                        : inHex(shown, static_cast<unsigned>(number->hexDigits)));
        }
    }
    return text;
}

std::string withRest(std::string first, std::string_view rest, std::string_view separator) {
    return rest.empty() ? first : first.append(separator).append(rest);
}

std::string bytesText(std::string_view what, const board::Bytes& bytes) {
    return std::string(what).append(", ").append(counted(bytes.size(), "byte"));
}

// The values that a record states and that its bytes contradict.
std::string
statedText(std::initializer_list<std::pair<std::string_view, std::optional<std::uint8_t>>> values) {
    std::string text;
    for (const auto& [key, value] : values) {
        if (value) {
            text.append(text.empty() ? "states " : ", ").append(key);
            text.append(" ").append(std::to_string(*value));
        }
    }
    return text;
}

void addEndPoints(const board::ModulePayload& payload, Branch& branch) {
    for (std::size_t i = 0; i < payload.endPoints.size(); ++i) {
        const auto& endPoint = payload.endPoints[i];
        const bool isIndirect = board::indirectField.decode(endPoint) != 0;
        branch.add(withRest(withRest("end point " + std::to_string(i + 1),
                                     fieldsText(board::endPointFields, endPoint), ": "),
                            fieldsText(board::moreEndPointFields(isIndirect), endPoint), ", "));
    }
}

void addPayload(const Slot& slot, Branch& branch) {
    if (slot.payload.empty()) {
        return;
    }
    Branch& payload =
        branch.add(bytesText("payload at " + inHex(slot.payloadOffset, 4), slot.payload));
    const auto decoded = board::decodePayload(slot.payload);
    if (!decoded) {
        payload.text.append(": not the bytes of a module");
        return;
    }
    payload.text = withRest(payload.text, fieldsText(board::headerFields, decoded->header), ": ");
    payload.text = withRest(payload.text,
                            statedText({{board::lengthField.key, decoded->statedSize},
                                        {board::countField.key, decoded->statedEndPoints},
                                        {"checksum", decoded->checksum}}),
                            "; ");
    if (decoded->body() == board::PayloadBody::backplane) {
        payload.add(
            withRest("backplane", fieldsText(board::backplaneFields, decoded->backplane), ": "));
    }
    addEndPoints(*decoded, payload);
}

std::string descriptorText(const board::OemDescriptor& descriptor) {
    board::Bytes record(2 + descriptor.data.size());
    record[0] = descriptor.type;
    std::ranges::copy(descriptor.data, record.begin() + 2);
    const auto* const own =
        std::ranges::find(board::oemFields, unsigned{descriptor.type}, &board::FieldsOfType::type);
    const std::string text =
        withRest("descriptor of type " + std::to_string(descriptor.type),
                 own == std::end(board::oemFields) ? "" : fieldsText(own->fields, record), ": ");
    return withRest(text, statedText({{"size", descriptor.statedSize}}), "; ");
}

void addOemArea(const Slot& slot, Branch& branch) {
    if (slot.oemArea.empty()) {
        return;
    }
    Branch& area = branch.add(bytesText("OEM area", slot.oemArea));
    const auto decoded = board::decodeOemArea(slot.oemArea);
    if (!decoded) {
        area.text.append(": not descriptors");
        return;
    }
    area.text = withRest(area.text,
                         statedText({{"oem_area_size", decoded->statedSize},
                                     {"oem_descriptors", decoded->statedDescriptors},
                                     {"oem_checksum", decoded->checksum}}),
                         "; ");
    for (const board::OemDescriptor& descriptor : decoded->descriptors) {
        area.add(descriptorText(descriptor));
    }
}

std::string slotText(const Slot& slot, const Output& output) {
    std::string text = output.painted(Part::name, "slot " + std::to_string(slot.id));
    text.append(": dstat ").append(std::to_string(slot.dstat));
    const std::pair<std::string_view, bool> flags[] = {
        {"dbyp", slot.dbyp}, {"dpen", slot.dpen}, {"apen", slot.apen}, {"astat", slot.astat}};
    for (const auto& [name, isSet] : flags) {
        text.append(isSet ? ", " : "").append(isSet ? name : "");
    }
    text.append(", class ").append(inHex(slot.moduleClass));
    text.append(", index ").append(std::to_string(slot.moduleClassIndex));
    return text;
}

void addDsls(const Slot& slot, Branch& branch) {
    std::string text;
    for (const std::uint8_t id : slot.dslIds) {
        if (id != 0) {
            text.append(text.empty() ? "links " : ", ").append(inHex(id));
        }
    }
    if (!text.empty()) {
        branch.add(text);
    }
}

void addSlots(const board::Board& board, const Output& output, Branch& root) {
    Branch slots(output.painted(Part::heading, "slots"));
    for (const Slot* const slot : slotsInOrder(board)) {
        if (!isOccupied(*slot)) {
            continue;
        }
        Branch& branch = slots.add(slotText(*slot, output));
        addDsls(*slot, branch);
        addPayload(*slot, branch);
        addOemArea(*slot, branch);
        if (const std::string object = objectOf(*slot); !object.empty()) {
            branch.add("object " + object);
        }
    }
    if (!slots.branches.empty()) {
        root.branches.push_back(std::move(slots));
    }
}

// A text of a fixed length in the riser slot mapping.
std::string textIn(Record field, const Output& output) {
    std::string text(field.begin(), field.end());
    text.resize(text.find_last_not_of('\0') + 1);
    return output.safe(text);
}

std::string linkText(const board::RiserDsl& dsl) {
    const auto* const own = std::ranges::find(board::dslPayloadFields, unsigned{dsl.route[0]},
                                              &board::FieldsOfType::type);
    return withRest(
        "link " + inHex(dsl.id) + ": type " + std::to_string(dsl.route[0]),
        own == std::end(board::dslPayloadFields) ? "" : fieldsText(own->fields, dsl.route), ", ");
}

void addRecord(const board::RiserRecord& record, const Output& output, Branch& map) {
    const Record head = record.head;
    std::string text = "record of picpwr " + std::to_string(head[0]);
    text = withRest(text, fieldsText(std::span(board::recordFields).subspan(1), head), ": ");
    text.append(", location '")
        .append(textIn(head.subspan(board::locationOffset, board::recordTextSize), output))
        .append("', part number '")
        .append(textIn(head.subspan(board::partNumberOffset, board::recordTextSize), output))
        .append("', ")
        .append(counted(record.cardSlots.size() / board::cardSlotSize, "card slot"));
    text = withRest(
        text,
        statedText({{"dsl_payloads", record.statedRoutes}, {"payload_size", record.statedSize}}),
        "; ");
    Branch& branch = map.add(std::move(text));
    for (const board::RiserDsl& dsl : record.dsls) {
        branch.add(linkText(dsl));
    }
}

void addRiserMap(const board::Board& board, const Output& output, Branch& root) {
    if (std::ranges::all_of(board.riserMap, [](std::uint8_t byte) { return byte == 0; })) {
        return;
    }
    Branch& map = root.add(output.painted(Part::heading, "riser slot mapping"));
    const auto decoded = board::decodeRiserMap(board.riserMap);
    if (!decoded) {
        map.text.append(": not the bytes of a mapping");
        return;
    }
    const Record head = decoded->head;
    map.text.append(": '")
        .append(textIn(head.subspan(board::descriptionOffset, board::descriptionSize), output))
        .append("'");
    map.text = withRest(map.text, fieldsText(board::riserMapHeadFields, head), ", ");
    map.text = withRest(
        map.text,
        statedText({{"records", decoded->statedRecords}, {"checksum", decoded->checksum}}), "; ");
    for (const board::RiserRecord& record : decoded->records) {
        addRecord(record, output, map);
    }
}

void addFaults(const board::Board& board, const Output& output, Branch& root) {
    if (board.faults.empty()) {
        return;
    }
    Branch& faults = root.add(output.painted(Part::heading, "faults"));
    for (const board::FaultRule& rule : board.faults) {
        faults.add(output.painted(Part::wrong, output.safe(board::faultRuleText(rule))));
    }
}

} // namespace

void showTree(const board::Board& board, Output& output) {
    Branch root(board.name.empty() ? "board" : output.safe(board.name));
    addSlots(board, output, root);
    addRiserMap(board, output, root);
    addI2c(board.i2c, output, root);
    addService(board, output, root);
    addFaults(board, output, root);
    draw(root, output);
}

} // namespace zolt_board
