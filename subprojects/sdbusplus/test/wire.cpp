#include "wire.h"

#include <cstdint>
#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace sdbusplus::test {

namespace {

void require(int result) {
    if (result < 0) {
        std::abort();
    }
}

std::pair<int, int> socketPair() {
    int ends[2];
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends));
    return {ends[0], ends[1]};
}

sd_bus* connected(int socket, bool server) {
    sd_bus* raw = nullptr;
    require(sd_bus_new(&raw));
    require(sd_bus_set_fd(raw, socket, socket));
    if (server) {
        const sd_id128_t identity{.bytes = {1, 2, 3}};
        require(sd_bus_set_server(raw, 1, identity));
        require(sd_bus_set_anonymous(raw, 1));
    }
    require(sd_bus_start(raw));
    return raw;
}

// Answers until the other end is closed.
void serve(int socket, sd_bus_message_handler_t answer) {
    sd_bus* raw = connected(socket, true);
    require(sd_bus_add_filter(raw, nullptr, answer, nullptr));
    int result = 0;
    while ((result = sd_bus_process(raw, nullptr)) >= 0) {
        if (result == 0 && sd_bus_wait(raw, UINT64_MAX) < 0) {
            break;
        }
    }
    sd_bus_close_unref(raw);
}

} // namespace

message_t received(const Fill& fill) {
    const auto [near, far] = socketPair();
    sd_bus* raw = connected(near, false);
    const bus_t bus(raw, std::false_type());
    sd_bus_message* message = nullptr;
    require(sd_bus_message_new_method_call(raw, &message, "a.b", "/", "a.b", "C"));
    require(fill(message));
    require(sd_bus_message_seal(message, 1, 0));
    require(sd_bus_message_rewind(message, 1));
    ::close(far);
    return {message, std::false_type()};
}

Peer::Peer(sd_bus_message_handler_t answer) : Peer(answer, socketPair()) {}

Peer::Peer(sd_bus_message_handler_t answer, std::pair<int, int> sockets)
    : thread_(serve, sockets.second, answer),
      bus_(connected(sockets.first, false), std::false_type()) {}

Peer::~Peer() {
    bus_ = bus_t(nullptr, std::false_type());
    thread_.join();
}

std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const exception::SdBusError& error) {
        return error.what();
    }
    return "";
}

} // namespace sdbusplus::test
