// A directory for one run of the stand-in, gone when the run is.
#pragma once

#include <string>
#include <sys/types.h>

namespace standin {

/// A new directory of mode 0700 below $TMPDIR (or /tmp).
///
/// A small process of its own makes it and waits for this object's end: so it is removed however
/// the program ends, when it was killed too. Make it before anything that should not be inherited.
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
    int lifeline_ = -1; ///< the keeper reads its end: that is our end
};

} // namespace standin
