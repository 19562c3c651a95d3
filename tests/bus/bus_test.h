// Tests of a view against a service on a bus of the test's own.
#pragma once

#include "tests/support/bus.h"
#include "tests/support/console.h"

#include <sdbusplus/bus.hpp>

#include <string>

namespace zolt::test {

/// What a view prints over a connection of its own.
template <typename View>
std::string viewed(View view) {
    return outputOf([&] {
        auto bus = sdbusplus::bus::new_default_system();
        view(bus);
    });
}

} // namespace zolt::test
