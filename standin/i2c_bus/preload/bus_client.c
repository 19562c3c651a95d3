#include "standin/i2c_bus/preload/bus_client.h"

#include "standin/i2c_bus/wire.h"

#include <errno.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <poll.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

enum {
    LONGEST_REQUEST = WIRE_MESSAGES + 2, // pieces: head, message heads, messages
    LONGEST_REPLY = WIRE_MESSAGES + 1,
};

// What the kernel can do with an adapter that only transfers messages, as the server does.
static const unsigned long functions = I2C_FUNC_I2C | I2C_FUNC_SMBUS_QUICK | I2C_FUNC_SMBUS_BYTE |
                                       I2C_FUNC_SMBUS_BYTE_DATA | I2C_FUNC_SMBUS_WORD_DATA |
                                       I2C_FUNC_SMBUS_PROC_CALL | I2C_FUNC_SMBUS_WRITE_BLOCK_DATA |
                                       I2C_FUNC_SMBUS_I2C_BLOCK;

static bool serverAddress(struct sockaddr_un* address) {
    const char* const path = getenv(WIRE_ENVIRONMENT);
    const size_t length = path == NULL ? 0 : strlen(path);
    *address = (struct sockaddr_un){.sun_family = AF_UNIX};
    if (length == 0 || length >= sizeof(address->sun_path)) {
        return false;
    }
    memcpy(address->sun_path, path, length);
    return true;
}

static int failed(int error) {
    errno = error;
    return -1;
}

static size_t lengthOf(const struct iovec* pieces, size_t count) {
    size_t length = 0;
    for (size_t i = 0; i < count; ++i) {
        length += pieces[i].iov_len;
    }
    return length;
}

// When it is sent tells a request from all others of its connection, whichever process sends it.
static uint32_t newTicket(void) {
    struct timespec now = {0};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (uint32_t)now.tv_sec * 1000000000U + (uint32_t)now.tv_nsec;
}

// The request is on its way: nothing may come between it and its reply, neither a signal nor that
// the descriptor is not to wait.
static ssize_t receive(int descriptor, struct msghdr* message) {
    for (;;) {
        const ssize_t length = recvmsg(descriptor, message, 0);
        if (length >= 0 || (errno != EINTR && errno != EAGAIN)) {
            return length;
        }
        poll(&(struct pollfd){.fd = descriptor, .events = POLLIN}, 1, -1);
    }
}

// One request and its reply, which begin with WireRequest and WireReply. The other pieces of the
// reply are filled when the server did what was asked for. Returns the result as an ioctl does.
static int converse(int descriptor, struct iovec* request, size_t requestPieces,
                    struct iovec* reply, size_t replyPieces) {
    struct WireRequest* const asked = request[0].iov_base;
    const struct WireReply* const head = reply[0].iov_base;
    struct msghdr message = {.msg_iov = request, .msg_iovlen = requestPieces};
    ssize_t length = -1;
    asked->ticket = newTicket();
    do {
        length = sendmsg(descriptor, &message, MSG_NOSIGNAL);
    } while (length < 0 && errno == EINTR);
    if (length < 0) {
        return errno == EFAULT ? -1 : failed(EIO);
    }
    do {
        message = (struct msghdr){.msg_iov = reply, .msg_iovlen = replyPieces};
        length = receive(descriptor, &message);
    } while (length >= (ssize_t)sizeof(*head) && head->ticket != asked->ticket);
    if (length < (ssize_t)sizeof(*head)) {
        return length < 0 && errno == EFAULT ? -1 : failed(EIO);
    }
    if (head->result < 0) {
        return failed(-head->result);
    }
    if ((size_t)length != lengthOf(reply, replyPieces)) {
        return failed(EIO);
    }
    return head->result;
}

static int exchange(int descriptor, struct iovec* request, size_t requestPieces,
                    struct iovec* reply, size_t replyPieces) {
    static pthread_mutex_t oneAtATime = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&oneAtATime);
    const int result = converse(descriptor, request, requestPieces, reply, replyPieces);
    pthread_mutex_unlock(&oneAtATime);
    return result;
}

