// Replacements of texts.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

namespace capture {

class TextMask {
public:
    /// The replacement of a text, of the same length. The same text always gets the same one. Two
    /// texts get different ones, unless there are too few of their shape.
    [[nodiscard]] std::string replacementOf(std::string_view text);

private:
    std::map<std::string, std::string, std::less<>> replacements_;
    std::set<std::string> used_; // replacements
};

} // namespace capture
