// printf formats as template arguments, taken apart while compiling.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace zolt::detail {

/// A conversion of a format: %[0width](d|X|x|s), with a width of one digit.
struct Conversion {
    std::size_t begin = 0; ///< place of the percent sign
    std::size_t end = 0;   ///< and behind the conversion
    unsigned width = 0;
    char kind = '\0';

    [[nodiscard]] constexpr bool isKnown() const {
        return std::string_view("dXxs").find(kind) != std::string_view::npos && width <= 9;
    }
};

template <std::size_t length>
struct FormatText {
    char text[length]{}; // public, as a template argument has to be

    consteval FormatText(const char (&format)[length]) { std::copy_n(format, length, text); }

    [[nodiscard]] static constexpr std::size_t size() { return length - 1; }

    /// How many conversions there are.
    [[nodiscard]] constexpr std::size_t count() const {
        return static_cast<std::size_t>(std::count(text, text + size(), '%'));
    }

    /// All of them, in their order.
    [[nodiscard]] constexpr std::array<Conversion, length> conversions() const {
        std::array<Conversion, length> found{};
        std::size_t at = 0;
        for (std::size_t i = 0; i < count(); ++i) {
            while (text[at] != '%') {
                ++at;
            }
            found[i] = conversionAt(at);
            at = found[i].end;
        }
        return found;
    }

private:
    [[nodiscard]] constexpr Conversion conversionAt(std::size_t percent) const {
        std::size_t at = percent + 1;
        unsigned width = 0;
        if (text[at] == '0' && at + 1 < size()) {
            width = static_cast<unsigned>(text[at + 1] - '0');
            at += 2;
        }
        return {.begin = percent, .end = at + 1, .width = width, .kind = text[at]};
    }
};

} // namespace zolt::detail
