// A temporary directory for one test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace zolt::test {

/// Creates an empty directory, and removes it with all its contents when the object is destroyed.
class PrivateDirectory {
public:
    /// @param name names a directory below the temporary one; if empty, path() is the temporary one
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
