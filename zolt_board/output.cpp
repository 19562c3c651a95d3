#include "zolt_board/output.h"

#include "board/message_text.h"

#include <array>
#include <cerrno>
#include <clocale>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <langinfo.h>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace zolt_board {

namespace {

// The program asks for its surroundings before it starts threads, and does not change its
// environment. NOLINTBEGIN(concurrency-mt-unsafe)
std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// no-color.org: any value but the empty one counts.
bool takesColour() {
    return isatty(STDOUT_FILENO) != 0 && environment("NO_COLOR").empty() &&
           environment("TERM") != "dumb";
}

bool showsUtf8() {
    (void)std::setlocale(LC_CTYPE, "");
    const bool isUtf8 = std::string_view(nl_langinfo(CODESET)) == "UTF-8";
    (void)std::setlocale(LC_CTYPE, "C");
    return isUtf8;
}
// NOLINTEND(concurrency-mt-unsafe)

// Sequences of ECMA-48, by Part.
constexpr std::array<std::string_view, 4> sequences{"\x1B[1m", "\x1B[36m", "\x1B[31m", "\x1B[2m"};
constexpr std::string_view plainAgain = "\x1B[0m";

} // namespace

std::string Output::painted(Part part, std::string_view words) const {
    if (!colour || words.empty()) {
        return std::string(words);
    }
    return std::string(sequences[static_cast<std::size_t>(part)]).append(words).append(plainAgain);
}

std::string Output::safe(std::string_view words) const {
    const std::string shown = board::shortened(words);
    return utf8 ? shown : board::asciiOnly(shown);
}

void print(Output& output) {
    if (std::fwrite(output.text.data(), 1, output.text.size(), stdout) != output.text.size() ||
        std::fflush(stdout) == EOF) {
        throw std::system_error(errno, std::generic_category(), "standard output");
    }
    output.text.clear();
}

Output standardOutput(Colour colour) {
    return {.colour = colour == Colour::always || (colour == Colour::automatic && takesColour()),
            .utf8 = showsUtf8()};
}

} // namespace zolt_board
