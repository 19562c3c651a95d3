#include "standin/launcher/places.h"

#include "board/description_chain.h"

#include <filesystem>
#include <initializer_list>
#include <stdexcept>

namespace standin {

namespace {

namespace fs = std::filesystem;

// The first candidate that is a directory. Candidates are relative to the program's directory.
fs::path nearProgram(std::initializer_list<const char*> candidates) {
    const fs::path program = fs::read_symlink("/proc/self/exe").parent_path();
    for (const char* const candidate : candidates) {
        fs::path directory = (program / candidate).lexically_normal();
        if (fs::is_directory(directory)) {
            return directory;
        }
    }
    throw std::runtime_error("the installation is incomplete: there is no " +
                             (program / *candidates.begin()).lexically_normal().string());
}

} // namespace

std::string libraryDirectory() {
    return nearProgram({"lib", INSTALLED_LIBRARIES});
}

std::string preloadLibrary() {
    return nearProgram({"i2c_bus", INSTALLED_LIBRARIES}) / "libzolt_sim_i2c.so";
}

std::string boardFile(std::string_view board) {
    if (!board::isBoardName(board)) {
        return std::string(board);
    }
    return nearProgram({"../boards", INSTALLED_BOARDS}) / (std::string(board) + ".toml");
}

} // namespace standin
