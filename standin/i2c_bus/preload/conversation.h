// Requests to the bus server, and their replies.
#pragma once

#include <errno.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/uio.h>

// How a function of the C library fails.
static inline int failed(int error) {
    errno = error;
    return -1;
}

// Connects to the server that the environment names and sends a first request of the given kind
// about a bus. A descriptor when the server agrees, or -1 with the errno that it decides; ENOENT
// when the environment names none, ENXIO when it does not answer. Flags are those of a socket.
int connectAndAsk(uint32_t kind, uint32_t bus, int flags);

// Whether a descriptor is one of connectAndAsk(). Leaves errno as it is.
bool isConnected(int descriptor);

// Sends a request, the first piece of which is a WireRequest, and takes its reply, the first piece
// of which is a WireReply; the other pieces of the reply are filled when the server did what was
// asked for. Its result, or -1 with errno: the server's, EFAULT for pieces that are not the
// caller's, EIO when the server is gone.
int exchange(int descriptor, struct iovec* request, size_t requestPieces, struct iovec* reply,
             size_t replyPieces);

// A request that is its head alone, with a reply of the same kind.
int ask(int descriptor, uint32_t kind, uint32_t argument);
