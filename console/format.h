// printf formats as template arguments. The compiler splits them into text and conversions.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace zolt::detail {

/// One conversion of a format: %[0width](d|X|x|s), with a width of one digit.
struct Conversion {
    std::size_t begin = 0; ///< offset of the percent sign
    std::size_t end = 0;   ///< offset behind the conversion
    unsigned width = 0;
    char kind = '\0';

    [[nodiscard]] constexpr bool isKnown() const {
        return std::string_view("dXxs").find(kind) != std::string_view::npos && width <= 9;
    }
};

template <std::size_t length>
struct FormatText {
    char text[length]{}; // public, because template arguments need public members

    consteval FormatText(const char (&format)[length]) { std::copy_n(format, length, text); }

    [[nodiscard]] static constexpr std::size_t size() { return length - 1; }

    /// The number of conversions.
    [[nodiscard]] constexpr std::size_t count() const {
        return static_cast<std::size_t>(std::count(text, text + size(), '%'));
    }

    /// The conversions in order. The elements from count() on stay empty.
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
