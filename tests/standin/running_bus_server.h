// A bus server with its own event loop in its own thread.
#pragma once

#include "standin/i2c_bus/server/bus_server.h"

#include <string>
#include <thread>

namespace standin {

class RunningBusServer {
public:
    explicit RunningBusServer(BusState state);
    RunningBusServer(const RunningBusServer&) = delete;
    RunningBusServer& operator=(const RunningBusServer&) = delete;
    ~RunningBusServer();

    [[nodiscard]] std::string socket() const { return directory_ + "/i2c"; }
    [[nodiscard]] std::string log() const { return directory_ + "/log"; }

    /// Ends the server and all connections to it.
    void stop();

private:
    std::string directory_;
    int stopping_; // an eventfd that ends the loop
    std::thread thread_;
};

} // namespace standin
