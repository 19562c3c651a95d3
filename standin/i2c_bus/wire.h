// The messages between the preload library and the bus server.
//
// One connection stands for one open /dev/i2c-N. Each request is one datagram, and each reply is
// one. Both ends run on one machine, so numbers are in its byte order. A request begins with
// WireRequest, a reply with WireReply. A reply repeats the ticket of its request: several
// processes may share a connection, and one that ends early leaves its reply to the next process.
// The ticket shows that the reply is not for that process. The requests are:
//
//   WIRE_OPEN         opens the bus of number `argument`; only WIRE_LOOK may come before
//   WIRE_LOOK         asks whether the bus of number `argument` exists; only before WIRE_OPEN
//   WIRE_NUMBER       the result is the number of the open bus
//   WIRE_TRANSFER     `argument` is the message count. The request goes on with that many
//                     WireMessage, then the bytes of all write messages in order. The reply goes on
//                     with the bytes of all read messages, those of the last message first.
//   WIRE_SLAVE        sets `argument` as the address of later WIRE_SMBUS, WIRE_READ and WIRE_WRITE;
//                     refused when a device node has the address
//   WIRE_SLAVE_FORCE  does the same, and is not refused
//   WIRE_SMBUS        goes on with WireSmbus; the reply goes on with its data
//   WIRE_READ         `argument` is a count; the reply goes on with that many bytes
//   WIRE_WRITE        goes on with the bytes to write
//   WIRE_TEN_BITS     with `argument` 1, later addresses have 10 bits; with 0 they have 7
//   WIRE_CHECKSUMS    with `argument` 1, later WIRE_SMBUS have a checksum; with 0 they have none
//
// The reply to a failed request is WireReply alone. A malformed request fails with EPROTO.
#pragma once

#include <stdint.h>

// The environment variable that holds the path of the server's socket.
#define WIRE_ENVIRONMENT "ZOLT_SIM_I2C"

enum WireKind {
    WIRE_OPEN = 1,
    WIRE_TRANSFER = 2,
    WIRE_SLAVE = 3,
    WIRE_SLAVE_FORCE = 4,
    WIRE_SMBUS = 5,
    WIRE_LOOK = 6,
    WIRE_NUMBER = 7,
    WIRE_READ = 8,
    WIRE_WRITE = 9,
    WIRE_TEN_BITS = 10,
    WIRE_CHECKSUMS = 11,
};

struct WireRequest {
    uint32_t kind;
    uint32_t argument;
    uint32_t ticket; ///< differs between all requests of a connection
};

struct WireReply {
    int32_t result; ///< result of the call; a failure is a negative errno
    uint32_t ticket;
};

struct WireMessage {
    uint16_t address;
    uint16_t flags;
    uint16_t length;
};

enum {
    WIRE_MESSAGES = 42,         ///< most messages of one transfer, as in the kernel
    WIRE_MESSAGE_LENGTH = 8192, ///< most bytes of one message, as in the kernel
    WIRE_SMBUS_DATA = 34,       ///< a count, 32 bytes, and a spare byte, as in the kernel
};

struct WireSmbus {
    uint8_t isRead;
    uint8_t command;
    uint16_t size; ///< kind of access, by the kernel's number
    uint8_t data[WIRE_SMBUS_DATA];
};

enum {
    WIRE_LONGEST = (int)(sizeof(struct WireRequest) + WIRE_MESSAGES * sizeof(struct WireMessage)) +
                   WIRE_MESSAGES * WIRE_MESSAGE_LENGTH, ///< most bytes of a datagram
};
