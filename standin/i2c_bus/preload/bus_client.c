#include "standin/i2c_bus/preload/bus_client.h"

#include "standin/i2c_bus/core/functions.h"
#include "standin/i2c_bus/preload/conversation.h"
#include "standin/i2c_bus/wire.h"

#include <errno.h>
#include <limits.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

enum {
    LONGEST_REQUEST = WIRE_MESSAGES + 2, // in pieces: head, message heads, messages
    LONGEST_REPLY = WIRE_MESSAGES + 1,
};

static const unsigned long functions = BUS_CORE_FUNCTIONS;

int busOpen(uint32_t bus, bool closeOnExec) {
    return connectAndAsk(WIRE_OPEN, bus, closeOnExec ? SOCK_CLOEXEC : 0);
}

bool busIsThere(uint32_t bus) {
    const int before = errno;
    const int descriptor = connectAndAsk(WIRE_LOOK, bus, SOCK_CLOEXEC);
    if (descriptor >= 0) {
        close(descriptor);
    }
    errno = before;
    return descriptor >= 0;
}

bool busIsOpen(int descriptor) {
    return isConnected(descriptor);
}

long busOf(int descriptor) {
    const int before = errno;
    const long bus = isConnected(descriptor) ? ask(descriptor, WIRE_NUMBER, 0, INT_MAX) : -1;
    errno = before;
    return bus;
}

static size_t shortened(size_t size) {
    return size < WIRE_MESSAGE_LENGTH ? size : WIRE_MESSAGE_LENGTH;
}

ssize_t busRead(int descriptor, void* buffer, size_t size) {
    struct WireRequest head = {.kind = WIRE_READ, .argument = (uint32_t)shortened(size)};
    struct WireReply result = {0};
    struct iovec request[] = {{&head, sizeof(head)}};
    struct iovec reply[] = {{&result, sizeof(result)}, {buffer, head.argument}};
    return exchange(descriptor, request, 1, reply, 2, head.argument);
}

ssize_t busWrite(int descriptor, const void* buffer, size_t size) {
    struct WireRequest head = {.kind = WIRE_WRITE};
    struct WireReply result = {0};
    struct iovec request[] = {{&head, sizeof(head)}, {(void*)buffer, shortened(size)}};
    struct iovec reply[] = {{&result, sizeof(result)}};
    return exchange(descriptor, request, 2, reply, 1, (uint32_t)shortened(size));
}

// Reads a byte. Returns -EFAULT when the place has none.
static int byteAt(const uint8_t* place) {
    uint8_t byte = 0;
    const struct iovec to = {&byte, 1};
    const struct iovec from = {(void*)place, 1};
    return process_vm_readv(getpid(), &to, 1, &from, 1, 0) == 1 ? byte : -EFAULT;
}

// The length with which a message reaches the bus. A negative errno when the kernel refuses it.
// Where the device is to give the length, the first byte of the buffer says how long the message
// is without the bytes of the device.
static int lengthOnBus(const struct i2c_msg* message) {
    if (message->len > WIRE_MESSAGE_LENGTH) {
        return -EINVAL;
    }
    if ((message->flags & I2C_M_RECV_LEN) == 0) {
        return message->len;
    }
    const bool isRead = (message->flags & I2C_M_RD) != 0;
    const int length = isRead && message->len > 0 ? byteAt(message->buf) : 0;
    return length == 0 || message->len < length + I2C_SMBUS_BLOCK_MAX ? -EINVAL : length;
}

static int transfer(int descriptor, const struct i2c_rdwr_ioctl_data* given) {
    struct WireRequest head = {.kind = WIRE_TRANSFER};
    struct WireReply result = {0};
    struct WireMessage messages[WIRE_MESSAGES];
    struct iovec request[LONGEST_REQUEST] = {{&head, sizeof(head)}, {messages, 0}};
    struct iovec reply[LONGEST_REPLY] = {{&result, sizeof(result)}};
    size_t requestPieces = 2;
    size_t replyPieces = 1;
    if (given == NULL) {
        return failed(EFAULT);
    }
    if (given->msgs == NULL || given->nmsgs == 0 || given->nmsgs > WIRE_MESSAGES) {
        return failed(EINVAL);
    }
    for (uint32_t i = 0; i < given->nmsgs; ++i) {
        const struct i2c_msg* const message = &given->msgs[i];
        const int length = lengthOnBus(message);
        if (length < 0) {
            return failed(-length);
        }
        messages[i] = (struct WireMessage){message->addr, message->flags, (uint16_t)length};
        if ((message->flags & I2C_M_RD) == 0) {
            request[requestPieces++] = (struct iovec){message->buf, (size_t)length};
        }
    }
    // The kernel fills the buffers from the last message on. Buffers may share bytes.
    for (uint32_t i = given->nmsgs; i > 0; --i) {
        const struct i2c_msg* const message = &given->msgs[i - 1];
        if ((message->flags & I2C_M_RD) != 0) {
            reply[replyPieces++] = (struct iovec){message->buf, messages[i - 1].length};
        }
    }
    head.argument = given->nmsgs;
    request[1].iov_len = given->nmsgs * sizeof(messages[0]);
    return exchange(descriptor, request, requestPieces, reply, replyPieces, given->nmsgs);
}

