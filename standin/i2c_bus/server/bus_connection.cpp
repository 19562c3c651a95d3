#include "standin/i2c_bus/server/bus_connection.h"

#include "standin/i2c_bus/server/smbus.h"
#include "standin/i2c_bus/server/transaction_text.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace standin {

namespace {

using Bytes = std::vector<std::uint8_t>;

// Takes the next T off the front; none when too little is left.
template <typename T>
std::optional<T> take(std::span<const std::uint8_t>& bytes) {
    if (bytes.size() < sizeof(T)) {
        return std::nullopt;
    }
    T value;
    std::memcpy(&value, bytes.data(), sizeof value);
    bytes = bytes.subspan(sizeof value);
    return value;
}

bool isRead(const i2c_msg& message) {
    return (message.flags & I2C_M_RD) != 0;
}

// Where the bytes of each message are: in the request for what is written, behind the reply's head
// for what is read. False when the request holds more or less than its messages say.
bool place(std::span<i2c_msg> messages, std::span<std::uint8_t> written, Bytes& reply) {
    std::size_t read = 0;
    for (i2c_msg& message : messages) {
        if (isRead(message)) {
            read += message.len;
        } else if (message.len > written.size()) {
            return false;
        } else {
            message.buf = written.data();
            written = written.subspan(message.len);
        }
    }
    reply.assign(sizeof(WireReply) + read, 0);
    std::uint8_t* next = reply.data() + sizeof(WireReply);
    for (i2c_msg& message : messages) {
        if (isRead(message)) {
            message.buf = next;
            next += message.len;
        }
    }
    return written.empty();
}

} // namespace

bool BusConnection::answer(std::span<std::uint8_t> request, Bytes& reply) {
    std::span<const std::uint8_t> rest = request;
    const auto head = take<WireRequest>(rest);
    const bool opens = head && (head->kind == WIRE_OPEN || head->kind == WIRE_LOOK);
    if (!head || opens == bus_.has_value()) {
        return false;
    }
    reply.assign(sizeof(WireReply), 0);
    std::optional<int> result;
    switch (head->kind) {
    case WIRE_TRANSFER:
        result = transfer(head->argument, request.subspan(sizeof *head), reply);
        break;
    case WIRE_SMBUS:
        result = access(rest, reply);
        break;
    case WIRE_OPEN:
        result = rest.empty() ? std::optional(open(head->argument)) : std::nullopt;
        break;
    case WIRE_LOOK: // a bus that is refused is there, too
        if (rest.empty()) {
            result = busCoreOpen(core_, head->argument) == -ENOENT ? -ENOENT : 0;
        }
        break;
    case WIRE_NUMBER:
        result = rest.empty() ? std::optional(static_cast<int>(*bus_)) : std::nullopt;
        break;
    case WIRE_SLAVE:
    case WIRE_SLAVE_FORCE:
        if (rest.empty()) {
            result = setAddress(head->argument, head->kind == WIRE_SLAVE_FORCE);
        }
        break;
    default:
        break;
    }
    if (!result) {
        return false;
    }
    const WireReply replyHead{.result = *result};
    reply.resize(*result < 0 ? sizeof replyHead : reply.size());
    std::memcpy(reply.data(), &replyHead, sizeof replyHead);
    return true;
}

int BusConnection::open(std::uint32_t bus) {
    const int result = busCoreOpen(core_, bus);
    if (result == 0) {
        bus_ = bus;
    }
    return result;
}

int BusConnection::setAddress(std::uint32_t address, bool force) {
    if (address > BUS_CORE_HIGHEST_ADDRESS) {
        return -EINVAL;
    }
    const BusCoreDevice* const device = busCoreFindDevice(core_, *bus_, address);
    if (!force && device != nullptr && device->hasNode) {
        return -EBUSY;
    }
    address_ = static_cast<std::uint16_t>(address);
    return 0;
}

std::optional<int> BusConnection::transfer(std::uint32_t count, std::span<std::uint8_t> rest,
                                           Bytes& reply) {
    std::array<i2c_msg, WIRE_MESSAGES> room{};
    if (count == 0 || count > room.size()) {
        return std::nullopt;
    }
    const auto messages = std::span(room).first(count);
    std::span<const std::uint8_t> heads = rest;
    for (i2c_msg& message : messages) {
        const auto head = take<WireMessage>(heads);
        if (!head || head->length > WIRE_MESSAGE_LENGTH) {
            return std::nullopt;
        }
        message = {.addr = head->address, .flags = head->flags, .len = head->length, .buf = {}};
    }
    if (!place(messages, rest.last(heads.size()), reply)) {
        return std::nullopt;
    }
    const int result = busCoreTransfer(core_, *bus_, messages.data(), count);
    if (*log_ && isControlTransaction(messages)) {
        (*log_)(transactionText(*bus_, messages, result));
    }
    return result;
}

std::optional<int> BusConnection::access(std::span<const std::uint8_t> rest, Bytes& reply) {
    auto access = take<WireSmbus>(rest);
    if (!access || !rest.empty()) {
        return std::nullopt;
    }
    const int result = smbusAccess(*core_, *bus_, address_, *access);
    reply.insert(reply.end(), std::begin(access->data), std::end(access->data));
    return result;
}

} // namespace standin
