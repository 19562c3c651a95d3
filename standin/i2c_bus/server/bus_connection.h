// One client of the bus server: an open /dev/i2c-N.
#pragma once

#include "standin/i2c_bus/core/bus_core.h"
#include "standin/i2c_bus/wire.h"
#include "standin/log/log_line.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace standin {

/// How long a reply has to wait, and the log line to write when the time is over.
struct Wait {
    std::uint32_t milliseconds = 0; ///< or BUS_CORE_FOREVER: the request gets no reply
    std::string line{};             ///< empty: none
};

/// Answers one client's requests, well-formed or not.
class BusConnection {
public:
    /// Core and log must outlive the connection. The log gets a line for each transaction.
    BusConnection(BusCore& core, const LineLog& log) : core_(&core), log_(&log) {}

    /// Answers one request. Logs its transaction, unless the reply has to wait.
    ///
    /// @param request  one datagram; the core reads the write messages in place.
    /// @param reply    receives the reply, at most WIRE_LONGEST bytes.
    Wait answer(std::span<std::uint8_t> request, std::vector<std::uint8_t>& reply);

private:
    // An optional result is none when the request is malformed.
    [[nodiscard]] std::optional<int> perform(const WireRequest& head, std::span<std::uint8_t> rest,
                                             std::vector<std::uint8_t>& reply);
    [[nodiscard]] std::optional<int> performAlone(const WireRequest& head,
                                                  std::vector<std::uint8_t>& reply);
    [[nodiscard]] int open(std::uint32_t bus);
    [[nodiscard]] int setFlag(std::uint16_t flag, bool on);
    [[nodiscard]] int setAddress(std::uint32_t address, bool force);
    [[nodiscard]] std::optional<int> transfer(std::uint32_t count, std::span<std::uint8_t> rest,
                                              std::vector<std::uint8_t>& reply);
    [[nodiscard]] std::optional<int> read(std::uint32_t count, std::vector<std::uint8_t>& reply);
    [[nodiscard]] std::optional<int> write(std::span<std::uint8_t> bytes);
    [[nodiscard]] int transferAlone(i2c_msg& message);
    [[nodiscard]] int run(std::span<i2c_msg> messages);
    [[nodiscard]] std::optional<int> access(std::span<const std::uint8_t> rest,
                                            std::vector<std::uint8_t>& reply);

    BusCore* core_;
    const LineLog* log_;
    std::optional<std::uint32_t> bus_; ///< none before it is open
    std::uint16_t address_ = 0;        ///< of SMBus accesses, reads and writes
    std::uint16_t flags_ = 0;          ///< of their messages
    Wait wait_{};                      ///< of the request that is being answered
};

} // namespace standin
