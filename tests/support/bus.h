// A private system bus for tests, with the `zolt` service on it.
#pragma once

#include "board/service_model.h"
#include "standin/service/bus_daemon.h"
#include "tests/support/private_directory.h"

#include <future>
#include <memory>
#include <string_view>
#include <thread>

namespace zolt::test {

/// The service, which answers in a thread of its own.
class RunningService {
public:
    /// Returns once the service owns its name on the bus.
    RunningService(const std::string& address, board::ServiceModel model);
    RunningService(const RunningService&) = delete;
    RunningService& operator=(const RunningService&) = delete;
    ~RunningService();

private:
    int stop_;
    std::promise<void> ready_;
    std::thread thread_;
};

/// A private bus daemon, which is the test program's system bus until the object is destroyed.
class SystemBus {
public:
    /// @param policy further rules of the daemon's policy, as XML
    explicit SystemBus(std::string_view policy = {});
    SystemBus(const SystemBus&) = delete;
    SystemBus& operator=(const SystemBus&) = delete;
    ~SystemBus();

    /// Puts a service on the bus. An earlier one leaves first.
    void publish(board::ServiceModel model);

    /// Ends the daemon and with it all connections.
    void breakDown();

    /// Starts the daemon again at the same address, without a service.
    void comeBack();

private:
    PrivateDirectory directory_;
    std::unique_ptr<standin::BusDaemon> daemon_;
    std::unique_ptr<RunningService> service_;
};

} // namespace zolt::test
