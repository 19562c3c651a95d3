#include "zolt_board/module_differences.h"

#include "zolt_board/compare_lists.h"

#include "board/module_codec.h"

#include <algorithm>
#include <array>
#include <string>

namespace zolt_board {

namespace {

using EndPoint = std::array<std::uint8_t, board::endPointSize>;
using Record = std::span<const std::uint8_t>;

std::string numbered(const char* what, std::size_t index) {
    return std::string(what).append(" ").append(std::to_string(index + 1));
}

void compareEndPoint(const EndPoint& before, const EndPoint& after, ChangeList changes) {
    changes.fields(board::endPointFields, before, after);
    const auto isIndirect = [](const EndPoint& endPoint) {
        return board::indirectField.decode(endPoint) != 0;
    };
    if (isIndirect(before) == isIndirect(after)) {
        changes.fields(board::moreEndPointFields(isIndirect(before)), before, after);
        return;
    }
    for (const board::BitField& field : board::moreEndPointFields(isIndirect(before))) {
        if (const auto value = field.decode(before); value != 0) {
            changes.value(std::string(field.key), shownField(field, value), {});
        }
    }
    for (const board::BitField& field : board::moreEndPointFields(isIndirect(after))) {
        if (const auto value = field.decode(after); value != 0) {
            changes.value(std::string(field.key), {}, shownField(field, value));
        }
    }
}

void compareBodies(const board::ModulePayload& before, const board::ModulePayload& after,
                   ChangeList& changes) {
    using board::PayloadBody;
    const auto hasBackplane = [](const board::ModulePayload& payload) {
        return payload.body() == PayloadBody::backplane;
    };
    if (hasBackplane(before) && hasBackplane(after)) {
        ChangeList backplane = changes.at("backplane");
        backplane.fields(board::backplaneFields, before.backplane, after.backplane);
    } else if (hasBackplane(before)) {
        changes.removed("backplane descriptor");
    } else if (hasBackplane(after)) {
        changes.added("backplane descriptor");
    }
    constexpr const char* endPoint = "end point";
    compareLists(
        before.endPoints, after.endPoints,
        [&](std::size_t index, const EndPoint& first, const EndPoint& second) {
            compareEndPoint(first, second, changes.at(numbered(endPoint, index)));
        },
        [&](std::size_t index) { changes.removed(numbered(endPoint, index)); },
        [&](std::size_t index) { changes.added(numbered(endPoint, index)); });
}

void compareDescriptor(const board::OemDescriptor& before, const board::OemDescriptor& after,
                       ChangeList changes) {
    changes.value("type", board::WrittenNumber{before.type}, board::WrittenNumber{after.type});
    const auto* const own =
        std::ranges::find(board::oemFields, unsigned{before.type}, &board::FieldsOfType::type);
    if (before.type == after.type && own != std::end(board::oemFields)) {
        const auto record = [](const board::OemDescriptor& descriptor) {
            board::Bytes bytes{descriptor.type, 0};
            bytes.insert(bytes.end(), descriptor.data.begin(), descriptor.data.end());
            return bytes;
        };
        changes.fields(own->fields, record(before), record(after));
    } else {
        changes.value("data", before.data, after.data);
    }
    changes.value("size", shownByte("size", before.statedSize), shownByte("size", after.statedSize),
                  correct);
}

void compareStated(const std::string& key, std::optional<std::uint8_t> before,
                   std::optional<std::uint8_t> after, ChangeList& changes) {
    changes.value(key, shownByte(key, before), shownByte(key, after), correct);
}

} // namespace

void comparePayloads(Record before, Record after, ChangeList& changes) {
    const auto first = board::decodePayload(before);
    const auto second = board::decodePayload(after);
    if (!first || !second) {
        changes.bytes("payload byte", before, after);
        return;
    }
    changes.fields(board::headerFields, first->header, second->header);
    compareStated(std::string(board::lengthField.key), first->statedSize, second->statedSize,
                  changes);
    compareStated(std::string(board::countField.key), first->statedEndPoints,
                  second->statedEndPoints, changes);
    compareStated("checksum", first->checksum, second->checksum, changes);
    compareBodies(*first, *second, changes);
}

void compareOemAreas(Record before, Record after, ChangeList& changes) {
    if (before.empty() != after.empty()) {
        before.empty() ? changes.added("OEM area") : changes.removed("OEM area");
        return;
    }
    const auto first = board::decodeOemArea(before);
    const auto second = board::decodeOemArea(after);
    if (!first || !second) {
        changes.bytes("OEM area byte", before, after);
        return;
    }
    compareStated("oem_area_size", first->statedSize, second->statedSize, changes);
    compareStated("oem_descriptors", first->statedDescriptors, second->statedDescriptors, changes);
    compareStated("oem_checksum", first->checksum, second->checksum, changes);
    constexpr const char* descriptor = "OEM descriptor";
    compareLists(
        first->descriptors, second->descriptors,
        [&](std::size_t index, const auto& older, const auto& newer) {
            compareDescriptor(older, newer, changes.at(numbered(descriptor, index)));
        },
        [&](std::size_t index) { changes.removed(numbered(descriptor, index)); },
        [&](std::size_t index) { changes.added(numbered(descriptor, index)); });
}

} // namespace zolt_board
