// A directory that a test has for itself.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace zolt::test {

/// Exists, and is empty at first, for as long as the object lives.
class PrivateDirectory {
public:
    /// @param name of a directory within a temporary one; empty for the temporary one itself
    explicit PrivateDirectory(const std::string& name = "") {
        std::string pattern = (std::filesystem::temp_directory_path() / "test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            std::abort();
        }
        top_ = pattern;
        path_ = name.empty() ? top_ : top_ / name;
        std::filesystem::create_directories(path_);
    }
    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;
    ~PrivateDirectory() { std::filesystem::remove_all(top_); }

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path top_;
    std::filesystem::path path_;
};

} // namespace zolt::test
