#include "wire.h"

#include <cstdint>
#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

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

bus_t owned(sd_bus* raw) {
    bus_t bus(raw);
    sd_bus_unref(raw);
    return bus;
}

// Answers calls until the other end is closed.
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

// A signal as its bytes on the wire, with big-endian numbers.
class BigEndianSignal {
public:
    BigEndianSignal(std::string_view signature, std::initializer_list<std::uint8_t> body) {
        bytes_ = {'B', 4, 0, 1}; // byte order, signal, no flags, version of the protocol
        number(body.size());
        number(1); // serial
        const std::size_t sizeOfFields = bytes_.size();
        number(0);
        field(1, 'o', "/");
        field(2, 's', "a.b");
        field(3, 's', "C");
        field(8, 'g', signature);
        bytes_[sizeOfFields + 3] = static_cast<std::uint8_t>(bytes_.size() - sizeOfFields - 4);
        align();
        bytes_.insert(bytes_.end(), body);
    }

    [[nodiscard]] const std::vector<std::uint8_t>& bytes() const { return bytes_; }

private:
    void align() { bytes_.resize((bytes_.size() + 7) / 8 * 8); }

    // Every number in these messages fits into its last byte.
    void number(std::size_t value) {
        bytes_.insert(bytes_.end(), {0, 0, 0, static_cast<std::uint8_t>(value)});
    }

    void field(std::uint8_t code, char type, std::string_view text) {
        align();
        bytes_.insert(bytes_.end(), {code, 1, static_cast<std::uint8_t>(type), 0});
        if (type == 'g') {
            bytes_.push_back(static_cast<std::uint8_t>(text.size()));
        } else {
            number(text.size());
        }
        bytes_.insert(bytes_.end(), text.begin(), text.end());
        bytes_.push_back(0);
    }

    std::vector<std::uint8_t> bytes_;
};

} // namespace

message_t received(const Fill& fill) {
    const auto [near, far] = socketPair();
    sd_bus* raw = connected(near, false);
    const bus_t bus = owned(raw);
    sd_bus_message* message = nullptr;
    require(sd_bus_message_new_method_call(raw, &message, "a.b", "/", "a.b", "C"));
    require(fill(message));
    require(sd_bus_message_seal(message, 1, 0));
    require(sd_bus_message_rewind(message, 1));
    ::close(far);
    return {message, std::false_type()};
}

message_t receivedBigEndian(std::string_view signature, std::initializer_list<std::uint8_t> body) {
    const auto [near, far] = socketPair();
    sd_bus* receiver = connected(near, false);
    const bus_t receiverEnd = owned(receiver);
    sd_bus* sender = connected(far, true);
    const bus_t senderEnd = owned(sender);
    while (sd_bus_is_ready(receiver) == 0 || sd_bus_is_ready(sender) == 0) {
        require(sd_bus_process(receiver, nullptr));
        require(sd_bus_process(sender, nullptr));
    }
    // Both connections are ready. The signal bypasses sd-bus, which would send it in this machine's
    // byte order.
    const BigEndianSignal signal(signature, body);
    const auto size = static_cast<ssize_t>(signal.bytes().size());
    require(write(far, signal.bytes().data(), signal.bytes().size()) == size ? 0 : -1);
    sd_bus_message* message = nullptr;
    while (message == nullptr) {
        require(sd_bus_process(receiver, &message));
    }
    return {message, std::false_type()};
}

Peer::Peer(sd_bus_message_handler_t answer) : Peer(answer, socketPair()) {}

Peer::Peer(sd_bus_message_handler_t answer, std::pair<int, int> sockets)
    : thread_(serve, sockets.second, answer), bus_(owned(connected(sockets.first, false))) {}

Peer::~Peer() {
    bus_ = bus_t(nullptr);
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
