#include "standin/launcher/lists.h"

#include "standin/launcher/arguments.h"

#include "board/board_files.h"
#include "board/board_loader.h"
#include "board/bus_names.h"
#include "board/cpld_contents.h"
#include "board/fault_rule.h"
#include "board/message_text.h"
#include "board/module_type.h"
#include "board/published_board.h"
#include "i2c/device_types.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>
#include <span>

namespace standin {

namespace {

using Lines = std::vector<std::string>;

std::string line(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) {
        text.append(text.empty() ? "" : "\t").append(part);
    }
    return text;
}

// The text of a board; of a wrong description its error.
std::string textOfBoard(const std::string& name) {
    try {
        return board::loadBoard(board::boardFile(name), board::boardFile).name;
    } catch (const board::BoardError& error) {
        return error.what();
    }
}

Lines boards(const std::string& /*board*/) {
    Lines lines;
    for (const std::string& name : board::boardNames()) {
        lines.push_back(line({name, board::shortened(textOfBoard(name))}));
    }
    return lines;
}

Lines deviceTypes(const std::string& /*board*/) {
    Lines lines;
    for (unsigned code = 0; code < zolt::deviceTypeCount; ++code) {
        if (const std::string name = zolt::deviceTypeName(code); !name.empty()) {
            lines.push_back(line({std::to_string(code), name}));
        }
    }
    return lines;
}

// What the service publishes for a module of each type.
std::vector<board::PublishedInterface> publishedInterfaces() {
    board::Board board = board::parseBoard("", "");
    for (const board::ModuleType& type : board::moduleTypes) {
        board.slots.push_back({.id = static_cast<std::uint8_t>(board.slots.size() + 1),
                               .moduleType = std::string(type.name),
                               .objectName = "module"});
    }
    return board::publishBoard(board).interfaces;
}

Lines interfaces(const std::string& /*board*/) {
    Lines lines;
    for (const board::PublishedInterface& published : publishedInterfaces()) {
        const std::string path = published.path.substr(board::servicePathPrefix.size());
        lines.push_back(line({path.substr(0, path.find('/')), published.interface}));
    }
    return lines;
}

Lines properties(const std::string& /*board*/) {
    Lines lines;
    std::set<std::string> seen; // several module types share an interface
    for (const board::PublishedInterface& published : publishedInterfaces()) {
        if (!seen.insert(published.interface).second) {
            continue;
        }
        for (const board::Property& property : published.properties) {
            lines.push_back(line({published.interface, property.name, property.signature}));
        }
    }
    return lines;
}

Lines helpLines(std::span<const board::FaultRuleHelp> help) {
    Lines lines;
    for (const board::FaultRuleHelp& row : help) {
        lines.push_back(line({row.usage, row.meaning}));
    }
    return lines;
}

Lines faults(const std::string& /*board*/) {
    return helpLines(board::faultRuleHelp());
}

Lines faultTimes(const std::string& /*board*/) {
    return helpLines(board::faultTimingHelp());
}

// The registers that a named read reaches.
Lines registers(const std::string& board) {
    Lines lines;
    const board::CpldContents contents =
        board::deriveCpldContents(board::loadBoard(board::boardFile(board), board::boardFile));
    for (const auto& [name, value] : contents.named) {
        std::string bytes;
        for (const std::uint8_t byte : value) {
            std::array<char, 4> digits{};
            (void)std::snprintf(digits.data(), digits.size(), "%s%02X", bytes.empty() ? "" : " ",
                                byte);
            bytes += digits.data();
        }
        lines.push_back(line({name, bytes}));
    }
    return lines;
}

struct List {
    std::string_view name;
    Lines (*lines)(const std::string& board);
};

constexpr std::array lists{
    List{"boards", boards},         List{"device-types", deviceTypes},
    List{"interfaces", interfaces}, List{"properties", properties},
    List{"faults", faults},         List{"fault-times", faultTimes},
    List{"registers", registers},
};

} // namespace

std::vector<std::string> listNames() {
    std::vector<std::string> names;
    names.reserve(lists.size());
    for (const List& list : lists) {
        names.emplace_back(list.name);
    }
    return names;
}

std::vector<std::string> listNamed(std::string_view name, const std::string& board) {
    const auto* const list = std::ranges::find(lists, name, &List::name);
    if (list == lists.end()) {
        const std::vector<std::string> names = listNames();
        std::string hint = board::suggestion(name, names);
        for (const std::string& each : hint.empty() ? names : Lines()) {
            hint.append(hint.empty() ? "; the lists are: " : ", ").append(each);
        }
        throw ArgumentsError("there is no list " + board::inQuotes(name) + hint);
    }
    return list->lines(board);
}

} // namespace standin
