// What goes over the sockets between the preload library and the bus server.
//
// One connection is one open /dev/i2c-N. Each request is one datagram, and so is each reply; both
// ends run on one machine, so numbers are in its byte order. A request begins with WireRequest, a
// reply with WireReply, which bears the request's ticket: several processes may share a connection,
// and one that ends before its reply has come leaves it to the next. What follows:
//
//   WIRE_OPEN         once, and before what follows: argument is the bus number
//   WIRE_LOOK         only before it is open: whether it is there, with the same argument
//   WIRE_NUMBER       the result is the number of the open bus
//   WIRE_TRANSFER     argument is the message count; that many WireMessage, then the bytes of all
//                     write messages in order. The reply holds the bytes of all read messages.
//   WIRE_SLAVE        argument is the address of later SMBus requests; refused when a device node
//   WIRE_SLAVE_FORCE  has it, unless forced
//   WIRE_SMBUS        WireSmbus; the reply holds its data
//   WIRE_READ         argument is a count; the reply holds as many bytes from that address
//   WIRE_WRITE        the bytes for that address
//
// A reply that tells of a failure holds nothing else. What is no request is answered with EPROTO.
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
};

struct WireRequest {
    uint32_t kind;
    uint32_t argument;
    uint32_t ticket; ///< no two requests of a connection share one
};

struct WireReply {
    int32_t result; ///< of the call; a failure is a negative errno
    uint32_t ticket;
};

struct WireMessage {
    uint16_t address;
    uint16_t flags;
    uint16_t length;
};

enum {
    WIRE_MESSAGES = 42,         ///< of one transfer, as the kernel has it
    WIRE_MESSAGE_LENGTH = 8192, ///< of one message, likewise
    WIRE_SMBUS_DATA = 34,       ///< count, 32 bytes, and one more
};

struct WireSmbus {
    uint8_t isRead;
    uint8_t command;
    uint16_t size; ///< kind of access, as the kernel numbers them
    uint8_t data[WIRE_SMBUS_DATA];
};

enum {
    WIRE_LONGEST = (int)(sizeof(struct WireRequest) + WIRE_MESSAGES * sizeof(struct WireMessage)) +
                   WIRE_MESSAGES * WIRE_MESSAGE_LENGTH, ///< bytes of a datagram
};
