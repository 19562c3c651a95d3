// Messages and a peer without a bus daemon: two connections of sd-bus over a socket pair.
#pragma once

#include "sdbusplus/bus.hpp"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace sdbusplus::test {

/// Fills a message that is under construction; what it returns is sd-bus's result.
using Fill = std::function<int(sd_bus_message*)>;

/// A finished message with the contents that @p fill gives it, at its start for reading.
[[nodiscard]] message_t received(const Fill& fill);

/// A message as it comes from a machine of the other byte order, at its start for reading.
/// @param body its contents as they are on the wire, of @p signature
[[nodiscard]] message_t receivedBigEndian(std::string_view signature,
                                          std::initializer_list<std::uint8_t> body);

/// A connection whose other end answers every call in a thread of its own.
class Peer {
public:
    /// @param answer replies to a call, or returns a negative errno for an error reply
    explicit Peer(sd_bus_message_handler_t answer);
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer();

    /// The near end.
    [[nodiscard]] bus_t& bus() { return bus_; }

private:
    Peer(sd_bus_message_handler_t answer, std::pair<int, int> sockets);

    std::thread thread_;
    bus_t bus_;
};

/// The text of the SdBusError that @p action ends with; empty when it does not.
[[nodiscard]] std::string errorOf(const std::function<void()>& action);

} // namespace sdbusplus::test
