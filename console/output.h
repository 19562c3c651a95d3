// Text for the operator, printed to standard output.
//
// The texts of this tool are its interface, so they stand in the code as the printf formats that
// they are: `print<"PICPWR %02d DBYP               = %d\n">(n, value)`. A format is taken apart
// when it is compiled; what remains at run time is to copy its pieces and to compose the numbers.
// As a row of a table it is a `line<"...">`: what prints it.
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

using Number = long long;      ///< argument of %d and %X, whatever integer it was
using Text = std::string_view; ///< argument of %s

/// Prints one line, or several, that show these arguments, each Number or Text.
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

    // Behind the last conversion comes the rest of the text.
    static constexpr std::size_t last = sizeof...(index);
    // Room for the line unless an argument is a long text.
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

/// What prints a format, for a table's row.
template <detail::FormatText text>
constexpr auto line = &detail::Printer<text>::print;

/// Prints a format with its arguments: integers of any type, or strings as string_view. A negative
/// number prints with %X as 64 bits: hand in the unsigned type that the field has.
template <detail::FormatText text, typename... Arguments>
void print(const Arguments&... arguments) {
    line<text>(static_cast<detail::Normal<Arguments>>(arguments)...);
}

/// Prints text that is already laid out.
inline void write(Text text) {
    standardOutput.write(text);
}

/// Hands out everything printed so far. Goes before every call that may not come back: of the
/// platform's libraries, of a bus device, of the system bus. (The answers of console/input.h do so
/// themselves.)
inline void flush() {
    standardOutput.flush();
}

} // namespace zolt
