#include "board/device_type.h"

#include "board/message_text.h"
#include "board/number.h"

#include "i2c/device_types.h"

#include <array>
#include <utility>
#include <vector>

namespace board {

namespace {

// Labels of the tool's menu that differ from the name.
constexpr std::array<std::pair<std::string_view, std::uint8_t>, 2> labels{
    {{"FSCP", 0}, {"Backplane", 19}}};

} // namespace

std::optional<std::uint8_t> deviceTypeCode(std::string_view word) {
    if (const auto code = numberIn(word, 0, zolt::deviceTypeCount - 1)) {
        return static_cast<std::uint8_t>(*code);
    }
    for (const auto& [label, code] : labels) {
        if (label == word) {
            return code;
        }
    }
    for (unsigned code = 0; code < zolt::deviceTypeCount; ++code) {
        if (!word.empty() && zolt::deviceTypeName(code) == word) {
            return static_cast<std::uint8_t>(code);
        }
    }
    return std::nullopt;
}

std::string noDeviceType(std::string_view word) {
    std::vector<std::string> names;
    names.reserve(labels.size() + zolt::deviceTypeCount);
    for (const auto& [label, code] : labels) {
        names.emplace_back(label);
    }
    for (unsigned code = 0; code < zolt::deviceTypeCount; ++code) {
        names.push_back(zolt::deviceTypeName(code));
    }
    return inQuotes(word) + " is no device type" + suggestion(word, names);
}

} // namespace board
