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

/// Fills a message that is under construction. Returns sd-bus's result.
using Fill = std::function<int(sd_bus_message*)>;

/// Returns a finished message that @p fill has filled, ready to be read from its start.
[[nodiscard]] message_t received(const Fill& fill);

/// Returns a message as a big-endian machine sends it, ready to be read from its start.
/// @param body contents of the type @p signature, as their bytes on the wire
[[nodiscard]] message_t receivedBigEndian(std::string_view signature,
                                          std::initializer_list<std::uint8_t> body);

/// A connection whose other end answers every call, in a thread of its own.
class Peer {
public:
    /// @param answer replies to a call, or returns a negative errno for an error reply
    explicit Peer(sd_bus_message_handler_t answer);
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer();

    /// The test's end of the connection.
    [[nodiscard]] bus_t& bus() { return bus_; }

private:
    Peer(sd_bus_message_handler_t answer, std::pair<int, int> sockets);

    std::thread thread_;
    bus_t bus_;
};

/// Runs @p action. Returns the text of the SdBusError that it throws, or an empty text.
[[nodiscard]] std::string errorOf(const std::function<void()>& action);

} // namespace sdbusplus::test
