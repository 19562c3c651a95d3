// The system bus of a board, and the service on it.
#pragma once

#include "board/board.h"
#include "standin/launcher/command.h"
#include "standin/service/bus_daemon.h"
#include "standin/service/service.h"

#include <optional>
#include <string>
#include <systemd/sd-event.h>

namespace standin {

class ServiceSide {
public:
    /// Starts the bus in @p directory and puts the service on it. A fault of the board can leave
    /// out the service, or both. The loop serves the calls.
    /// @param log  gets a line for each call that reaches the service
    /// @throw std::runtime_error when the bus or the service does not start; what() also says how
    ///        the board works without them
    ServiceSide(sd_event* loop, const std::string& directory, const board::Board& board,
                LineLog log);

    /// The environment variable with the bus's address.
    [[nodiscard]] Environment environment() const;

private:
    void start(sd_event* loop, const std::string& directory, const board::Board& board,
               LineLog log);

    std::string address_;
    std::optional<BusDaemon> daemon_;
    std::optional<Service> service_;
};

} // namespace standin
