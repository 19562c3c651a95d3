#include "tests/fuzz/whole_tool/known_lines.h"

#include "tests/fuzz/bytes.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <unordered_set>

namespace zolt::fuzz {

namespace {

// Text without a newline at its end. The tool waits for the operator behind all but the last two.
constexpr std::array<std::string_view, 12> prompts{
    "Enter option :",          "Enter the PICPWR ID: (Enter 0 for all PICPWRs)",
    "Enter the PICPWR ID:",    "Enter the module class :",
    "Enter the device type :", "Enter Index:",
    "Enter Parent Node Num:",  "Enter Target Address:",
    "Enter Property Type:",    "Enter Property Value:",
    "Enter Node Num:",
    "Enter the module type :", // the only one with a newline
};
constexpr std::string_view displayMenuEnd = "3 : Go Back";
constexpr std::array<std::string_view, 2> openEnds{"Property Value = ", "scanf error"};

// Text of the board, a device, the service or the C library.
struct Foreign {
    std::string_view label;
    std::size_t longest;
};
constexpr Foreign foreign[] = {
    {"Node Name         = ", 24},
    {"RISER CONFIG DESCRIPTION       = ", 48},
    {"RISER PHYSICAL LOCATION        = ", 8},
    {"MECH ASSY XPN                  = ", 8},
    {"Property Name  = ", 32},
    {"Exception : ", 64},
    {"PrintZoltInfoProperties: catch error: ", 256},
    {"PrintAllProperties: catch error: ", 256},
    {"failed to get managed objects err", 256},
    {"I2C Open error (", 64},
    {"Status is -1 (", 64},
    {"/", 64}, // the path of an object on the bus
};

bool isHexadecimal(char digit) {
    return std::isxdigit(static_cast<unsigned char>(digit)) != 0;
}

bool isDecimal(char digit) {
    return digit >= '0' && digit <= '9';
}

// Puts # in the place of each number, with its sign and its 0x.
void removeNumbers(std::string_view line, std::string& pattern) {
    pattern.clear();
    for (std::size_t at = 0; at < line.size();) {
        if (!isDecimal(line[at])) {
            pattern += line[at++];
            continue;
        }
        while (pattern.ends_with('-')) {
            pattern.pop_back();
        }
        pattern += '#';
        const bool hasPrefix = line.substr(at).starts_with("0x");
        at += hasPrefix ? 2 : 0;
        while (at < line.size() && (hasPrefix ? isHexadecimal(line[at]) : isDecimal(line[at]))) {
            ++at;
        }
    }
}

bool takeHexadecimal(std::string_view& line, std::size_t digits) {
    const auto front = line.substr(0, digits);
    line.remove_prefix(front.size());
    return front.size() == digits && std::ranges::all_of(front, isHexadecimal);
}

bool takeText(std::string_view& line, std::string_view text) {
    if (!line.starts_with(text)) {
        return false;
    }
    line.remove_prefix(text.size());
    return true;
}

// A line of a dump: "0x91000000 = 0a 0b .. : .. ", up to sixteen bytes.
bool isDump(std::string_view line) {
    if (!takeText(line, "0x") || !takeHexadecimal(line, 8) || !takeText(line, " = ")) {
        return false;
    }
    unsigned bytes = 0;
    while (!line.empty() && bytes < 16) {
        if (!takeHexadecimal(line, 2) || !takeText(line, " ")) {
            return false;
        }
        ++bytes;
        if (bytes == 8 && !takeText(line, ": ")) {
            return false;
        }
    }
    return line.empty() && bytes > 0;
}

struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
};

class KnownLines {
public:
    KnownLines() {
        for (const char* const name : {DIALOGUE_LINES, OTHER_LINES}) {
            std::ifstream file(name);
            require(file.is_open());
            for (std::string line; std::getline(file, line);) {
                add(line);
            }
        }
    }

    [[nodiscard]] bool has(std::string_view line) {
        removeNumbers(line, pattern_);
        return patterns_.contains(pattern_) || isDump(line);
    }

    // Removes the prompts from the front of a line. Returns their number.
    static std::size_t removePrompts(std::string_view& line) {
        std::size_t count = 0;
        for (bool found = true; found;) {
            found = std::ranges::any_of(prompts, [&](auto text) { return takeText(line, text); });
            count += found ? 1 : 0;
            found =
                std::ranges::any_of(openEnds, [&](auto text) { return takeText(line, text); }) ||
                found;
        }
        return count;
    }

private:
    void add(std::string_view line) {
        removePrompts(line);
        removeNumbers(line, pattern_);
        patterns_.insert(pattern_);
    }

    std::unordered_set<std::string, Hash, std::equal_to<>> patterns_;
    std::string pattern_;
};

} // namespace

std::size_t checkLines(std::string_view output) {
    static KnownLines known;
    std::size_t count = 0;
    std::size_t room = 0; // for the rest of a text with newlines
    while (!output.empty()) {
        std::string_view line = output.substr(0, output.find('\n'));
        output.remove_prefix(std::min(line.size() + 1, output.size()));
        const std::string_view whole = line;
        count += KnownLines::removePrompts(line) + (line == displayMenuEnd ? 1 : 0);
        const auto found = std::ranges::find_if(
            foreign, [&](const Foreign& each) { return line.starts_with(each.label); });
        if (found != std::end(foreign)) {
            const std::size_t length = line.size() - found->label.size();
            require(length <= std::max(found->longest, room));
            room = std::max(found->longest, room) - length;
        } else if (!known.has(line)) {
            if (whole.size() + 1 > room) {
                (void)std::fprintf(stderr, "The tool must not print \"%.*s\"\n",
                                   static_cast<int>(whole.size()), whole.data());
                std::abort();
            }
            room -= whole.size() + 1;
        }
    }
    return count;
}

} // namespace zolt::fuzz
