// The I2C side of a running board: its buses and its topology file.
#pragma once

#include "board/board.h"
#include "standin/i2c_bus/server/bus_server.h"
#include "standin/launcher/command.h"
#include "standin/launcher/kernel_buses.h"
#include "standin/log/log_line.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <systemd/sd-event.h>

namespace standin {

class I2cSide {
public:
    /// Serves the board's buses, and keeps the topology file in @p directory up to date. The
    /// buses are on a socket in the directory, or in the kernel.
    ///
    /// @param board  must outlive this object.
    /// @param log    gets a line for each transaction
    /// @throw std::system_error when socket or topology file cannot be made
    /// @throw std::runtime_error when the board does not fit the driver's tables, when the dynamic
    ///        loader cannot find the preload library, or when the kernel module refuses the buses
    I2cSide(sd_event* loop, const std::string& directory, const board::Board& board, LineLog log,
            bool inKernel);
    I2cSide(const I2cSide&) = delete;
    I2cSide& operator=(const I2cSide&) = delete;

    /// The environment variables that lead the command to the board's buses.
    [[nodiscard]] Environment environment() const;

    /// Numbers of the buses that the command reaches by the machine's device nodes.
    [[nodiscard]] std::set<std::uint32_t> busesInKernel() const;

private:
    void publishChanges();

    const board::Board* board_;
    std::string topology_;
    std::string socket_;
    std::string preload_; ///< path of the preload library
    std::optional<BusServer> server_;
    std::optional<KernelBuses> kernel_; ///< either this or the server
    const BusCore* core_ = nullptr;     ///< the buses of either
    std::uint64_t published_ = 0;       ///< number of nodes in the file, plus 1; 0: no file yet
};

/// Builds the bus driver's state from a board.
/// @throw std::runtime_error when the board does not fit the driver's tables
[[nodiscard]] BusState busStateOf(const board::Board& board);

} // namespace standin
