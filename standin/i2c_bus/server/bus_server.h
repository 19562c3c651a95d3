// The I2C buses of the stand-in, served over a socket.
#pragma once

#include "standin/i2c_bus/server/bus_connection.h"
#include "standin/i2c_bus/server/bus_state.h"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <systemd/sd-event.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace standin {

/// A file descriptor, closed with its owner.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }

    [[nodiscard]] int number() const { return number_; }

private:
    int number_;
};

struct DisableEventSource {
    void operator()(sd_event_source* source) const { sd_event_source_disable_unref(source); }
};
using EventSource = std::unique_ptr<sd_event_source, DisableEventSource>;

/// Listens on a socket and serves every client that the preload library connects, on an event loop.
///
/// Each request is answered in one go, so what one client does is done before another's request is
/// looked at. A client that sends more than a request can hold, or does not take its replies,
/// is dropped; nothing waits for it.
class BusServer {
public:
    /// @param loop   is to outlive the server.
    /// @param path   of the socket, absolute; nothing may be there yet. It stays when the server
    ///               goes.
    /// @param state  the buses as they are at the start.
    /// @param log    file that gets a line for each control transaction before it is answered; it
    ///               starts empty. None when empty.
    /// @throw std::system_error when socket or log cannot be had
    BusServer(sd_event* loop, const std::string& path, BusState state, const std::string& log = {});
    BusServer(const BusServer&) = delete;
    BusServer& operator=(const BusServer&) = delete;
    ~BusServer();

    /// Has @p look called after each request, before it is answered. What it throws costs the
    /// client its connection.
    void afterEachRequest(std::function<void()> look) { afterEachRequest_ = std::move(look); }

    /// The state, for whoever shares the event loop's thread.
    [[nodiscard]] BusState& state() { return state_; }

private:
    struct Client;

    static int onConnect(sd_event_source* source, int descriptor, std::uint32_t events,
                         void* server);
    static int onRequest(sd_event_source* source, int descriptor, std::uint32_t events,
                         void* client);
    void accept();
    [[nodiscard]] bool serve(Client& client);
    void drop(const Client& client);

    sd_event* loop_;
    BusState state_;
    TransactionLog log_;
    std::function<void()> afterEachRequest_;
    Descriptor listener_;
    EventSource listening_;
    std::list<Client> clients_;
    std::vector<std::uint8_t> request_;
    std::vector<std::uint8_t> reply_;
};

} // namespace standin
