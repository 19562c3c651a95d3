#include "app/bus_views_loader.h"

#include "console/output.h"

#include <dlfcn.h>
#include <stdexcept>

namespace zolt {

namespace {

const BusViews& loadBusViews() {
    // Stays loaded until the tool ends.
    void* const library = dlopen(busViewsLibrary, RTLD_NOW);
    const void* const object = library == nullptr ? nullptr : dlsym(library, busViewsObject);
    if (object == nullptr) {
        throw std::runtime_error(dlerror());
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
