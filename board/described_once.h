// Finds things that a board description describes twice.
#pragma once

#include "board/toml_table.h"

#include <cstdint>
#include <map>
#include <string>

namespace board {

class DescribedOnce {
public:
    /// @param what  the kind of the things, for messages ("slot")
    explicit DescribedOnce(std::string what) : what_(std::move(what)) {}

    /// Notes where the description has a thing of that name.
    /// @throw BoardError when the thing is described already
    void note(const std::string& name, const Place& place) {
        const auto [found, isNew] = places_.emplace(name, place);
        if (!isNew) {
            place.refuse(what_ + ": " + name + " is described already, at " +
                         found->second.seenFrom(place));
        }
    }
    void note(std::int64_t number, const Place& place) { note(std::to_string(number), place); }

private:
    std::string what_;
    std::map<std::string, Place> places_;
};

} // namespace board
