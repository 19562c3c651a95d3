#include "capture/text_mask.h"

#include <cstdint>

namespace capture {

namespace {

// The next number of a series that only its start determines (SplitMix64).
std::uint64_t next(std::uint64_t& state) {
    state += 0x9E3779B97F4A7C15;
    std::uint64_t mixed = state;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EB;
    return mixed ^ (mixed >> 31);
}

// Characters that replace each other, from `first` on. The size 0 lets a character stay.
struct Range {
    char first = 0;
    unsigned size = 0;
};

Range rangeOf(char character) {
    if (character >= '0' && character <= '9') {
        return {'0', 10};
    }
    if (character >= 'A' && character <= 'Z') {
        return {'A', 26};
    }
    const bool isHigh = static_cast<unsigned char>(character) > 0x7F;
    return isHigh || (character >= 'a' && character <= 'z') ? Range{'a', 26} : Range{};
}

std::string anotherOf(std::string_view text, std::uint64_t& state) {
    std::string other(text);
    for (char& character : other) {
        const Range range = rangeOf(character);
        if (range.size != 0) {
            character = static_cast<char>(range.first + static_cast<int>(next(state) % range.size));
        }
    }
    return other;
}

} // namespace

std::string TextMask::replacementOf(std::string_view text) {
    if (const auto found = replacements_.find(text); found != replacements_.end()) {
        return found->second;
    }
    std::uint64_t state = replacements_.size();
    std::string replacement = anotherOf(text, state);
    for (int tries = 0; tries < 100 && used_.contains(replacement); ++tries) {
        replacement = anotherOf(text, state);
    }
    used_.insert(replacement);
    replacements_.emplace(text, replacement);
    return replacement;
}

} // namespace capture
