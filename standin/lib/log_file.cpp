#include "standin/lib/log_file.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace standin {

bool appendLine(const char* variable, std::string_view line) {
    const char* const path = std::getenv(variable);
    if (path == nullptr) {
        return false;
    }
    // Open the file for each line, so that no descriptor stays open in the tool.
    const int file = open(path, O_WRONLY | O_APPEND | O_CLOEXEC);
    if (file < 0) {
        return false;
    }
    const std::string text = std::string(line).append("\n");
    const bool kept = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(file);
    return kept;
}

bool callsAreLogged() {
    static const bool logged = std::getenv(callLogVariable) != nullptr;
    return logged;
}

void logCall(const char* format, ...) {
    if (!callsAreLogged()) {
        return;
    }
    std::array<char, 4096> line;
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(line.data(), line.size(), format, arguments);
    va_end(arguments);
    appendLine(callLogVariable, line.data());
}

} // namespace standin
