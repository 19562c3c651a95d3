// The I2C side of a running board: its buses and its topology file.
#pragma once

#include "board/board.h"
#include "standin/i2c_bus/server/bus_server.h"
#include "standin/launcher/command.h"

#include <string>
#include <systemd/sd-event.h>

namespace standin {

class I2cSide {
public:
    /// Serves the board's buses on a socket in @p directory, and keeps the topology file there up
    /// to date.
    ///
    /// @param board  must outlive this object.
    /// @param log    gets a line for each transaction
    /// @throw std::system_error when socket or topology file cannot be made
    /// @throw std::runtime_error when the board does not fit the driver's tables, or the dynamic
    ///        loader cannot find the preload library
    I2cSide(sd_event* loop, const std::string& directory, const board::Board& board, LineLog log);
    I2cSide(const I2cSide&) = delete;
    I2cSide& operator=(const I2cSide&) = delete;

    /// The environment variables that lead the command to the board's buses.
    [[nodiscard]] Environment environment() const;

private:
    void publishChanges();

    const board::Board* board_;
    std::string socket_;
    std::string preload_; ///< path of the preload library
    std::string topology_;
    BusServer server_;
    std::uint64_t published_ = 0; ///< number of nodes in the file, plus 1; 0: no file yet
};

/// Builds the bus driver's state from a board.
/// @throw std::runtime_error when the board does not fit the driver's tables
[[nodiscard]] BusState busStateOf(const board::Board& board);

} // namespace standin
