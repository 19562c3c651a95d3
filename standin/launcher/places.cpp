#include "standin/launcher/places.h"

#include "board/description_chain.h"
#include "board/message_text.h"
#include "board/toml_table.h"

#include <algorithm>
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

constexpr const char* descriptionEnding = ".toml";

fs::path boardDirectory() {
    return nearProgram({"../boards", INSTALLED_BOARDS});
}

} // namespace

std::string libraryDirectory() {
    return nearProgram({"lib", INSTALLED_LIBRARIES});
}

std::string preloadLibrary() {
    return nearProgram({"i2c_bus", INSTALLED_LIBRARIES}) / "libzolt_sim_i2c.so";
}

std::vector<std::string> boardNames() {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(boardDirectory())) {
        if (entry.path().extension() == descriptionEnding) {
            names.push_back(entry.path().stem());
        }
    }
    std::ranges::sort(names);
    return names;
}

std::string boardFile(std::string_view board) {
    if (!board::isBoardName(board)) {
        return std::string(board);
    }
    const fs::path directory = boardDirectory();
    const fs::path file = directory / std::string(board).append(descriptionEnding);
    if (fs::exists(file)) {
        return file;
    }
    std::string reason = "no board " + board::inQuotes(board) + " in " + directory.string() +
                         board::suggestion(board, boardNames());
    if (fs::exists(board)) {
        reason += "; the name of a file needs a slash: './" + board::shortened(board) + "'";
    }
    throw board::BoardError(reason);
}

} // namespace standin
