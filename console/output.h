// Text for the operator, printed to standard output.
//
// The texts of this tool are its interface, so they stand in the code as the printf formats that
// they are: `print("PICPWR %02d DBYP               = %d\n", n, value)`. A format is checked when it
// is compiled, against the arguments' number and kind, and may also be a row of a constexpr table.
// Knowing the few conversions that occur makes printing several times cheaper than printf.
//
// Standard output is the C stream: line by line on a terminal, in large pieces elsewhere.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <span>
#include <string_view>
#include <type_traits>

namespace zolt {

using Number = long long;      ///< argument of %d and %X, whatever integer it was
using Text = std::string_view; ///< argument of %s

namespace detail {

template <typename T>
concept Integer = std::integral<T>;

template <typename T>
using Normal = std::conditional_t<Integer<T>, Number, Text>;

struct Argument {
    constexpr Argument(Number value) : number(value) {}
    constexpr Argument(Text value) : text(value) {}
    Number number = 0;
    Text text;
};

// One conversion: %[0][width](d|X|x|s), width one digit.
struct Conversion {
    char kind;
    unsigned width;
    std::size_t length;
};

constexpr Conversion parseConversion(std::string_view format, std::size_t percent) {
    std::size_t at = percent + 1;
    unsigned width = 0;
    if (at + 1 < format.size() && format[at] == '0') {
        width = static_cast<unsigned>(format[at + 1] - '0');
        at += 2;
    }
    return {at < format.size() ? format[at] : '\0', width, at + 1 - percent};
}

// Reached only while compiling: not constexpr, so that a wrong format does not compile.
void formatDoesNotFitItsArguments();

void print(std::string_view format, std::span<const Argument> arguments);

} // namespace detail

/// A printf format with these arguments, each Number or Text. Conversions: %d, %0Nd, %X, %0NX,
/// %0Nx with N from 1 to 9, and %s.
template <typename... Arguments>
class Format {
public:
    template <std::size_t Size>
    consteval Format(const char (&text)[Size]) : text_(text, Size - 1) {
        constexpr std::array<bool, sizeof...(Arguments) + 1> isText{
            std::same_as<Arguments, Text>..., false};
        std::size_t argument = 0;
        for (std::size_t at = 0; at < text_.size(); ++at) {
            if (text_[at] != '%') {
                continue;
            }
            const auto conversion = detail::parseConversion(text_, at);
            const bool wantsText = conversion.kind == 's';
            const bool wantsNumber =
                conversion.kind == 'd' || conversion.kind == 'X' || conversion.kind == 'x';
            if (argument == sizeof...(Arguments) || conversion.width > 9 ||
                (!wantsText && !wantsNumber) || isText[argument] != wantsText) {
                detail::formatDoesNotFitItsArguments();
            }
            ++argument;
            at += conversion.length - 1;
        }
        if (argument != sizeof...(Arguments)) {
            detail::formatDoesNotFitItsArguments();
        }
    }

    [[nodiscard]] constexpr std::string_view text() const { return text_; }

private:
    std::string_view text_;
};

/// Prints @p format with its arguments; integers of any type, strings as string_view. A negative
/// number prints with %X as 64 bits: hand in the unsigned type that the field has.
template <typename... Arguments>
void print(std::type_identity_t<Format<detail::Normal<Arguments>...>> format,
           const Arguments&... arguments) {
    const std::array<detail::Argument, sizeof...(Arguments)> list{
        detail::Argument(static_cast<detail::Normal<Arguments>>(arguments))...};
    detail::print(format.text(), list);
}

/// Prints text that is already laid out.
void write(std::string_view text);

/// Hands everything printed so far to whoever reads standard output.
void flush();

} // namespace zolt
