#include "capture/output_file.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace capture {

namespace {

// A platform's library may abort the program.
constexpr std::array endingSignals{SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGABRT};

// The name of the temporary file, for the signal handler; empty: there is none. The signals are
// blocked while the program changes the name.
std::array<char, PATH_MAX> temporaryName{};

void removeAndEnd(int number) {
    if (temporaryName[0] != '\0') {
        unlink(temporaryName.data());
    }
    // The handler was installed for one signal, so that this one ends the program.
    (void)raise(number);
}

class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int number : endingSignals) {
            sigaddset(&signals, number);
        }
        pthread_sigmask(SIG_BLOCK, &signals, &before_);
    }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_{};
};

void handleSignals() {
    struct sigaction action {};
    action.sa_handler = removeAndEnd;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    for (const int number : endingSignals) {
        struct sigaction before {};
        sigaction(number, nullptr, &before);
        if (before.sa_handler != SIG_IGN) {
            sigaction(number, &action, nullptr);
        }
    }
}

[[noreturn]] void fail(const std::string& path, int error) {
    throw OutputError(
        std::string(path).append(": ").append(std::generic_category().message(error)));
}

// The file that a symbolic link leads to. Any other path stays.
std::string resolved(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
        return path;
    }
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                           &std::free);
    if (real == nullptr) {
        fail(path, errno);
    }
    return real.get();
}

void requireReplaceable(const std::string& path, bool mayExist) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        if (errno != ENOENT) {
            fail(path, errno);
        }
        return;
    }
    if (!mayExist) {
        throw OutputError(path + ": exists already (--force overwrites it)");
    }
    if (!S_ISREG(status.st_mode)) {
        throw OutputError(path + ": is not a regular file");
    }
}

mode_t modeOfNewFiles() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

void writeAll(int descriptor, std::string_view text, const std::string& name) {
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            fail(name, errno);
        }
        text.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
    }
}

// Brings the new name of a file to the storage device. Not all file systems can.
void syncDirectoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        (void)fsync(descriptor);
        close(descriptor);
    }
}

} // namespace

OutputFile::OutputFile(const std::string& path, bool mayExist)
    : path_(resolved(path)), mayExist_(mayExist) {
    requireReplaceable(path_, mayExist);
    const std::string pattern = std::string(path_).append(".XXXXXX");
    if (pattern.size() >= temporaryName.size()) {
        fail(path_, ENAMETOOLONG);
    }
    handleSignals();
    const BlockedSignals blocked;
    pattern.copy(temporaryName.data(), pattern.size());
    temporaryName[pattern.size()] = '\0';
    descriptor_ = mkostemp(temporaryName.data(), O_CLOEXEC);
    if (descriptor_ < 0) {
        const int error = errno;
        temporaryName[0] = '\0';
        fail(path_, error);
    }
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
    const BlockedSignals blocked;
    if (temporaryName[0] != '\0') {
        unlink(temporaryName.data());
        temporaryName[0] = '\0';
    }
}

void OutputFile::finish(std::string_view text) {
    writeAll(descriptor_, text, path_);
    if (fchmod(descriptor_, modeOfNewFiles()) != 0 || fsync(descriptor_) != 0) {
        fail(path_, errno);
    }
    if (close(std::exchange(descriptor_, -1)) != 0) {
        fail(path_, errno);
    }
    putInPlace();
    syncDirectoryOf(path_);
}

void OutputFile::putInPlace() {
    const BlockedSignals blocked;
    const char* const from = temporaryName.data();
    int result = 0;
    if (mayExist_) {
        result = rename(from, path_.c_str());
    } else {
        result = renameat2(AT_FDCWD, from, AT_FDCWD, path_.c_str(), RENAME_NOREPLACE);
        if (result != 0 && (errno == EINVAL || errno == ENOSYS)) {
            // The file system cannot rename so. The destructor removes the first name.
            result = link(from, path_.c_str());
            if (result == 0) {
                return;
            }
        }
    }
    if (result != 0) {
        fail(path_, errno);
    }
    temporaryName[0] = '\0';
}

void writeToStandardOutput(std::string_view text) {
    writeAll(STDOUT_FILENO, text, "standard output");
}

} // namespace capture
