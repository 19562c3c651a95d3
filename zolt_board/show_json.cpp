#include "board/cpld_contents.h"
#include "zolt_board/board_json.h"
#include "zolt_board/show.h"
#include "zolt_board/summary.h"

#include <utility>

namespace zolt_board {

namespace {

using board::Board;

Json summaryToJson(const Board& board) {
    const Summary summary = summaryOf(board);
    Json classes = Json::array();
    for (const auto& [moduleClass, count] : summary.classes) {
        classes.push_back(
            {{"module_class", moduleClass}, {"modules", count.modules}, {"types", count.types}});
    }
    return {{"slots_by_dstat", summary.slotsByDstat}, {"modules_by_class", std::move(classes)}};
}

Json halObjectsToJson(const Board& board) {
    Json objects = Json::array();
    for (const auto& [name, object] : board.halObjects) {
        const bool hasLimit = object.mostBytes != board::HalObject().mostBytes;
        Json json{{"name", name},
                  {"interrupt_callback", object.interruptCallback},
                  {"unregister_status", object.unregisterStatus},
                  {"most_bytes", hasLimit ? Json(object.mostBytes) : Json()}};
        for (std::size_t i = 0; i < board.faults.size(); ++i) {
            const board::FaultRule& rule = board.faults[i];
            const bool isOfHal =
                rule.kind == board::FaultKind::halObject || rule.kind == board::FaultKind::halRead;
            if (isOfHal && rule.subject == name) {
                json["failures"].push_back(failureToJson(rule, i));
            }
        }
        objects.push_back(std::move(json));
    }
    return objects;
}

Json overridesToJson(const Board& board) {
    Json named = Json::array();
    for (const auto& [name, bytes] : board.namedOverrides) {
        named.push_back({{"name", name}, {"bytes", bytesToJson(bytes)}});
    }
    Json raw = Json::array();
    for (const auto& [address, byte] : board.rawOverrides) {
        raw.push_back({{"address", address}, {"value", byte}});
    }
    return {{"named", std::move(named)}, {"raw", std::move(raw)}};
}

} // namespace

Json boardToJson(const Board& board, const std::string& source) {
    const board::CpldContents contents = board::deriveCpldContents(board);
    Json report = reportOf("show");
    report["board"] = {{"source", textToJson(source)}, {"name", board.name}};
    report["summary"] = summaryToJson(board);
    report["slots"] = slotsToJson(board, contents);
    report["control_registers"] = controlRegistersToJson(board, contents);
    report["riser_map"] = riserMapToJson(board.riserMap);
    report["hal_objects"] = halObjectsToJson(board);
    report["overrides"] = overridesToJson(board);
    report["i2c"] = i2cToJson(board.i2c);
    report["service"] = serviceToJson(board);
    report["faults"] = faultsToJson(board);
    return report;
}

} // namespace zolt_board