// A request that is its head alone, with a reply of the same kind.
static int ask(int descriptor, uint32_t kind, uint32_t argument) {
    struct WireRequest request = {.kind = kind, .argument = argument};
    struct WireReply reply = {0};
    struct iovec sent = {&request, sizeof(request)};
    struct iovec received = {&reply, sizeof(reply)};
    return exchange(descriptor, &sent, 1, &received, 1);
}

// A connection that has asked for a bus, and got it.
static int connectAndAsk(uint32_t kind, uint32_t bus, int flags) {
    static const int room = WIRE_LONGEST;
    static const struct timeval patience = {.tv_usec = 1};
    struct sockaddr_un address;
    if (!serverAddress(&address)) {
        return failed(ENOENT);
    }
    const int descriptor = socket(AF_UNIX, SOCK_SEQPACKET | flags, 0);
    if (descriptor < 0) {
        return -1;
    }
    int error = ENXIO;
    // The longest transfer is more than a socket takes of itself. Who reads from the socket as if
    // it were a file finds nothing, and must not wait for it.
    if (setsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &room, sizeof(room)) == 0 &&
        setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience)) == 0 &&
        connect(descriptor, (const struct sockaddr*)&address, sizeof(address)) == 0) {
        if (ask(descriptor, kind, bus) == 0) {
            return descriptor;
        }
        error = errno;
    }
    close(descriptor);
    return failed(error);
}

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
    const int before = errno;
    struct sockaddr_un server;
    struct sockaddr_un peer = {0};
    socklen_t length = sizeof(peer);
    // Most descriptors are no sockets.
    const bool isOurs = getpeername(descriptor, (struct sockaddr*)&peer, &length) == 0 &&
                        peer.sun_family == AF_UNIX && length <= sizeof(peer) &&
                        serverAddress(&server) &&
                        strncmp(peer.sun_path, server.sun_path, sizeof(peer.sun_path)) == 0;
    errno = before;
    return isOurs;
}

long busOf(int descriptor) {
    const int before = errno;
    const long bus = busIsOpen(descriptor) ? ask(descriptor, WIRE_NUMBER, 0) : -1;
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
    return exchange(descriptor, request, 1, reply, 2);
}

ssize_t busWrite(int descriptor, const void* buffer, size_t size) {
    struct WireRequest head = {.kind = WIRE_WRITE};
    struct WireReply result = {0};
    struct iovec request[] = {{&head, sizeof(head)}, {(void*)buffer, shortened(size)}};
    struct iovec reply[] = {{&result, sizeof(result)}};
    return exchange(descriptor, request, 2, reply, 1);
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
        const struct iovec piece = {message->buf, message->len};
        if (message->len > WIRE_MESSAGE_LENGTH) {
            return failed(EINVAL);
        }
        messages[i] = (struct WireMessage){message->addr, message->flags, message->len};
        if ((message->flags & I2C_M_RD) != 0) {
            reply[replyPieces++] = piece;
        } else {
            request[requestPieces++] = piece;
        }
    }
    head.argument = given->nmsgs;
    request[1].iov_len = given->nmsgs * sizeof(messages[0]);
    return exchange(descriptor, request, requestPieces, reply, replyPieces);
}

// Bytes of the data of an SMBus access; 0 when it has none, or is unknown.
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
        access.data[0] = given->data->block[0]; // how many bytes; the rest is to be filled
    } else if (size != 0 && (!isRead || given->size == I2C_SMBUS_PROC_CALL ||
                             given->size == I2C_SMBUS_BLOCK_PROC_CALL)) {
        memcpy(access.data, given->data, size);
    }
    const int status = exchange(descriptor, request, 2, reply, 2);
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
        return ask(descriptor, WIRE_SLAVE, (uint32_t)(uintptr_t)argument);
    case I2C_SLAVE_FORCE:
        return ask(descriptor, WIRE_SLAVE_FORCE, (uint32_t)(uintptr_t)argument);
    case I2C_FUNCS:
        if (argument == NULL) {
            return failed(EFAULT);
        }
        memcpy(argument, &functions, sizeof(functions));
        return 0;
    case I2C_RETRIES:
    case I2C_TIMEOUT:
        return 0; // there is nothing to wait for
    case I2C_TENBIT:
    case I2C_PEC:
        return argument == NULL ? 0 : failed(EINVAL); // can be off, not on
    default:
        return failed(ENOTTY);
    }
}
