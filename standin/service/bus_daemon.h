// A message bus of our own: Debian's dbus-daemon on a private socket.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace standin {

class BusDaemon {
public:
    /// Starts the daemon and returns once it takes connections. It runs in a process group of its
    /// own, so that an interrupt at the terminal passes it by, and ends with the thread that
    /// started it, however that ends.
    /// @param directory private to the caller; holds the daemon's configuration and socket
    /// @param policy    XML of further rules for the configuration's default policy
    /// @throws std::runtime_error when there is no daemon or it does not start
    explicit BusDaemon(const std::filesystem::path& directory, std::string_view policy = {});
    BusDaemon(const BusDaemon&) = delete;
    BusDaemon& operator=(const BusDaemon&) = delete;
    ~BusDaemon() { stop(); }

    /// The bus's address, as in DBUS_SYSTEM_BUS_ADDRESS.
    [[nodiscard]] const std::string& address() const { return address_; }

    /// Ends the daemon, and with it every connection; a second call does nothing.
    void stop();

private:
    pid_t process_ = -1;
    std::string address_;
};

} // namespace standin
