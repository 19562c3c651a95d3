#include "zolt_board/riser_map_differences.h"

#include "zolt_board/change_list.h"
#include "zolt_board/compare_lists.h"

#include "board/riser_map_codec.h"

#include <algorithm>
#include <string>

namespace zolt_board {

namespace {

constexpr const char* riserMapPlace = "riser map";

using Field = std::span<const std::uint8_t>;

// A text without the zeros that fill its field up.
std::string textIn(Field field) {
    std::string text(field.begin(), field.end());
    text.resize(text.find_last_not_of('\0') + 1);
    return text;
}

void compareText(const char* key, Field before, Field after, ChangeList& changes) {
    changes.value(key, textIn(before), textIn(after));
}

void compareStated(const char* key, std::optional<std::uint8_t> before,
                   std::optional<std::uint8_t> after, ChangeList& changes) {
    changes.value(key, shownByte(key, before), shownByte(key, after), correct);
}

std::string nameOf(const board::RiserDsl& dsl) {
    return std::string("link ").append(std::to_string(dsl.id));
}

void compareDsls(const board::RiserRecord& before, const board::RiserRecord& after,
                 const std::string& record, ChangeList& changes) {
    const Pairs pairs(before.dsls, after.dsls, [](const board::RiserDsl& dsl) { return dsl.id; });
    for (const board::RiserDsl* const dsl : pairs.removed) {
        changes.removed(nameOf(*dsl));
    }
    for (const board::RiserDsl* const dsl : pairs.added) {
        changes.added(nameOf(*dsl));
    }
    for (const auto& [first, second] : pairs.both) {
        ChangeList link = changes.at(std::string(record).append(", ").append(nameOf(*first)));
        link.value("type", board::WrittenNumber{first->route[0]},
                   board::WrittenNumber{second->route[0]});
        const auto* const own = std::ranges::find(
            board::dslPayloadFields, unsigned{first->route[0]}, &board::FieldsOfType::type);
        if (first->route[0] == second->route[0] && own != std::end(board::dslPayloadFields)) {
            link.fields(own->fields, first->route, second->route);
        } else {
            const auto rest = [](const board::RiserDsl& dsl) {
                return board::Bytes(dsl.route.begin() + 1, dsl.route.end());
            };
            link.value("route", rest(*first), rest(*second));
        }
    }
    if (pairs.isOtherOrder) {
        changes.reordered("links");
    }
}

void compareRecords(const board::RiserRecord& before, const board::RiserRecord& after,
                    const std::string& name, const ChangeList& map) {
    ChangeList changes = map.at(name);
    const auto text = [](const board::RiserRecord& record, std::size_t offset) {
        return Field(record.head).subspan(offset, board::recordTextSize);
    };
    compareText("location", text(before, board::locationOffset), text(after, board::locationOffset),
                changes);
    compareText("part_number", text(before, board::partNumberOffset),
                text(after, board::partNumberOffset), changes);
    changes.fields(board::recordFields, before.head, after.head);
    changes.value("slots", before.cardSlots, after.cardSlots);
    compareStated("dsl_payloads", before.statedRoutes, after.statedRoutes, changes);
    compareStated("payload_size", before.statedSize, after.statedSize, changes);
    compareDsls(before, after, name, changes);
}

std::string nameOf(const board::RiserRecord& record) {
    return std::string("slot ").append(std::to_string(record.head[0]));
}

void compareMaps(const board::RiserMap& before, const board::RiserMap& after, ChangeList& changes) {
    constexpr std::size_t configuration = 2; // fields in front of the description
    const std::span fields(board::riserMapHeadFields);
    changes.fields(fields.first(configuration), before.head, after.head);
    compareText(
        "description", Field(before.head).subspan(board::descriptionOffset, board::descriptionSize),
        Field(after.head).subspan(board::descriptionOffset, board::descriptionSize), changes);
    changes.fields(fields.subspan(configuration), before.head, after.head);
    compareStated("records", before.statedRecords, after.statedRecords, changes);
    compareStated("checksum", before.checksum, after.checksum, changes);
    const Pairs pairs(before.records, after.records,
                      [](const board::RiserRecord& record) { return record.head[0]; });
    for (const board::RiserRecord* const record : pairs.removed) {
        changes.removed(std::string("record of ").append(nameOf(*record)));
    }
    for (const board::RiserRecord* const record : pairs.added) {
        changes.added(std::string("record of ").append(nameOf(*record)));
    }
    for (const auto& [first, second] : pairs.both) {
        compareRecords(*first, *second, nameOf(*first), changes);
    }
    if (pairs.isOtherOrder) {
        changes.reordered("records");
    }
}

} // namespace

void compareRiserMaps(std::span<const std::uint8_t> before, std::span<const std::uint8_t> after,
                      std::vector<Change>& changes) {
    if (std::ranges::equal(before, after)) {
        return;
    }
    ChangeList list(changes, riserMapPlace);
    const auto first = board::decodeRiserMap(before);
    const auto second = board::decodeRiserMap(after);
    if (first && second) {
        compareMaps(*first, *second, list);
    } else {
        constexpr unsigned hexDigits = 3;
        list.bytes("byte", before, after, 0, hexDigits);
    }
}

} // namespace zolt_board
