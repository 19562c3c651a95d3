// Sends requests to the bus server and receives their replies.
#pragma once

#include <errno.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/uio.h>

// Fails as a function of the C library does.
static inline int failed(int error) {
    errno = error;
    return -1;
}

// Connects to the server that the environment names and sends a first request about a bus. Returns
// a descriptor, or -1 with the errno of the server's refusal, ENOENT when the environment names no
// server, or ENXIO when the server does not answer. `flags` are those of socket().
int connectAndAsk(uint32_t kind, uint32_t bus, int flags);

// Whether a descriptor comes from connectAndAsk(). Leaves errno as it is.
bool isConnected(int descriptor);

// Sends a request and receives its reply. The first piece of the request is a WireRequest, that of
// the reply a WireReply. The other pieces of the reply are filled when the request succeeds.
// `highest` is the highest result that the request can have. Returns the server's result, or -1
// with errno: the server's, EFAULT for pieces outside the caller's memory, EIO when the server is
// gone or its reply is no reply to this request.
int exchange(int descriptor, struct iovec* request, size_t requestPieces, struct iovec* reply,
             size_t replyPieces, uint32_t highest);

// The same for a request and a reply that are a head alone.
int ask(int descriptor, uint32_t kind, uint32_t argument, uint32_t highest);
