#include "standin/i2c_bus/server/bus_connection.h"

#include "standin/i2c_bus/server/smbus.h"
#include "standin/i2c_bus/server/transaction_text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace standin {

namespace {

using Bytes = std::vector<std::uint8_t>;

// The kernel marks the messages of an access with a checksum in this way. The bus driver supports
// neither checksums nor addresses of 10 bits, and refuses these messages.
constexpr std::uint16_t checksumFlag = 0x0004;

constexpr std::uint32_t highestOfTenBits = 0x3FF;

// Takes a T off the front. None when too few bytes are left.
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

// Points each message at its bytes: a write message into the request, a read message behind the
// reply's head, the last one first. False when the request holds more or fewer bytes than its
// messages say.
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
    std::for_each(messages.rbegin(), messages.rend(), [&](i2c_msg& message) {
        if (isRead(message)) {
            message.buf = next;
            next += message.len;
        }
    });
    return written.empty();
}

} // namespace

Wait BusConnection::answer(std::span<std::uint8_t> request, Bytes& reply) {
    wait_ = {};
    std::span<const std::uint8_t> rest = request;
    const WireRequest head = take<WireRequest>(rest).value_or(WireRequest{});
    reply.assign(sizeof(WireReply), 0);
    const int result = perform(head, request.last(rest.size()), reply).value_or(-EPROTO);
    const WireReply replyHead{.result = result, .ticket = head.ticket};
    reply.resize(result < 0 ? sizeof replyHead : reply.size());
    std::memcpy(reply.data(), &replyHead, sizeof replyHead);
    return std::exchange(wait_, {});
}

std::optional<int> BusConnection::perform(const WireRequest& head, std::span<std::uint8_t> rest,
                                          Bytes& reply) {
    // WIRE_OPEN and WIRE_LOOK are for a connection without a bus, all others for one with a bus.
    const bool isEarly = head.kind == WIRE_OPEN || head.kind == WIRE_LOOK;
    if (isEarly == bus_.has_value()) {
        return std::nullopt;
    }
    switch (head.kind) {
    case WIRE_TRANSFER:
        return transfer(head.argument, rest, reply);
    case WIRE_SMBUS:
        return access(rest, reply);
    case WIRE_WRITE:
        return write(rest);
    default:
        return rest.empty() ? performAlone(head, reply) : std::nullopt;
    }
}

// Performs the requests that are a head alone.
std::optional<int> BusConnection::performAlone(const WireRequest& head, Bytes& reply) {
    switch (head.kind) {
    case WIRE_OPEN:
        return open(head.argument);
    case WIRE_LOOK:
        return busCoreLook(core_, head.argument);
    case WIRE_NUMBER:
        return static_cast<int>(*bus_);
    case WIRE_SLAVE:
    case WIRE_SLAVE_FORCE:
        return setAddress(head.argument, head.kind == WIRE_SLAVE_FORCE);
    case WIRE_READ:
        return read(head.argument, reply);
    case WIRE_TEN_BITS:
        return setFlag(I2C_M_TEN, head.argument != 0);
    case WIRE_CHECKSUMS:
        return setFlag(checksumFlag, head.argument != 0);
    default:
        return std::nullopt;
    }
}

int BusConnection::open(std::uint32_t bus) {
    const int result = busCoreOpen(core_, bus);
    wait_.milliseconds = core_->delay;
    if (result == 0) {
        bus_ = bus;
    }
    return result;
}

int BusConnection::setFlag(std::uint16_t flag, bool on) {
    flags_ = static_cast<std::uint16_t>(on ? flags_ | flag : flags_ & ~flag);
    return 0;
}

int BusConnection::setAddress(std::uint32_t address, bool force) {
    const bool isTenBits = (flags_ & I2C_M_TEN) != 0;
    if (address > highestOfTenBits || (!isTenBits && address > BUS_CORE_HIGHEST_ADDRESS)) {
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
    return run(messages);
}

// Performs a transaction on the open bus, and logs it when it ends.
int BusConnection::run(std::span<i2c_msg> messages) {
    const int result =
        busCoreTransfer(core_, *bus_, messages.data(), static_cast<std::uint32_t>(messages.size()));
    wait_.milliseconds = core_->delay;
    if (*log_) {
        wait_.line = transactionText(*bus_, messages, result);
    }
    if (*log_ && wait_.milliseconds == 0) {
        (*log_)(std::exchange(wait_.line, {}));
    }
    return result;
}

std::optional<int> BusConnection::read(std::uint32_t count, Bytes& reply) {
    if (count > WIRE_MESSAGE_LENGTH) {
        return std::nullopt;
    }
    reply.resize(sizeof(WireReply) + count);
    i2c_msg message{.addr = address_,
                    .flags = static_cast<std::uint16_t>(I2C_M_RD | (flags_ & I2C_M_TEN)),
                    .len = static_cast<std::uint16_t>(count),
                    .buf = reply.data() + sizeof(WireReply)};
    return transferAlone(message);
}

std::optional<int> BusConnection::write(std::span<std::uint8_t> bytes) {
    if (bytes.size() > WIRE_MESSAGE_LENGTH) {
        return std::nullopt;
    }
    i2c_msg message{.addr = address_,
                    .flags = static_cast<std::uint16_t>(flags_ & I2C_M_TEN),
                    .len = static_cast<std::uint16_t>(bytes.size()),
                    .buf = bytes.data()};
    return transferAlone(message);
}

// Returns the length of the message, or a negative errno.
int BusConnection::transferAlone(i2c_msg& message) {
    const int result = run({&message, 1});
    return result < 0 ? result : message.len;
}

std::optional<int> BusConnection::access(std::span<const std::uint8_t> rest, Bytes& reply) {
    auto access = take<WireSmbus>(rest);
    if (!access || !rest.empty()) {
        return std::nullopt;
    }
    const int result = smbusAccess([this](std::span<i2c_msg> messages) { return run(messages); },
                                   address_, flags_, *access);
    reply.insert(reply.end(), std::begin(access->data), std::end(access->data));
    return result;
}

} // namespace standin
