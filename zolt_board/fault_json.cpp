#include "board/bus_names.h"
#include "board/fault_rule_text.h"
#include "zolt_board/board_json.h"

#include <cstring>

namespace zolt_board {

namespace {

using board::FaultKind;
using board::FaultRule;

constexpr const char* anyBusError = "org.freedesktop.DBus.Error.Failed"; // of a rule without a name

void addDelay(const FaultRule& rule, Json& json) {
    if (rule.delay == board::delayForever) {
        json["delay_ms"] = "forever";
    } else if (rule.delay != 0) {
        json["delay_ms"] = rule.delay;
    }
}

// What the caller gets: a status, the name of an error, or both.
void addEnd(const FaultRule& rule, Json& json) {
    if (rule.status == 0 || rule.delay == board::delayForever) {
        return;
    }
    switch (rule.kind) {
    case FaultKind::object:
        json["error"] = rule.error.empty() ? anyBusError : rule.error;
        break;
    case FaultKind::i2cOpen:
    case FaultKind::i2cIoctl:
        json["status"] = rule.status;
        json["error"] = strerrorname_np(rule.status);
        break;
    case FaultKind::namedRead:
    case FaultKind::rawRead:
    case FaultKind::halRead:
    case FaultKind::sysinfo:
        json["status"] = rule.status;
        break;
    case FaultKind::halObject:
    case FaultKind::bus:
    case FaultKind::service:
        break; // a thing that is not there has no status
    }
}

void addSubject(const FaultRule& rule, Json& json) {
    switch (rule.kind) {
    case FaultKind::namedRead:
        json["pattern"] = rule.subject;
        break;
    case FaultKind::rawRead:
        json["first_address"] = rule.first;
        json["last_address"] = rule.last;
        break;
    case FaultKind::halRead:
        json["name"] = rule.subject;
        if (rule.first != 0 || rule.last != board::lastByte) {
            json["first_byte"] = rule.first;
            json["last_byte"] = rule.last;
        }
        break;
    case FaultKind::halObject:
        json["name"] = rule.subject;
        break;
    case FaultKind::object:
        json["path"] = board::fullPath(rule.subject);
        break;
    case FaultKind::i2cOpen:
        json["bus"] = rule.bus;
        break;
    case FaultKind::i2cIoctl:
        json["bus"] = rule.bus;
        json["command"] = board::commandWord(rule.operation);
        if (rule.selector) {
            json["selector"] = *rule.selector;
        }
        break;
    case FaultKind::sysinfo:
        json["device_type"] = deviceTypeToJson(rule.deviceType);
        break;
    case FaultKind::bus:
    case FaultKind::service:
        break;
    }
}

} // namespace

Json failureToJson(const FaultRule& rule, std::size_t place) {
    Json json{{"fault", place}};
    addEnd(rule, json);
    addDelay(rule, json);
    return json;
}

Json faultsToJson(const board::Board& board) {
    Json faults = Json::array();
    for (const FaultRule& rule : board.faults) {
        Json json{{"rule", board::faultRuleText(rule)}, {"kind", board::faultWord(rule.kind)}};
        addSubject(rule, json);
        addEnd(rule, json);
        addDelay(rule, json);
        json["after"] = rule.after;
        json["times"] = rule.times == 0 ? Json() : Json(rule.times);
        json["until_recovery"] = rule.untilRecovery;
        faults.push_back(std::move(json));
    }
    return faults;
}

} // namespace zolt_board
