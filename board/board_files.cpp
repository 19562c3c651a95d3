#include "board/board_files.h"

#include "board/description_chain.h"
#include "board/message_text.h"
#include "board/toml_table.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>

namespace board {

namespace {

namespace fs = std::filesystem;

constexpr const char* descriptionEnding = ".toml";

fs::path boardDirectory() {
    return nearProgram({"../boards", INSTALLED_BOARDS});
}

} // namespace

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
    if (!isBoardName(board)) {
        return std::string(board);
    }
    const fs::path directory = boardDirectory();
    const fs::path file = directory / std::string(board).append(descriptionEnding);
    std::error_code tooLong; // such a name is that of no board
    if (fs::exists(file, tooLong)) {
        return file;
    }
    std::string reason = "no board " + inQuotes(board) + " in " + directory.string() +
                         suggestion(board, boardNames());
    if (fs::exists(board, tooLong)) {
        reason += "; the name of a file needs a slash: './" + shortened(board) + "'";
    }
    throw BoardError(reason);
}

} // namespace board
