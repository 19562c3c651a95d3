// Tests of a view against a service on a bus of the test's own.
#pragma once

#include "tests/support/bus.h"
#include "tests/support/console.h"

#include <sdbusplus/bus.hpp>

#include <regex>
#include <string>
#include <utility>

namespace zolt::test {

/// What a view prints over a connection of its own.
template <typename View>
std::string viewed(View view) {
    return outputOf([&] {
        auto bus = sdbusplus::bus::new_default_system();
        view(bus);
    });
}

/// What the bus says when its policy forbids a call, without what differs from run to run: how many
/// of its rules fit, and who the two peers are.
inline std::string impersonal(std::string output) {
    const std::pair<std::regex, const char*> replacements[] = {
        {std::regex("[0-9]+ matched rules"), "N matched rules"},
        {std::regex("sender=\":[0-9]+\\.[0-9]+\""), "sender=\"NAME\""},
        {std::regex("\\(uid=[0-9]+ pid=[0-9]+ comm=\"[^\"]*\"( label=\"[^\"]*\")?\\)"), "(PEER)"},
    };
    for (const auto& [personal, replacement] : replacements) {
        output = std::regex_replace(output, personal, replacement);
    }
    return output;
}

} // namespace zolt::test
