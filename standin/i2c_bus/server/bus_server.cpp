#include "standin/i2c_bus/server/bus_server.h"

#include "standin/i2c_bus/wire.h"

#include <cerrno>
#include <cstring>
#include <exception>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>
#include <utility>

namespace standin {

namespace {

void check(int result, const std::string& what) {
    if (result < 0) {
        throw std::system_error(-result, std::generic_category(), what);
    }
}

Descriptor listenOn(const std::string& path) {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    if (path.size() >= sizeof address.sun_path) {
        check(-ENAMETOOLONG, path);
    }
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    Descriptor listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (listener.number() < 0 ||
        bind(listener.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener.number(), SOMAXCONN) != 0) {
        check(-errno, path);
    }
    return listener;
}

constexpr std::size_t mostDelayed = 64; // replies of one client

bool sendTo(const Descriptor& client, std::span<const std::uint8_t> reply) {
    return send(client.number(), reply.data(), reply.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(reply.size());
}

} // namespace

// A reply that a fault delays.
struct BusServer::DelayedReply {
    Client* client;
    std::string line; ///< of the log; empty: none
    std::vector<std::uint8_t> reply;
    EventSource timer{};
    std::list<DelayedReply>::iterator self{};
};

struct BusServer::Client {
    Client(BusServer& owner, Descriptor accepted)
        : server(&owner),
          socket(std::move(accepted)),
          connection(owner.state_.core(), owner.log_) {}

    BusServer* server;
    Descriptor socket;
    EventSource source; // must end before `socket` closes its descriptor
    BusConnection connection;
    std::list<DelayedReply> delayed{};
};

BusServer::BusServer(sd_event* loop, const std::string& path, BusState state, LineLog log)
    : loop_(loop),
      state_(std::move(state)),
      log_(std::move(log)),
      listener_(listenOn(path)),
      request_(WIRE_LONGEST) {
    sd_event_source* source = nullptr;
    check(sd_event_add_io(loop_, &source, listener_.number(), EPOLLIN, onConnect, this), path);
    listening_.reset(source);
}

BusServer::~BusServer() = default;

int BusServer::onConnect(sd_event_source* /*source*/, int /*descriptor*/, std::uint32_t /*events*/,
                         void* server) {
    try {
        static_cast<BusServer*>(server)->accept();
    } catch (const std::exception&) {
        return 0; // out of memory: the new client is turned away
    }
    return 0;
}

int BusServer::onRequest(sd_event_source* /*source*/, int /*descriptor*/, std::uint32_t /*events*/,
                         void* client) {
    auto& from = *static_cast<Client*>(client);
    bool served = false;
    try {
        served = from.server->serve(from);
    } catch (const std::exception&) {
        served = false; // out of memory or disk space: only this client is dropped
    }
    if (!served) {
        from.server->drop(from);
    }
    return 0;
}

void BusServer::accept() {
    Descriptor accepted(
        accept4(listener_.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (accepted.number() < 0) {
        // Out of descriptors or memory: waiting clients get in when another client has gone.
        if (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS) {
            sd_event_source_set_enabled(listening_.get(), SD_EVENT_OFF);
        }
        return;
    }
    const int socket = accepted.number();
    constexpr int room = WIRE_LONGEST;
    (void)setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
    Client& client = clients_.emplace_back(*this, std::move(accepted));
    sd_event_source* source = nullptr;
    if (sd_event_add_io(loop_, &source, socket, EPOLLIN, onRequest, &client) < 0) {
        clients_.pop_back();
        return;
    }
    client.source.reset(source);
}

bool BusServer::serve(Client& client) {
    const int socket = client.socket.number();
    const ssize_t length = recv(socket, request_.data(), request_.size(), MSG_TRUNC);
    if (length < 0) {
        return errno == EAGAIN || errno == EINTR;
    }
    if (length == 0 || static_cast<std::size_t>(length) > request_.size()) {
        return false;
    }
    Wait wait = client.connection.answer(
        std::span(request_).first(static_cast<std::size_t>(length)), reply_);
    if (afterEachRequest_) {
        afterEachRequest_();
    }
    return wait.milliseconds == 0 ? sendTo(client.socket, reply_) : delay(client, std::move(wait));
}

bool BusServer::delay(Client& client, Wait wait) {
    if (wait.milliseconds == BUS_CORE_FOREVER) {
        return true;
    }
    if (client.delayed.size() >= mostDelayed) {
        return false;
    }
    DelayedReply& delayed = client.delayed.emplace_front(
        DelayedReply{.client = &client, .line = std::move(wait.line), .reply = reply_});
    delayed.self = client.delayed.begin();
    sd_event_source* timer = nullptr;
    const int result = sd_event_add_time_relative(loop_, &timer, CLOCK_MONOTONIC,
                                                  std::uint64_t{wait.milliseconds} * 1000, 1,
                                                  onDelayOver, &delayed);
    delayed.timer.reset(timer);
    return result >= 0;
}

int BusServer::onDelayOver(sd_event_source* /*source*/, std::uint64_t /*now*/, void* delayed) {
    auto& over = *static_cast<DelayedReply*>(delayed);
    Client& client = *over.client;
    BusServer& server = *client.server;
    bool sent = false;
    try {
        if (!over.line.empty()) {
            server.log_(over.line);
        }
        sent = sendTo(client.socket, over.reply);
    } catch (const std::exception&) {
        sent = false; // out of memory: only this client is dropped
    }
    client.delayed.erase(over.self);
    if (!sent) {
        server.drop(client);
    }
    return 0;
}

void BusServer::drop(const Client& client) {
    clients_.remove_if([&](const Client& each) { return &each == &client; });
    sd_event_source_set_enabled(listening_.get(), SD_EVENT_ON);
}

} // namespace standin
