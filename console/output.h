// Text for the operator, printed to standard output.
//
// The texts of this tool are its interface. The code therefore shows each text as a printf format:
// `print<"PICPWR %02d DBYP               = %d\n">(n, value)`. The compiler splits the format; at
// run time the tool only copies the pieces and composes the numbers. A row of a table holds a
// `line<"...">`, the function that prints the format.
#pragma once

#include "console/format.h"
#include "console/number_text.h"
#include "console/standard_output.h"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

namespace zolt {

using Number = long long;      ///< argument of %d, %X and %x, from any integer type
using Text = std::string_view; ///< argument of %s

/// A function that prints one or several lines. Each argument is a Number or a Text.
template <typename... Arguments>
using Line = void (*)(Arguments...);

namespace detail {

template <typename T>
using Normal = std::conditional_t<std::integral<T>, Number, Text>;

template <FormatText format, typename = std::make_index_sequence<format.count()>>
struct Printer;

template <FormatText format, std::size_t... index>
struct Printer<format, std::index_sequence<index...>> {
    static constexpr auto conversions = format.conversions();
    static_assert((conversions[index].isKnown() && ...),
                  "conversions are %d, %0Nd, %X, %0NX, %0Nx and %s");

    template <std::size_t at>
    using ArgumentOf = std::conditional_t<conversions[at].kind == 's', Text, Number>;

    // Index of the text behind the last conversion.
    static constexpr std::size_t last = sizeof...(index);
    // A text argument up to this length is composed in place; a longer one is printed by itself.
    static constexpr std::size_t usualText = 64;
    static constexpr std::size_t usualLength =
        format.size() + last * std::max(longestNumber, usualText);

    static void print(ArgumentOf<index>... arguments) {
        char* end = standardOutput.room(usualLength);
        ((end = append<index>(appendText<index>(end), arguments)), ...);
        standardOutput.finish(appendText<last>(end));
    }

    template <std::size_t at>
    static char* appendText(char* end) {
        constexpr std::size_t begin = at == 0 ? 0 : conversions[at - 1].end;
        constexpr std::size_t length = (at == last ? format.size() : conversions[at].begin) - begin;
        return std::copy_n(format.text + begin, length, end);
    }

    template <std::size_t at>
    static char* append(char* end, Number number) {
        constexpr Conversion conversion = conversions[at];
        if constexpr (conversion.kind == 'd') {
            return appendDecimal(end, number, conversion.width);
        } else {
            return appendHexadecimal(end, static_cast<unsigned long long>(number), conversion.width,
                                     conversion.kind == 'X' ? "0123456789ABCDEF"
                                                            : "0123456789abcdef");
        }
    }

    template <std::size_t at>
    static char* append(char* end, Text argument) {
        if (argument.size() <= usualText) {
            return std::copy(argument.begin(), argument.end(), end);
        }
        standardOutput.finish(end);
        standardOutput.write(argument);
        return standardOutput.room(usualLength);
    }
};

} // namespace detail

/// The function that prints a format, for a table's row.
template <detail::FormatText text>
constexpr auto line = &detail::Printer<text>::print;

/// Prints a format with its arguments: integers of any type, or strings as string_view. %X prints a
/// negative number with 64 bits, so pass a field in its unsigned type.
template <detail::FormatText text, typename... Arguments>
void print(const Arguments&... arguments) {
    line<text>(static_cast<detail::Normal<Arguments>>(arguments)...);
}

/// Prints text that is already laid out.
inline void write(Text text) {
    standardOutput.write(text);
}

/// Writes out all text printed so far. Call it before every call that may not return: of a platform
/// library, a bus device, or the system bus. (The functions of console/input.h call it themselves.)
inline void flush() {
    standardOutput.flush();
}

} // namespace zolt
