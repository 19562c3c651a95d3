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

enum { HIGHEST_ERRNO = 4095 }; // as in the kernel

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

// The time serves as the ticket: it differs between requests, whichever process sends them.
static uint32_t newTicket(void) {
    struct timespec now = {0};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (uint32_t)now.tv_sec * 1000000000U + (uint32_t)now.tv_nsec;
}

// The request is sent, so its reply must be received. Wait for the reply in spite of signals, a
// timeout, or a descriptor that is set not to block.
static ssize_t receive(int descriptor, struct msghdr* message) {
    for (;;) {
        const ssize_t length = recvmsg(descriptor, message, 0);
        if (length >= 0 || (errno != EINTR && errno != EAGAIN)) {
            return length;
        }
        poll(&(struct pollfd){.fd = descriptor, .events = POLLIN}, 1, -1);
    }
}

// Does the work of exchange(), for one thread at a time.
static int converse(int descriptor, struct iovec* request, size_t requestPieces,
                    struct iovec* reply, size_t replyPieces, uint32_t highest) {
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
        return failed(head->result >= -HIGHEST_ERRNO ? -head->result : EIO);
    }
    if ((size_t)length != lengthOf(reply, replyPieces) || (uint32_t)head->result > highest) {
        return failed(EIO);
    }
    return head->result;
}

// The conversations that are under way. Conversations over one connection take turns. Those over
// different connections do not: a bus that answers late must not stop another bus.
struct Conversation {
    int descriptor;
    struct Conversation* next;
};

static pthread_mutex_t conversationsLock = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t conversationEnded = PTHREAD_COND_INITIALIZER;
static struct Conversation* conversations;

// Two descriptors lead to one connection if one is a duplicate of the other. The kernel gives each
// socket a cookie of its own.
static bool leadToOneConnection(int one, int other) {
    uint64_t cookies[2] = {0};
    socklen_t length = sizeof(cookies[0]);
    if (one == other) {
        return true;
    }
    if (getsockopt(one, SOL_SOCKET, SO_COOKIE, &cookies[0], &length) != 0) {
        return false;
    }
    length = sizeof(cookies[1]);
    return getsockopt(other, SOL_SOCKET, SO_COOKIE, &cookies[1], &length) == 0 &&
           cookies[0] == cookies[1];
}

static bool isBusy(int descriptor) {
    for (const struct Conversation* each = conversations; each != NULL; each = each->next) {
        if (leadToOneConnection(each->descriptor, descriptor)) {
            return true;
        }
    }
    return false;
}

static void begin(struct Conversation* conversation) {
    pthread_mutex_lock(&conversationsLock);
    while (isBusy(conversation->descriptor)) {
        pthread_cond_wait(&conversationEnded, &conversationsLock);
    }
    conversation->next = conversations;
    conversations = conversation;
    pthread_mutex_unlock(&conversationsLock);
}

static void end(const struct Conversation* conversation) {
    pthread_mutex_lock(&conversationsLock);
    struct Conversation** link = &conversations;
    while (*link != conversation) {
        link = &(*link)->next;
    }
    *link = conversation->next;
    pthread_cond_broadcast(&conversationEnded);
    pthread_mutex_unlock(&conversationsLock);
}

int exchange(int descriptor, struct iovec* request, size_t requestPieces, struct iovec* reply,
             size_t replyPieces, uint32_t highest) {
    struct Conversation conversation = {.descriptor = descriptor};
    begin(&conversation);
    const int result = converse(descriptor, request, requestPieces, reply, replyPieces, highest);
    const int error = errno;
    end(&conversation);
    errno = error;
    return result;
}

int ask(int descriptor, uint32_t kind, uint32_t argument, uint32_t highest) {
    struct WireRequest request = {.kind = kind, .argument = argument};
    struct WireReply reply = {0};
    struct iovec sent = {&request, sizeof(request)};
    struct iovec received = {&reply, sizeof(reply)};
    return exchange(descriptor, &sent, 1, &received, 1, highest);
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
    // The longest transfer needs a larger buffer than a socket has at first. A program that reads
    // the socket like a file gets no data; the timeout keeps it from waiting.
    if (setsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &room, sizeof(room)) == 0 &&
        setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience)) == 0 &&
        connect(descriptor, (const struct sockaddr*)&address, sizeof(address)) == 0) {
        if (ask(descriptor, kind, bus, 0) == 0) {
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
    // getpeername() comes first: most descriptors are no sockets, and fail at once.
    const bool isOurs = getpeername(descriptor, (struct sockaddr*)&peer, &length) == 0 &&
                        peer.sun_family == AF_UNIX && length <= sizeof(peer) &&
                        serverAddress(&server) &&
                        strncmp(peer.sun_path, server.sun_path, sizeof(peer.sun_path)) == 0;
    errno = before;
    return isOurs;
}
