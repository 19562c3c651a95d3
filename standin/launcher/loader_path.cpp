#include "standin/launcher/loader_path.h"

#include <filesystem>
#include <stdexcept>

namespace standin {

namespace {

bool isPlain(const std::string& path) {
    return path.find_first_of(" :;$") == std::string::npos;
}

} // namespace

std::string loaderPath(const std::string& path, const std::string& directory, const char* link) {
    if (isPlain(path)) {
        return path;
    }
    std::string shortcut = directory + "/" + link;
    if (!isPlain(shortcut)) {
        throw std::runtime_error("the dynamic loader cannot find '" + path + "' or a link in '" +
                                 directory +
                                 "', because both paths have a space, a colon, a semicolon or a "
                                 "dollar sign; set TMPDIR to a directory without them");
    }
    std::filesystem::create_symlink(path, shortcut);
    return shortcut;
}

} // namespace standin
