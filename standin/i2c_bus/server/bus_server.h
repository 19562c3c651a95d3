// The I2C buses of the stand-in, served over a socket.
#pragma once

#include "standin/i2c_bus/server/bus_connection.h"
#include "standin/i2c_bus/server/bus_state.h"
#include "standin/i2c_bus/server/descriptor.h"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <systemd/sd-event.h>
#include <utility>
#include <vector>

namespace standin {

struct DisableEventSource {
    void operator()(sd_event_source* source) const { sd_event_source_disable_unref(source); }
};
using EventSource = std::unique_ptr<sd_event_source, DisableEventSource>;

/// Listens on a socket and serves every client that the preload library connects, on an event loop.
///
/// The server performs a request before it reads the next, so requests of different clients do not
/// mix. A fault may delay a reply; meanwhile the server serves all clients, and the same client,
/// too. The server never waits for a client: it drops a client that sends too long a request, does
/// not take its replies, or has more than 64 replies waiting.
class BusServer {
public:
    /// @param loop   must outlive the server.
    /// @param path   absolute path of the socket, which must not exist yet. The server leaves the
    ///               socket there at its end.
    /// @param state  the buses as they are at the start.
    /// @param log    gets a line for each transaction, before the reply. A delayed transaction is
    ///               logged when it ends; without an end it is not logged.
    /// @throw std::system_error when the socket cannot be made
    BusServer(sd_event* loop, const std::string& path, BusState state, LineLog log = {});
    BusServer(const BusServer&) = delete;
    BusServer& operator=(const BusServer&) = delete;
    ~BusServer();

    /// Sets a function that the server calls after each request, before the reply and before a
    /// delay. The server drops the client when the function throws.
    void afterEachRequest(std::function<void()> look) { afterEachRequest_ = std::move(look); }

    /// The state, for use in the event loop's thread only.
    [[nodiscard]] BusState& state() { return state_; }

private:
    struct Client;
    struct DelayedReply;

    static int onConnect(sd_event_source* source, int descriptor, std::uint32_t events,
                         void* server);
    static int onRequest(sd_event_source* source, int descriptor, std::uint32_t events,
                         void* client);
    static int onDelayOver(sd_event_source* source, std::uint64_t now, void* delayed);
    void accept();
    [[nodiscard]] bool serve(Client& client);
    [[nodiscard]] bool delay(Client& client, Wait wait);
    void drop(const Client& client);

    sd_event* loop_;
    BusState state_;
    LineLog log_;
    std::function<void()> afterEachRequest_;
    Descriptor listener_;
    EventSource listening_;
    std::list<Client> clients_;
    std::vector<std::uint8_t> request_;
    std::vector<std::uint8_t> reply_;
};

} // namespace standin
