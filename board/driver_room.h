// Counts what a board needs of the bus driver's tables while its description is read.
#pragma once

#include "board/toml_table.h"
#include "standin/i2c_bus/core/bus_core.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

namespace board {

// Each function adds one entry, and refuses the description at that place when the table is full.
class DriverRoom {
public:
    // The bus of an index node may also be described as a bus.
    void addBus(std::int64_t number, const Place& place) {
        buses_.insert(number);
        require(buses_.size(), BUS_CORE_BUSES, "buses", place);
    }
    void addDevice(const Place& place) { require(++devices_, BUS_CORE_DEVICES, "devices", place); }
    void addProperty(const Place& place) {
        require(++properties_, BUS_CORE_PROPERTIES, "properties", place);
    }

private:
    static void require(std::size_t count, std::size_t room, const char* entries,
                        const Place& place) {
        if (count > room) {
            place.refuse("i2c: the bus driver has room for " + std::to_string(room) + " " +
                         entries);
        }
    }

    std::set<std::int64_t> buses_;
    std::size_t devices_ = 0;
    std::size_t properties_ = 0;
};

} // namespace board
