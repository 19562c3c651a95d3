// A private message bus: Debian's dbus-daemon on a socket of its own.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace standin {

class BusDaemon {
public:
    /// Starts the daemon and returns once it takes connections. The daemon runs in a process group
    /// of its own, so an interrupt at the terminal does not reach it. The kernel kills the daemon
    /// when the thread that started it ends.
    /// @param directory private to the caller; gets the daemon's configuration, log and socket
    /// @param policy    XML of further rules for the configuration's default policy
    /// @param patience  how long the daemon may take until it prints its address
    /// @throws std::runtime_error when dbus-daemon is not installed or does not start
    explicit BusDaemon(const std::filesystem::path& directory, std::string_view policy = {},
                       std::chrono::milliseconds patience = std::chrono::seconds(30));
    BusDaemon(const BusDaemon&) = delete;
    BusDaemon& operator=(const BusDaemon&) = delete;
    ~BusDaemon() { stop(); }

    /// The bus's address, as in DBUS_SYSTEM_BUS_ADDRESS.
    [[nodiscard]] const std::string& address() const { return address_; }

    /// Ends the daemon and all connections to it. A second call does nothing.
    /// @return how the daemon ended, in the form of waitpid()
    int stop();

private:
    pid_t process_ = -1;
    std::string address_;
};

} // namespace standin
