// Writes a file whole or not at all.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace capture {

/// A file that cannot be written; what() gives the file and the reason.
class OutputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A file that comes into being when finish() is called. Until then its text is in a temporary file
/// beside the file, which the destructor removes. SIGHUP, SIGINT, SIGQUIT, SIGTERM and SIGABRT
/// remove the temporary file, too, and end the program; a signal that the program ignores stays
/// ignored.
///
/// A program may have one such object at a time.
class OutputFile {
public:
    /// Creates the temporary file. A symbolic link leads to the file that it names.
    /// @param mayExist  whether a regular file of that name may be replaced
    /// @throw OutputError
    OutputFile(const std::string& path, bool mayExist);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    /// Writes the text to the storage device, and gives the file its name. @throw OutputError
    void finish(std::string_view text);

private:
    void putInPlace();

    std::string path_;
    bool mayExist_;
    int descriptor_ = -1;
};

/// Writes a text to standard output. @throw OutputError
void writeToStandardOutput(std::string_view text);

} // namespace capture
