// Numbered things of a board description, each of which may be described once.
#pragma once

#include "standin/board/toml_table.h"

#include <cstdint>
#include <map>
#include <string>

namespace standin {

class DescribedOnce {
public:
    /// @param what  what is numbered, for the messages ("slot")
    explicit DescribedOnce(std::string what) : what_(std::move(what)) {}

    /// Notes where a number is described. @throw BoardError when it is described already
    void note(std::int64_t number, const Place& place) {
        const auto [found, isNew] = lines_.emplace(number, place.line);
        if (!isNew) {
            place.refuse(what_ + ": " + std::to_string(number) + " is described already, at line " +
                         std::to_string(found->second));
        }
    }

private:
    std::string what_;
    std::map<std::int64_t, unsigned> lines_;
};

} // namespace standin
