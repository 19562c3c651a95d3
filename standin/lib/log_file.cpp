#include "standin/lib/log_file.h"

#include "standin/image/image_reader.h"
#include "standin/log/log_line.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace standin {

namespace {

const char* pathOf(LibraryLog log) {
    return std::getenv(log == LibraryLog::debug ? debugLogVariable : callLogVariable);
}

// The time in front of a line, if the logs have times.
std::string timeInFront() {
    const char* const text = std::getenv(logStartVariable);
    std::int64_t start = 0;
    if (text == nullptr ||
        std::from_chars(text, text + std::strlen(text), start).ec != std::errc()) {
        return {};
    }
    return timeText(start, monotonicTime()).append(" ");
}

// Opens a log. A pipe that has lost its reader fails at once, and no terminal becomes that of the
// tool. The writes wait for the reader of a full pipe.
int openLog(const char* path) {
    const int file = open(path, O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (file >= 0) {
        fcntl(file, F_SETFL, O_APPEND);
    } else if (errno == ENXIO) {
        errno = EPIPE; // open() says ENXIO where write() says EPIPE
    }
    return file;
}

// Returns 0 or an errno.
int append(const char* path, std::string_view line) {
    // Open the file for each line, so that no descriptor stays open in the tool.
    const int file = openLog(path);
    if (file < 0) {
        return errno;
    }
    const int error = writeLine(file, timeInFront().append(line));
    const bool closed = close(file) == 0; // some file systems tell here that the disk is full
    return error != 0 || closed ? error : errno;
}

} // namespace

bool appendLine(LibraryLog log, std::string_view line) {
    const char* const path = pathOf(log);
    if (path == nullptr) {
        return false;
    }
    const int before = errno;
    const int error = append(path, line);
    if (const ImageReader* const image = ImageReader::attached(); error != 0 && image != nullptr) {
        image->noteLogError(log, error);
    }
    errno = before;
    return error == 0;
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
    appendLine(LibraryLog::calls, line.data());
}

} // namespace standin
