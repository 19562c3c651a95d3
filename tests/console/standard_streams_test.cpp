#include "console/standard_streams.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace zolt {
namespace {

// What a descriptor is: the device of /dev/null, another file, or nothing.
enum class What { null, other, closed };

What whatIs(int descriptor) {
    struct stat file;
    struct stat null;
    if (fstat(descriptor, &file) != 0) {
        return What::closed;
    }
    return stat("/dev/null", &null) == 0 && S_ISCHR(file.st_mode) && file.st_rdev == null.st_rdev
               ? What::null
               : What::other;
}

// The lowest number above the standard streams that is free.
int freeDescriptor(int open) {
    const int copy = fcntl(open, F_DUPFD, 3);
    close(copy);
    return copy;
}

// In a process of its own: holds the streams where some of them are closed. Returns true if each of
// these is /dev/null then, each of the others is the file that it was, and nothing else is open.
bool heldWithout(const std::vector<int>& closed) {
    const pid_t child = fork();
    if (child == 0) {
        int ends[2];
        if (pipe(ends) != 0) {
            _exit(1);
        }
        const int before = freeDescriptor(ends[0]);
        for (int descriptor = 0; descriptor <= 2; ++descriptor) {
            dup2(ends[1], descriptor);
        }
        for (const int descriptor : closed) {
            close(descriptor);
        }
        holdStandardStreams();
        bool held = freeDescriptor(ends[0]) == before && !isOpen(before);
        for (int descriptor = 0; descriptor <= 2; ++descriptor) {
            const bool wasClosed = std::ranges::count(closed, descriptor) > 0;
            held = held && isOpen(descriptor) &&
                   whatIs(descriptor) == (wasClosed ? What::null : What::other);
        }
        _exit(held ? 0 : 1);
    }
    int status = -1;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(StandardStreams, thatAreClosedBecomeTheNullDevice) {
    for (const std::vector<int>& closed :
         std::vector<std::vector<int>>{{}, {0}, {1}, {2}, {0, 1}, {0, 2}, {1, 2}, {0, 1, 2}}) {
        EXPECT_TRUE(heldWithout(closed)) << testing::PrintToString(closed);
    }
}

} // namespace
} // namespace zolt
