// A pipe between the launcher and its children.
#pragma once

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace standin {

/// Two descriptors that close on exec. The owner closes each end when its use is over.
struct Pipe {
    int readEnd = -1;
    int writeEnd = -1;

    /// @throw std::system_error when the kernel has no pipe
    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
        }
        readEnd = ends[0];
        writeEnd = ends[1];
    }
};

} // namespace standin
