// Functions for tests of a view against a service on a private bus.
#pragma once

#include "tests/support/bus.h"
#include "tests/support/console.h"

#include <sdbusplus/bus.hpp>

#include <regex>
#include <string>
#include <utility>

namespace zolt::test {

/// Runs a view on a connection of its own. Returns what it prints.
template <typename View>
std::string viewed(View view) {
    return outputOf([&] {
        auto bus = sdbusplus::bus::new_default_system();
        view(bus);
    });
}

/// Replaces the parts of the bus's refusal that differ from run to run: the number of rules that
/// match, and the identity of the two peers.
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
