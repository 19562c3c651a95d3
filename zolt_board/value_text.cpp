#include "zolt_board/value_text.h"

#include "board/message_text.h"

#include <cstddef>
#include <cstdint>
#include <variant>

namespace zolt_board {

namespace {

struct Writer {
    bool inList = false;

    std::string operator()(bool truth) const { return truth ? "true" : "false"; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return std::to_string(number); }
    std::string operator()(const std::string& text) const { return board::inQuotes(text); }
    std::string operator()(const board::Value::List& list) const {
        constexpr std::size_t mostShown = 8;
        if (inList) {
            return "(...)";
        }
        std::string text = "(";
        for (std::size_t i = 0; i < list.size() && i < mostShown; ++i) {
            text.append(i == 0 ? "" : ", ").append(std::visit(Writer{true}, list[i].content));
        }
        return text.append(list.size() > mostShown ? ", ...)" : ")");
    }
};

} // namespace

std::string valueText(const board::Value& value) {
    return std::visit(Writer{}, value.content);
}

} // namespace zolt_board
