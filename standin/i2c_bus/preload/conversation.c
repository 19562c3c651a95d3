#include "standin/i2c_bus/preload/conversation.h"

#include "standin/i2c_bus/wire.h"

#include <errno.h>
#include <poll.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

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

int exchange(int descriptor, struct iovec* request, size_t requestPieces, struct iovec* reply,
             size_t replyPieces) {
    static pthread_mutex_t oneAtATime = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&oneAtATime);
    const int result = converse(descriptor, request, requestPieces, reply, replyPieces);
    pthread_mutex_unlock(&oneAtATime);
    return result;
}

int ask(int descriptor, uint32_t kind, uint32_t argument) {
    struct WireRequest request = {.kind = kind, .argument = argument};
    struct WireReply reply = {0};
    struct iovec sent = {&request, sizeof(request)};
    struct iovec received = {&reply, sizeof(reply)};
    return exchange(descriptor, &sent, 1, &received, 1);
}

int connectAndAsk(uint32_t kind, uint32_t bus, int flags) {
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

bool isConnected(int descriptor) {
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
