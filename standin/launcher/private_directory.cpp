#include "standin/launcher/private_directory.h"

#include "standin/launcher/pipe.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace standin {

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

// The path must be absolute, because programs change directories, and short enough for a socket.
std::string directoryPattern() {
    const char* const base = std::getenv("TMPDIR");
    const bool given = base != nullptr && *base != '\0';
    std::string pattern = std::filesystem::absolute(given ? base : "/tmp") / "zolt_sim.XXXXXX";
    constexpr std::size_t room = 99 - std::string_view("/bus").size(); // dbus-daemon's limit
    if (pattern.size() > room) {
        throw std::runtime_error("TMPDIR is too long: '" + pattern + "' has " +
                                 std::to_string(pattern.size()) + " bytes, and " +
                                 std::to_string(room) + " leave room for the name of a socket");
    }
    return pattern;
}

// Detaches the keeper from the caller's terminal, and from output whose reader waits for its end.
void leaveCaller() {
    setsid();
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, nullptr);
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        dup2(nowhere, descriptor);
    }
}

// The keeper: makes a directory from the pattern, answers with its path or with the errno, and
// removes the directory once the lifeline closes.
[[noreturn]] void keep(std::string path, int lifeline, int answer) {
    leaveCaller();
    if (mkdtemp(path.data()) == nullptr) {
        const int error = errno;
        (void)!write(answer, &error, sizeof error);
        _exit(EXIT_FAILURE);
    }
    (void)!write(answer, path.c_str(), path.size() + 1);
    char byte = 0;
    while (read(lifeline, &byte, 1) < 0 && errno == EINTR) {
    }
    std::error_code ignored; // nobody is left to report to
    std::filesystem::remove_all(path, ignored);
    _exit(EXIT_SUCCESS);
}

} // namespace

PrivateDirectory::PrivateDirectory() {
    const std::string pattern = directoryPattern();
    const Pipe lifeline;
    const Pipe answer;
    keeper_ = fork();
    if (keeper_ == 0) {
        close(lifeline.writeEnd);
        close(answer.readEnd);
        keep(pattern, lifeline.readEnd, answer.writeEnd);
    }
    lifeline_ = lifeline.writeEnd;
    close(lifeline.readEnd);
    close(answer.writeEnd);
    std::array<char, PATH_MAX> path{};
    const ssize_t length = keeper_ < 0 ? -1 : read(answer.readEnd, path.data(), path.size() - 1);
    close(answer.readEnd);
    if (length > 0 && path[static_cast<std::size_t>(length) - 1] == '\0' && path[0] == '/') {
        path_ = path.data();
        return;
    }
    int error = length == 0 ? ECHILD : errno; // the keeper was killed, or a call failed
    if (length == sizeof error) {
        std::memcpy(&error, path.data(), sizeof error);
    }
    close(lifeline_);
    if (keeper_ > 0) {
        waitpid(keeper_, nullptr, 0);
    }
    errno = error;
    fail("cannot make the private directory '" + pattern + "'");
}

PrivateDirectory::~PrivateDirectory() {
    close(lifeline_);
    int status = 0;
    while (waitpid(keeper_, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != EXIT_SUCCESS) { // the keeper was killed
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
}

} // namespace standin
