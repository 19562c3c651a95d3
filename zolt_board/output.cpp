#include "zolt_board/output.h"

#include <clocale>
#include <cstdlib>
#include <langinfo.h>
#include <string_view>
#include <unistd.h>

namespace zolt_board {

namespace {

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

} // namespace

Output standardOutput(Colour colour) {
    return {.colour = colour == Colour::always || (colour == Colour::automatic && takesColour()),
            .utf8 = showsUtf8()};
}

} // namespace zolt_board
