#include "board/module_codec.h"
#include "zolt_board/joined.h"
#include "zolt_board/show.h"
#include "zolt_board/summary.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace zolt_board {

namespace {

using board::Board;
using board::Slot;

// A line of the summary: a heading, and its text in a column.
void addLine(std::string_view heading, std::string_view words, Output& output) {
    constexpr std::size_t width = 11;
    const std::string gap(width - std::min(heading.size(), width - 1), ' ');
    output.text.append(output.painted(Part::heading, heading)).append(gap);
    output.text.append(words).append("\n");
}

std::string slotsText(const Summary& summary) {
    std::string text = std::to_string(summary.slotsByDstat[0]).append(" empty");
    for (std::size_t dstat = 1; dstat < summary.slotsByDstat.size(); ++dstat) {
        text.append(", ").append(std::to_string(summary.slotsByDstat[dstat]));
        text.append(" with dstat ").append(std::to_string(dstat));
    }
    return text;
}

std::string classText(std::uint8_t moduleClass, const ClassCount& count) {
    std::string text = std::to_string(count.modules);
    text.append(" of class ").append(inHex(moduleClass));
    for (const std::string& type : count.types) {
        text.append(type == *count.types.begin() ? " (" : ", ").append(type);
    }
    return count.types.empty() ? text : text.append(")");
}

void addUnusual(const Board& board, Output& output) {
    if (!board.faults.empty()) {
        addLine("faults", counted(board.faults.size(), "rule"), output);
    }
    if (!board.service.orders.empty()) {
        addLine("service", counted(board.service.orders.size(), "order"), output);
    }
    if (!board.namedOverrides.empty() || !board.rawOverrides.empty()) {
        addLine("overrides",
                counted(board.namedOverrides.size(), "name")
                    .append(", ")
                    .append(counted(board.rawOverrides.size(), "raw register")),
                output);
    }
}

void addSummary(const Board& board, Output& output) {
    const Summary summary = summaryOf(board);
    if (!board.name.empty()) {
        addLine("board", output.safe(board.name), output);
    }
    addLine("slots", slotsText(summary), output);
    std::string_view heading = "modules";
    for (const auto& [moduleClass, count] : summary.classes) {
        addLine(heading, classText(moduleClass, count), output);
        heading = "";
    }
    heading = "missing";
    for (const std::string& thing : summary.missing) {
        addLine(heading, output.painted(Part::wrong, output.safe(thing)), output);
        heading = "";
    }
    addUnusual(board, output);
}

std::string flagsOf(const Slot& slot) {
    const std::array<std::pair<std::string_view, bool>, 4> flags{
        {{"dbyp", slot.dbyp}, {"dpen", slot.dpen}, {"apen", slot.apen}, {"astat", slot.astat}}};
    std::string text;
    for (const auto& [name, isSet] : flags) {
        text.append(isSet && !text.empty() ? " " : "").append(isSet ? name : "");
    }
    return text.empty() ? "-" : text;
}

std::string sizeText(const board::Bytes& bytes) {
    return bytes.empty() ? "-" : std::to_string(bytes.size());
}

std::string endPointsText(const Slot& slot) {
    const auto payload = board::decodePayload(slot.payload);
    return payload && payload->body() == board::PayloadBody::endPoints
               ? std::to_string(payload->endPoints.size())
               : "-";
}

constexpr std::size_t columnCount = 9;
using Row = std::array<std::string, columnCount>;

Row rowOf(const Slot& slot) {
    const std::string object = objectOf(slot);
    return {
        std::to_string(slot.id),
        std::to_string(slot.dstat),
        flagsOf(slot),
        inHex(slot.moduleClass),
        std::to_string(slot.moduleClassIndex),
        inHex(slot.payloadOffset, 4),
        sizeText(slot.payload),
        sizeText(slot.oemArea),
        endPointsText(slot),
    };
}

// Numbers stand at the right side of their columns, all else at the left side.
constexpr std::array<bool, columnCount> atRight{true,  true, false, false, true,
                                                false, true, true,  true};

std::string lineOf(const Row& row, const std::array<std::size_t, columnCount>& widths) {
    std::string line;
    for (std::size_t column = 0; column < columnCount; ++column) {
        const std::string gap(widths[column] - row[column].size(), ' ');
        line.append(column == 0 ? "" : "  ");
        line.append(atRight[column] ? gap + row[column] : row[column] + gap);
    }
    return line;
}

void addSlots(const Board& board, Output& output) {
    const Row headings{"slot",   "dstat",   "flags", "class",     "index",
                       "offset", "payload", "oem",   "end points"};
    std::vector<Row> rows;
    std::vector<std::string> objects;
    std::array<std::size_t, columnCount> widths{};
    const auto widen = [&](const Row& row) {
        for (std::size_t column = 0; column < columnCount; ++column) {
            widths[column] = std::max(widths[column], row[column].size());
        }
    };
    widen(headings);
    for (const Slot* const slot : slotsInOrder(board)) {
        if (isOccupied(*slot)) {
            rows.push_back(rowOf(*slot));
            objects.push_back(objectOf(*slot));
            widen(rows.back());
        }
    }
    if (rows.empty()) {
        return;
    }
    output.text.append("\n")
        .append(output.painted(Part::heading, lineOf(headings, widths) + "  object"))
        .append("\n");
    for (std::size_t i = 0; i < rows.size(); ++i) {
        output.text.append(lineOf(rows[i], widths))
            .append("  ")
            .append(objects[i].empty() ? "-" : output.painted(Part::name, objects[i]))
            .append("\n");
    }
}

} // namespace

void showSummary(const Board& board, Output& output) {
    addSummary(board, output);
    addSlots(board, output);
}

} // namespace zolt_board
