#include "app/bus_views_loader.h"

#include <climits>
#include <cstddef>
#include <dlfcn.h>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace zolt {

namespace {

[[noreturn]] void refuse(const std::string& library) {
    const char* const reason = dlerror();
    // The loader takes an object without an address for no error.
    throw std::runtime_error(reason == nullptr ? library : reason);
}

// Where nothing tells which program this is, the loader searches for the file.
std::string besideThisProgram(const char* file) {
    std::string path(PATH_MAX, '\0');
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    path.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    path.resize(path.rfind('/') + 1); // none: nothing of it
    return path += file;
}

const BusViews& loadBusViews() {
    const std::string path = besideThisProgram(busViewsLibrary);
    // Stays loaded until the tool ends.
    void* const library = dlopen(path.c_str(), RTLD_NOW);
    const void* const object = library == nullptr ? nullptr : dlsym(library, busViewsObject);
    if (object == nullptr) {
        refuse(path);
    }
    return *static_cast<const BusViews*>(object);
}

} // namespace

const BusViews& busViews() {
    static const BusViews* views = nullptr;
    if (views == nullptr) {
        views = &loadBusViews();
    }
    return *views;
}

} // namespace zolt
