// A preload library that makes a program's clock run a hundred times as fast. sd-bus waits 90
// seconds for authentication, and no setting shortens this time.
#undef _FORTIFY_SOURCE

#include <dlfcn.h>
#include <poll.h>
#include <signal.h>
#include <stdint.h>
#include <time.h>

enum { FASTER = 100, SECOND = 1000000000 };

static int64_t nanoseconds(const struct timespec* time) {
    return time->tv_sec * (int64_t)SECOND + time->tv_nsec;
}

static struct timespec timeOf(int64_t nanoseconds) {
    return (struct timespec){.tv_sec = nanoseconds / SECOND, .tv_nsec = nanoseconds % SECOND};
}

int clock_gettime(clockid_t clock, struct timespec* time) {
    static int (*real)(clockid_t, struct timespec*);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "clock_gettime");
    }
    const int result = real(clock, time);
    if (result == 0 && clock == CLOCK_MONOTONIC) {
        *time = timeOf(nanoseconds(time) * FASTER);
    }
    return result;
}

int ppoll(struct pollfd* files, nfds_t count, const struct timespec* wait, const sigset_t* mask) {
    static int (*real)(struct pollfd*, nfds_t, const struct timespec*, const sigset_t*);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "ppoll");
    }
    if (wait == NULL) {
        return real(files, count, NULL, mask);
    }
    const struct timespec shorter = timeOf(nanoseconds(wait) / FASTER);
    return real(files, count, &shorter, mask);
}
