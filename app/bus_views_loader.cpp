#include "app/bus_views_loader.h"

#include "console/output.h"

#include <dlfcn.h>
#include <stdexcept>
#include <string>

namespace zolt {

namespace {

[[noreturn]] void refuseLibrary() {
    const char* const reason = dlerror();
    // The loader takes an object without an address for no error.
    throw std::runtime_error(reason == nullptr ? std::string(busViewsLibrary) : reason);
}

const BusViews& loadBusViews() {
    // Stays loaded until the tool ends.
    void* const library = dlopen(busViewsLibrary, RTLD_NOW);
    const void* const object = library == nullptr ? nullptr : dlsym(library, busViewsObject);
    if (object == nullptr) {
        refuseLibrary();
    }
    return *static_cast<const BusViews*>(object);
}

} // namespace

const BusViews& busViews() {
    static const BusViews* views = nullptr;
    if (views == nullptr) {
        views = &loadBusViews();
    }
    flush();
    return *views;
}

} // namespace zolt