// Size of the data of an SMBus access; 0 for an access without data or of an unknown kind.
static size_t smbusDataSize(const struct i2c_smbus_ioctl_data* given) {
    switch (given->size) {
    case I2C_SMBUS_BYTE:
        return given->read_write == I2C_SMBUS_READ ? 1 : 0;
    case I2C_SMBUS_BYTE_DATA:
        return 1;
    case I2C_SMBUS_WORD_DATA:
    case I2C_SMBUS_PROC_CALL:
        return 2;
    case I2C_SMBUS_BLOCK_DATA:
    case I2C_SMBUS_BLOCK_PROC_CALL:
    case I2C_SMBUS_I2C_BLOCK_BROKEN:
    case I2C_SMBUS_I2C_BLOCK_DATA:
        return WIRE_SMBUS_DATA;
    default:
        return 0;
    }
}

static int smbus(int descriptor, const struct i2c_smbus_ioctl_data* given) {
    struct WireRequest head = {.kind = WIRE_SMBUS};
    struct WireReply result = {0};
    struct WireSmbus access = {0};
    uint8_t answer[WIRE_SMBUS_DATA];
    struct iovec request[] = {{&head, sizeof(head)}, {&access, sizeof(access)}};
    struct iovec reply[] = {{&result, sizeof(result)}, {answer, sizeof(answer)}};
    if (given == NULL) {
        return failed(EFAULT);
    }
    const size_t size = smbusDataSize(given);
    const bool isRead = given->read_write == I2C_SMBUS_READ;
    if (given->read_write > I2C_SMBUS_READ || given->size > I2C_SMBUS_I2C_BLOCK_DATA ||
        (size != 0 && given->data == NULL)) {
        return failed(EINVAL);
    }
    access.isRead = isRead;
    access.command = given->command;
    access.size = (uint16_t)given->size;
    if (given->size == I2C_SMBUS_I2C_BLOCK_DATA && isRead) {
        access.data[0] = given->data->block[0]; // the number of bytes to read
    } else if (size != 0 && (!isRead || given->size == I2C_SMBUS_PROC_CALL ||
                             given->size == I2C_SMBUS_BLOCK_PROC_CALL)) {
        memcpy(access.data, given->data, size);
    }
    const int status = exchange(descriptor, request, 2, reply, 2, 0);
    if (status >= 0 && size != 0 && (isRead || given->size == I2C_SMBUS_PROC_CALL)) {
        memcpy(given->data, answer, size);
    }
    return status;
}

int busIoctl(int descriptor, unsigned long request, void* argument) {
    switch (request) {
    case I2C_RDWR:
        return transfer(descriptor, argument);
    case I2C_SMBUS:
        return smbus(descriptor, argument);
    case I2C_SLAVE:
        return ask(descriptor, WIRE_SLAVE, (uint32_t)(uintptr_t)argument, 0);
    case I2C_SLAVE_FORCE:
        return ask(descriptor, WIRE_SLAVE_FORCE, (uint32_t)(uintptr_t)argument, 0);
    case I2C_FUNCS:
        if (argument == NULL) {
            return failed(EFAULT);
        }
        memcpy(argument, &functions, sizeof(functions));
        return 0;
    case I2C_RETRIES:
    case I2C_TIMEOUT: // without effect: the server never retries, and a fault delays regardless
        return (uintptr_t)argument > INT_MAX ? failed(EINVAL) : 0;
    case I2C_TENBIT:
        return ask(descriptor, WIRE_TEN_BITS, argument != NULL, 0);
    case I2C_PEC:
        return ask(descriptor, WIRE_CHECKSUMS, argument != NULL, 0);
    default:
        return failed(ENOTTY);
    }
}
