// A system bus of the test's own, with the `zolt` service on it.
#pragma once

#include "standin/service/bus_daemon.h"
#include "standin/service/model.h"
#include "tests/support/private_directory.h"

#include <future>
#include <memory>
#include <string_view>
#include <thread>

namespace zolt::test {

/// A service that answers from a thread of its own.
class RunningService {
public:
    /// Returns when the service has its name.
    RunningService(const std::string& address, standin::ServiceModel model);
    RunningService(const RunningService&) = delete;
    RunningService& operator=(const RunningService&) = delete;
    ~RunningService();

private:
    int stop_;
    std::promise<void> ready_;
    std::thread thread_;
};

/// A private bus daemon that stands in the system bus's place until the object's end.
class SystemBus {
public:
    /// @param policy XML of further rules for the daemon of the test
    explicit SystemBus(std::string_view policy = {});
    SystemBus(const SystemBus&) = delete;
    SystemBus& operator=(const SystemBus&) = delete;
    ~SystemBus();

    /// Puts a service on the bus, in place of the one before.
    void publish(standin::ServiceModel model);

    /// Ends the daemon, with all connections.
    void breakDown();

    /// Starts the daemon again, at the same address and without a service.
    void comeBack();

private:
    PrivateDirectory directory_;
    std::unique_ptr<standin::BusDaemon> daemon_;
    std::unique_ptr<RunningService> service_;
};

} // namespace zolt::test
