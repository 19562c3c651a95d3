// Replaces fopen() and freopen(): /dev/i2c-N leads to a bus of the stand-in. A stream over a bus is
// of little use, but it must not lead to a real bus.

#undef _FILE_OFFSET_BITS // the macro would turn the functions below into their 64-bit variants

#include "standin/i2c_bus/preload/bus_client.h"
#include "standin/i2c_bus/preload/bus_path.h"
#include "standin/i2c_bus/preload/interposed.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

typedef FILE* (*Fopen)(const char*, const char*);
typedef FILE* (*Freopen)(const char*, const char*, FILE*);

static int openBus(long bus, const char* mode) {
    return busOpen((uint32_t)bus, strchr(mode, 'e') != NULL);
}

static FILE* withoutRealBus(FILE* stream) {
    if (stream != NULL && isRealBus(fileno(stream))) {
        (void)fclose(stream);
        errno = ENOENT;
        return NULL;
    }
    return stream;
}

static FILE* openStream(const char* path, const char* mode, Fopen real) {
    const long bus = busNumber(AT_FDCWD, path);
    if (bus < 0) {
        return withoutRealBus(real(path, mode));
    }
    const int descriptor = openBus(bus, mode);
    FILE* const stream = descriptor < 0 ? NULL : fdopen(descriptor, mode);
    if (stream == NULL && descriptor >= 0) {
        close(descriptor);
    }
    return stream;
}

// The C library reopens the stream on /dev/null. The bus then replaces that descriptor.
static FILE* reopenStream(const char* path, const char* mode, FILE* stream, Freopen real) {
    const long bus = busNumber(AT_FDCWD, path);
    if (bus < 0) {
        return withoutRealBus(real(path, mode, stream));
    }
    const int descriptor = openBus(bus, mode);
    if (descriptor < 0) {
        const int error = errno;
        (void)fclose(stream);
        errno = error;
        return NULL;
    }
    FILE* const reopened = real("/dev/null", mode, stream);
    if (reopened != NULL) {
        dup3(descriptor, fileno(reopened), strchr(mode, 'e') != NULL ? O_CLOEXEC : 0);
    }
    close(descriptor);
    return reopened;
}

#define DEFINE_FOPEN(name)                                                                         \
    EXPORTED FILE* name(const char* path, const char* mode);                                       \
    FILE* name(const char* path, const char* mode) {                                               \
        static Fopen real;                                                                         \
        return realFunction((void**)&real, #name) ? openStream(path, mode, real) : NULL;           \
    }

#define DEFINE_FREOPEN(name)                                                                       \
    EXPORTED FILE* name(const char* path, const char* mode, FILE* stream);                         \
    FILE* name(const char* path, const char* mode, FILE* stream) {                                 \
        static Freopen real;                                                                       \
        return realFunction((void**)&real, #name) ? reopenStream(path, mode, stream, real) : NULL; \
    }

DEFINE_FOPEN(fopen)
DEFINE_FOPEN(fopen64)
DEFINE_FREOPEN(freopen)
DEFINE_FREOPEN(freopen64)
