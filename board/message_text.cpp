#include "board/message_text.h"

#include "board/utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

namespace board {

namespace {

constexpr std::size_t longestShown = 200; ///< bytes of a text that a message shows
constexpr std::size_t mostChanges = 2;    ///< letters by which a similar word may differ
constexpr std::size_t mostSuggestions = 3;

std::string escaped(unsigned char byte) {
    constexpr std::array<std::pair<unsigned char, const char*>, 3> named{
        {{'\n', "\\n"}, {'\r', "\\r"}, {'\t', "\\t"}}};
    for (const auto& [character, escape] : named) {
        if (byte == character) {
            return escape;
        }
    }
    constexpr std::string_view digits = "0123456789ABCDEF";
    return {'\\', 'x', digits[byte >> 4], digits[byte & 0xF]};
}

struct Range {
    char32_t first;
    char32_t last;
};

// Characters that a terminal obeys, or that change the order or the lines of the text around them.
constexpr std::array<Range, 7> hidden{{
    {0x00, 0x1F},
    {0x7F, 0x9F},
    {0x061C, 0x061C}, // Arabic letter mark
    {0x200E, 0x200F}, // marks of direction
    {0x2028, 0x2029}, // ends of line and paragraph
    {0x202A, 0x202E}, // embeddings and overrides of direction
    {0x2066, 0x2069}, // isolates of direction
}};

// Length of the character that a text starts with; 0 when a terminal must not see the first byte.
std::size_t showableLength(std::string_view text) {
    const Character character = firstCharacter(text);
    const bool isHidden = std::ranges::any_of(hidden, [&](const Range& range) {
        return character.point >= range.first && character.point <= range.last;
    });
    return isHidden ? 0 : character.length;
}

char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

// The number of letters to change, add or remove to turn one word into the other. Upper and lower
// case count as the same letter.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

} // namespace

std::string printable(std::string_view text) {
    std::string safe;
    while (!text.empty()) {
        const std::size_t length = showableLength(text);
        if (length == 0) {
            safe += escaped(static_cast<unsigned char>(text.front()));
        } else {
            safe += text.substr(0, length);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return safe;
}

std::string asciiOnly(std::string_view text) {
    std::string safe;
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        safe.append(byte < 0x80 ? std::string(1, letter) : escaped(byte));
    }
    return safe;
}

std::string shortened(std::string_view text) {
    if (text.size() <= longestShown) {
        return printable(text);
    }
    std::size_t end = longestShown;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
        --end; // do not cut a character
    }
    return printable(text.substr(0, end)) + "...";
}

std::string inQuotes(std::string_view text) {
    return std::string("'").append(shortened(text)).append("'");
}

std::string suggestion(std::string_view wrong, std::span<const std::string> right) {
    std::size_t nearest = mostChanges;
    std::vector<std::string_view> words;
    for (const std::string& word : right) {
        // Words of very different lengths are not compared: a wrong word may have megabytes.
        if (wrong.size() > word.size() + nearest || word.size() > wrong.size() + nearest) {
            continue;
        }
        const std::size_t changes = distance(word, wrong);
        const bool isSimilar = changes <= nearest && changes < std::min(word.size(), wrong.size());
        if (!isSimilar) {
            continue;
        }
        if (changes < nearest) {
            words.clear();
        }
        if (words.size() < mostSuggestions) {
            nearest = changes;
            words.push_back(word);
        }
    }
    std::string text;
    for (const std::string_view word : words) {
        text += (text.empty() ? "; did you mean " : " or ") + inQuotes(word);
    }
    return text.empty() ? text : text + "?";
}

} // namespace board
