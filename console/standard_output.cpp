#include "console/standard_output.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace zolt {

namespace {

// Returns true when the write is worth repeating.
bool passes(int error) {
    if (error == EAGAIN) { // a reader that made the pipe non-blocking still gets all text
        pollfd descriptor{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
        (void)poll(&descriptor, 1, -1);
    }
    return error == EAGAIN || error == EINTR;
}

void writeAll(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (!passes(errno)) {
            return;
        }
    }
}

} // namespace

constinit StandardOutput standardOutput;

void StandardOutput::write(std::string_view text) {
    if (text.size() > capacity) {
        flush();
        writeAll(text);
        return;
    }
    char* const start = room(text.size());
    finish(std::copy(text.begin(), text.end(), start));
}

void StandardOutput::writeOut() {
    writeAll({buffer_.data(), used_});
    used_ = 0;
}

} // namespace zolt
