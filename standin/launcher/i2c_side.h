// The I2C side of a running board: its buses, and the topology that tells of them.
#pragma once

#include "standin/board/board.h"
#include "standin/i2c_bus/server/bus_server.h"
#include "standin/launcher/command.h"

#include <string>
#include <systemd/sd-event.h>

namespace standin {

class I2cSide {
public:
    /// Serves the board's buses on a socket in @p directory, and keeps the topology file there.
    ///
    /// @param board  is to outlive this.
    /// @param log    file that gets a line for each control transaction; none when empty
    /// @throw std::system_error when socket, log or file cannot be had
    I2cSide(sd_event* loop, const std::string& directory, const Board& board,
            const std::string& log);
    I2cSide(const I2cSide&) = delete;
    I2cSide& operator=(const I2cSide&) = delete;

    /// What the command needs to find the buses, and no other.
    [[nodiscard]] Environment environment() const;

private:
    void publishChanges();

    const Board* board_;
    std::string socket_;
    std::string topology_;
    BusServer server_;
    std::uint64_t published_ = 0; ///< number of nodes when the topology was written
};

/// The bus driver's state as the board describes it.
/// @throw std::runtime_error when it does not fit the driver's tables
[[nodiscard]] BusState busStateOf(const Board& board);

} // namespace standin
