// A directory for the files of one run of the stand-in.
#pragma once

#include <string>
#include <sys/types.h>

namespace standin {

/// A new directory of mode 0700 below $TMPDIR (or /tmp).
///
/// A child process, the keeper, makes the directory, waits for the end of this object, and removes
/// the directory. So the directory goes even when the program is killed. If the keeper is
/// killed, the end of this object removes the directory. The keeper inherits open
/// files: construct this object before opening a file that must not stay open.
class PrivateDirectory {
public:
    /// The path is absolute, and short enough for the sockets in it.
    /// @throw std::system_error when no directory can be made
    /// @throw std::runtime_error when $TMPDIR leaves no room for a socket
    PrivateDirectory();
    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;

    /// Returns once the directory and everything in it is gone.
    ~PrivateDirectory();

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::string file(const char* name) const { return path_ + "/" + name; }

private:
    std::string path_;
    pid_t keeper_ = -1;
    int lifeline_ = -1; ///< write end; the keeper sees it close
};

} // namespace standin
