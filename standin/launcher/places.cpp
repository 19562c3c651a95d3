#include "standin/launcher/places.h"

#include "board/board_files.h"

namespace standin {

std::string libraryDirectory() {
    return board::nearProgram({"lib", INSTALLED_LIBRARIES});
}

std::string preloadLibrary() {
    return board::nearProgram({"i2c_bus", INSTALLED_LIBRARIES}) / "libzolt_sim_i2c.so";
}

} // namespace standin
