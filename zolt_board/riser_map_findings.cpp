// Findings of the riser slot mapping: whether its records have the lengths of their counts.
#include "board/cpld_map.h"
#include "board/riser_map_layout.h"
#include "zolt_board/joined.h"
#include "zolt_board/subjects.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>

namespace zolt_board {

namespace {

using ConstBytes = std::span<const std::uint8_t>;

// The lists of a record: each one has its count in front.
struct RecordLists {
    std::size_t links = 0;
    std::size_t routesStated = 0;
    ConstBytes routes{};  ///< four bytes for each link
    std::size_t size = 0; ///< of the record, by its counts
};

// Returns none when a list ends behind the bytes.
std::optional<RecordLists> listsOf(ConstBytes record) {
    std::size_t at = board::recordHeadSize;
    const auto count = [&]() -> std::optional<std::size_t> {
        return at < record.size() ? std::optional<std::size_t>(record[at]) : std::nullopt;
    };
    RecordLists lists;
    const auto links = count();
    at += 1 + links.value_or(0);
    const auto slots = count();
    at += 1 + slots.value_or(0) * board::cardSlotSize;
    const auto routes = count();
    if (!links || !slots || !routes) {
        return std::nullopt;
    }
    ++at;
    lists.links = *links;
    lists.routesStated = *routes;
    lists.size = at + lists.links * board::dslPayloadSize;
    if (lists.size > record.size()) {
        return std::nullopt;
    }
    lists.routes = record.subspan(at, lists.size - at);
    return lists;
}

class RiserMapCheck {
public:
    RiserMapCheck(ConstBytes map, Findings& findings) : map_(map), findings_(&findings) {}

    void check() {
        if (map_.size() < board::riserMapHeadSize) {
            return; // the length of the mapping is a matter of its register
        }
        const ConstBytes text = map_.subspan(board::descriptionOffset, board::descriptionSize);
        if (std::ranges::find(text, 0) == text.end()) {
            add(Kind::textWithoutEnd, "riser map description",
                joined("all ", text.size(), " characters are in use"), "a NUL at the end");
        }
        checkRecords();
    }

private:
    void add(Kind kind, std::string place, std::string what, std::string expected) {
        findings_->push_back({kind, std::move(place), std::move(what), std::move(expected)});
    }

    // Follows the lengths that the records state, as readers do.
    void checkRecords() {
        const std::size_t count = map_[board::recordCountOffset];
        std::size_t at = board::riserMapHeadSize;
        for (std::size_t number = 1; number <= count; ++number) {
            const std::string place = joined("riser map record ", number);
            const ConstBytes rest = map_.subspan(std::min(at, map_.size()));
            const auto lists = listsOf(rest);
            if (!lists) {
                add(Kind::riserRecordBeyondMap, place,
                    joined("the record begins at byte ", at, " and its counts lead behind the map"),
                    joined("an end within the ", map_.size(), " bytes of the map"));
                return;
            }
            const std::size_t size = rest[1];
            checkRecord(place, rest, *lists, size);
            if (size == 0) {
                return; // each further record is this one
            }
            at += size;
        }
        if (at >= map_.size()) {
            add(Kind::checksumOutside, "riser map",
                joined("the checksum follows the records, at byte ", at),
                joined("the checksum within the ", map_.size(), " bytes of the map"));
        }
    }

    void checkRecord(const std::string& place, ConstBytes record, const RecordLists& lists,
                     std::size_t size) {
        if (size != lists.size) {
            add(Kind::riserRecordSizeDiffers, place,
                joined("the record states ", counted(size, "byte")),
                joined("the ", lists.size, " bytes of its counts"));
        }
        if (record[0] == 0 || record[0] > board::slotCount) {
            add(Kind::picpwrOutOfRange, place, joined("the PICPWR ID is ", record[0]), "1 to 63");
        }
        if (lists.routesStated != lists.links) {
            add(Kind::riserRouteCountDiffers, place,
                joined("the record states ", counted(lists.routesStated, "DSL payload"), " and ",
                       counted(lists.links, "DSL")),
                "one payload for each DSL");
        }
        checkRoutes(place, lists);
    }

    // One finding for all routes of a record.
    void checkRoutes(const std::string& place, const RecordLists& lists) {
        std::string wrong;
        for (std::size_t link = 0; link < lists.links; ++link) {
            const unsigned type = lists.routes[link * board::dslPayloadSize];
            if (std::ranges::find(board::dslPayloadFields, type, &board::FieldsOfType::type) ==
                std::end(board::dslPayloadFields)) {
                wrong.append(
                    joined(wrong.empty() ? "" : ", ", "DSL ", link + 1, " has type ", type));
            }
        }
        if (!wrong.empty()) {
            add(Kind::dslTypeOutOfRange, place, std::move(wrong), "type 1, 2 or 3");
        }
    }

    ConstBytes map_;
    Findings* findings_;
};

} // namespace

void checkRiserMap(const ReaderView& board, Findings& findings) {
    if (const board::Bytes* const blob = board.named(std::string(board::riserMapName))) {
        RiserMapCheck(*blob, findings).check();
    } else if (board.readable().raw(board::riserMapStart, board::riserMapSize)) {
        const ConstBytes raw(board.contents().raw);
        RiserMapCheck(raw.subspan(board::riserMapStart, board::riserMapSize), findings).check();
    }
}

} // namespace zolt_board
